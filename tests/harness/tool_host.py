"""A stand-in for the shell: it launches tool bundles, sends them events and hears theirs."""

import os
import signal
import subprocess

import dbus
import dbus.service

from harness.bus import MAIN_LOOP, ServiceTest, plain, typed
from harness.home import BINARIES, program_of
from harness.processes import alive, stop, wait_until

APP = "org.quillon.App1"
TOOL = "org.quillon.Tool1"
PATH = "/org/quillon/App"


class Receiver(dbus.service.Object):
    """The object that a cancelled tool reports to."""

    def __init__(self, bus):
        super().__init__(bus, PATH)
        self.events = []

    @dbus.service.method(APP, in_signature="ssa{s(sv)}", out_signature="ia{s(sv)}")
    def Event(self, event_class, event_id, parameters):
        self.events.append((str(event_class), str(event_id), plain(parameters)))
        return 0, {}


class HostTest(ServiceTest):
    """A test that is the shell to the tool host."""

    work_name = "a b é"

    def setUp(self):
        super().setUp()
        self.environment.update(QUILLON_FRONT="headless", LC_ALL="C.UTF-8")
        self.write_preferences("SPACECHAR=31\n")
        self.connection = self.bus(MAIN_LOOP)
        self.addCleanup(self.connection.close)
        self.receiver = Receiver(self.connection)
        self.tools = 0

    def bundle(self, tool, program, signature="TEST"):
        """A bundle made by hand that runs PROGRAM; its path."""
        path = os.path.join(self.home, "hand", tool + ".app")
        contents = os.path.join(path, "Contents")
        self.file("PkgInfo", "APPL" + signature, contents)
        self.file("Info", f"program={program}\n", contents)
        os.mkdir(os.path.join(contents, "Linux"))
        os.symlink(os.path.join(BINARIES, "Quillon.app", "Contents", "Linux", "quillon-toolhost"), program_of(path))
        return path

    def launch(self, bundle, **environment):
        """Starts a bundle, one of the binaries folder's when it is named without a path."""
        return Tool(self, bundle if "/" in bundle else os.path.join(BINARIES, bundle + ".app"), environment)

    def shell_tool(self, script, **environment):
        """Starts a bundle whose program is a shell script."""
        self.tools += 1
        place = self.file(f"program-{self.tools}", "#!/bin/sh\n" + script, mode=0o755)
        return self.launch(self.bundle(f"tool{self.tools}", place), **environment)

    def pid(self, name):
        """The process whose id a program of the test wrote into the file of that name."""
        path = os.path.join(self.work, name)

        def read():
            if not os.path.exists(path):
                return 0
            with open(path, encoding="ascii") as file:
                content = file.read()
            return int(content) if content.endswith("\n") else 0

        return wait_until(read, "the process " + name)

    def assert_gone(self, *pids):
        for pid in pids:
            wait_until(lambda process=pid: not alive(process), f"the end of process {pid}")


class Tool:
    """A tool that runs: what it is told and what it says."""

    def __init__(self, test, bundle, environment):
        self.test, self.bus = test, test.connection
        self.process = subprocess.Popen([program_of(bundle)], env=dict(test.environment, **environment),
                                        stdin=subprocess.DEVNULL, start_new_session=True)
        test.addCleanup(stop, self.process)
        self.bus_name = f"org.quillon.App.p{self.process.pid}"
        wait_until(lambda: self.bus.name_has_owner(self.bus_name), "the tool on the bus")
        self.object = self.bus.get_object(self.bus_name, PATH, introspect=False)
        self.replies = []
        self.output = bytearray()

    def property(self, interface, name):
        return self.object.Get(interface, name, dbus_interface=dbus.PROPERTIES_IFACE)

    def event(self, event_class, event_id, parameters=None):
        """Sends an event: its error and the parameters of its reply."""
        parameters = dbus.Dictionary(parameters or {}, signature="s(sv)")
        error, reply = self.object.Event(event_class, event_id, parameters, dbus_interface=APP,
                                         signature="ssa{s(sv)}")
        return int(error), plain(reply)

    def send(self, line, folder=None):
        """Sends the command; its reply comes into self.replies."""
        parameters = dbus.Dictionary({"----": typed("TEXT", line), "dest": typed("fss ", folder or self.test.work)},
                                     signature="s(sv)")
        self.object.Event("QUIL", "priv", parameters, dbus_interface=APP, signature="ssa{s(sv)}",
                          timeout=1000,
                          reply_handler=lambda error, reply: self.replies.append((int(error), plain(reply))),
                          error_handler=lambda error: self.replies.append((error, None)))

    def run(self, line, folder=None):
        self.send(line, folder)
        return self.reply()

    def reply(self):
        wait_until(lambda: self.replies, "the reply")
        error, reply = self.replies.pop(0)
        assert error == 0, error
        return reply

    def follow(self):
        self.bus.add_signal_receiver(lambda data: self.output.extend(bytearray(data)), "Output", TOOL,
                                     bus_name=self.bus_name, path=PATH)
        self.object.Follow(True, dbus_interface=TOOL)

    def answer(self, line):
        self.object.Answer(dbus.Array(line, signature="y"), dbus_interface=TOOL)

    def waiting(self):
        return bool(self.property(TOOL, "Waiting"))

    def gone(self):
        return self.process.poll() is not None

    def kill(self, number=signal.SIGKILL):
        os.kill(self.process.pid, number)


def log_of(reply):
    with open(reply["logf"], "rb") as file:
        return file.read()
