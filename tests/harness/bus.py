"""A test with a session bus of its own, and what goes over it."""

import os
import subprocess
import threading

import dbus
import dbus.bus
import dbus.mainloop.glib

from harness import processes
from harness.home import HomeTest

MAIN_LOOP = dbus.mainloop.glib.DBusGMainLoop()


class ServiceTest(HomeTest):
    """A test with a session bus and, when it starts one, a shell that stays."""

    def setUp(self):
        super().setUp()
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=self.environment)
        self.addCleanup(processes.stop, self.daemon)
        self.address = self.daemon.stdout.readline().decode().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.address

    def start_shell(self, *arguments):
        """Starts a headless shell that runs until it is told to quit, and waits for its name."""
        self.start_program(self.shell_program(), "--headless", *arguments)
        bus = self.bus()
        processes.wait_until(lambda: bus.name_has_owner("org.quillon.Shell") or self.ended(), "the shell on the bus")
        self.assertFalse(self.ended(), self.output())
        if "--script" not in arguments:
            # The name comes first; what the loop answers comes when the start is over.
            self.shell_object().Formats(timeout=60)
        return self.running

    def bus(self, mainloop=None):
        """A connection of its own to the test's bus; with MAIN_LOOP, wait_until delivers what comes over it."""
        connection = dbus.bus.BusConnection(self.address, mainloop=mainloop)
        connection.set_exit_on_disconnect(False)
        return connection

    def shell_object(self, interface="org.quillon.Shell1"):
        return dbus.Interface(self.bus().get_object("org.quillon.Shell", "/org/quillon/Shell"), interface)

    def send(self, event_class, event_id, **parameters):
        """An event to the shell; its error and the parameters of its reply."""
        own = self.bus().get_object("org.quillon.Shell", "/org/quillon/App")
        values = dbus.Dictionary({key: dbus.Struct((kind, value), signature="sv")
                                  for key, (kind, value) in parameters.items()}, signature="s(sv)")
        return own.Event(event_class, event_id, values, dbus_interface="org.quillon.App1")

    def in_background(self, procedure):
        """Runs PROCEDURE in a thread; the thread, whose `result` is what it returned or raised."""
        thread = threading.Thread(target=lambda: keep_result(thread, procedure), daemon=True)
        thread.result = None
        thread.start()
        return thread


def keep_result(thread, procedure):
    try:
        thread.result = procedure()
    except dbus.exceptions.DBusException as error:
        thread.result = error


def code(text):
    """A four-character signature as the number that goes on the wire."""
    value = int.from_bytes(text.encode("latin-1"), "big")
    return value - (1 << 32) if value >= 1 << 31 else value


def typed(kind, value):
    """A parameter of an event: a text or path, as bytes where it is not UTF-8."""
    value = os.fsencode(value)
    try:
        content = dbus.String(value.decode())
    except UnicodeDecodeError:
        content = dbus.Array(value, signature="y")
    return dbus.Struct((kind, content), signature="sv")


def plain(parameters):
    """keyword -> value, with bytes for texts and paths."""
    result = {}
    for keyword, (_, value) in parameters.items():
        if isinstance(value, dbus.Array):
            value = bytes(bytearray(value))
        elif isinstance(value, str):
            value = str(value).encode()
        else:
            value = int(value)
        result[str(keyword)] = value
    return result
