"""Reads the windows of programs over AT-SPI, as a screen reader does."""

import os
import subprocess
import unittest

import dbus
import dbus.bus
import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from desk import Desk  # noqa: E402
from harness import wait_until  # noqa: E402
from harness.processes import stop  # noqa: E402

ROLE, STATE = Atspi.Role, Atspi.StateType
# What a person operates, and what therefore must say what it is.
CONTROLS = {ROLE.PUSH_BUTTON, ROLE.CHECK_BOX, ROLE.TEXT, ROLE.PASSWORD_TEXT, ROLE.RADIO_BUTTON, ROLE.COMBO_BOX,
            ROLE.SPIN_BUTTON, ROLE.TERMINAL, ROLE.TOGGLE_BUTTON, ROLE.LIST, ROLE.TREE, ROLE.TABLE, ROLE.SLIDER,
            ROLE.ENTRY}


class Reader(Desk):
    """A test on a session bus that all tests of a file share, with a screen reader at work there."""

    status = None  # the properties that say whether a screen reader is at work

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not Reader.status:
            Reader.bus_address, Reader.status = start_buses()

    def setUp(self):
        super().setUp()
        self.address = self.bus_address
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus_address
        # The programs find the bus as they do on a desktop.
        self.environment.pop("AT_SPI_BUS_ADDRESS", None)
        self.screen_reader(True)

    def screen_reader(self, enabled):
        """Says on the session bus whether a screen reader is at work."""
        for name in ("IsEnabled", "ScreenReaderEnabled"):
            self.status.Set("org.a11y.Status", name, dbus.Boolean(enabled))

    def applications(self, pid):
        """The roots of what the process shows."""
        roots = [root for root in children(Atspi.get_desktop(0)) if quietly(root.get_process_id) == pid]
        for root in roots:
            root.set_cache_mask(Atspi.Cache.NONE)  # every question goes to the program
        return roots

    def shell(self):
        """The root of the shell's windows."""
        found = wait_until(lambda: self.applications(self.running.pid), "the shell among the applications")
        return found[0]

    def tool(self):
        """The root of the windows of the tool that runs."""
        def found():
            roots = [root for root in children(Atspi.get_desktop(0))
                     if quietly(root.get_process_id) not in (self.running.pid, None) and children(root)]
            return roots and self.applications(roots[0].get_process_id())

        return wait_until(found, "the tool among the applications")[0]

    def frame(self):
        return wait_for(self.shell(), "the shell's window", role=ROLE.FRAME, name="Quillon")

    def console_text(self):
        return wait_for(self.frame(), "the console", role=ROLE.TERMINAL)

    def listen(self, *kinds):
        """The list of events of the KINDS that come from now on: (kind, source, offset, text)."""
        heard = []

        def take(event):
            heard.append((event.type, event.source, event.detail1, event.any_data))

        listener = Atspi.EventListener.new(take)
        for kind in kinds:
            listener.register(kind)
            self.addCleanup(listener.deregister, kind)
        return heard


def start_buses():
    """Starts a session bus and the bus of assistive technology; the first one's address, and the properties of the
    other. The library that speaks AT-SPI asks for its bus once in a process."""
    daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL)
    unittest.addModuleCleanup(stop, daemon)
    address = daemon.stdout.readline().decode().strip()
    environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "AT_SPI_BUS_ADDRESS")}
    environment["DBUS_SESSION_BUS_ADDRESS"] = address
    # The launcher has a bus below it, and ends that when it is asked to end itself.
    launcher = subprocess.Popen(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], env=environment,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    unittest.addModuleCleanup(end, launcher)
    bus = dbus.bus.BusConnection(address)
    bus.set_exit_on_disconnect(False)
    unittest.addModuleCleanup(bus.close)
    wait_until(lambda: bus.name_has_owner("org.a11y.Bus"), "the bus of assistive technology")
    launched = bus.get_object("org.a11y.Bus", "/org/a11y/bus")
    os.environ["AT_SPI_BUS_ADDRESS"] = str(launched.GetAddress(dbus_interface="org.a11y.Bus"))
    Atspi.init()
    Atspi.set_timeout(20000, 20000)
    return address, dbus.Interface(launched, dbus.PROPERTIES_IFACE)


def end(process):
    """Asks a process to end, and ends it where it does not."""
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        stop(process)


def quietly(question):
    """The answer to QUESTION, None where the one that was asked has just gone."""
    try:
        return question()
    except GLib.Error:
        return None


def children(node):
    count = quietly(node.get_child_count) or 0
    found = [quietly(lambda place=place: node.get_child_at_index(place)) for place in range(count)]
    return [child for child in found if child]


def everything(node):
    """NODE and all below it."""
    yield node
    for child in children(node):
        yield from everything(child)


def matching(node, role=None, name=None):
    """What has that role and that name, of NODE and all below it."""
    return [one for one in everything(node)
            if role in (None, quietly(one.get_role)) and name in (None, quietly(one.get_name))]


def wait_for(node, what, role=None, name=None):
    """The first one of that role and name below NODE, as soon as it is there."""
    return wait_until(lambda: matching(node, role, name), what)[0]


def has(node, *states):
    own = node.get_state_set()
    return all(own.contains(state) for state in states)


def text_of(node):
    return Atspi.Text.get_text(node, 0, Atspi.Text.get_character_count(node))


def label_of(node):
    """The text of the label that stands for NODE; empty where none does."""
    for relation in node.get_relation_set():
        if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
            return relation.get_target(0).get_name()
    return ""


def described(node):
    return f"{node.get_role_name()} {node.get_name()!r} in {node.get_parent().get_name()!r}"
