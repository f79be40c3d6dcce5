"""A stand-in for the shell: launches tool bundles, sends them events, hears theirs."""

import os
import shutil
import signal
import subprocess
import tempfile
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)

APP = "org.quillon.App1"
TOOL = "org.quillon.Tool1"
PATH = "/org/quillon/App"
LIMIT = 30.0


def text(value):
    if isinstance(value, str):
        value = value.encode()
    try:
        return dbus.Struct(("TEXT", dbus.String(value.decode())), signature="sv", variant_level=0)
    except UnicodeDecodeError:
        return dbus.Struct(("TEXT", dbus.Array(value, signature="y")), signature="sv")


def path(value):
    value = os.fsencode(value)
    try:
        return dbus.Struct(("fss ", dbus.String(value.decode())), signature="sv")
    except UnicodeDecodeError:
        return dbus.Struct(("fss ", dbus.Array(value, signature="y")), signature="sv")


def plain(parameters):
    """keyword -> value, with bytes for texts and paths."""
    result = {}
    for keyword, (kind, value) in parameters.items():
        if isinstance(value, dbus.Array):
            value = bytes(bytearray(value))
        elif isinstance(value, str):
            value = str(value).encode()
        else:
            value = int(value)
        result[str(keyword)] = value
    return result


def code(text_):
    number = int.from_bytes(text_.encode(), "big")
    return number - (1 << 32) if number >= 1 << 31 else number


def wait_for(condition, what, limit=LIMIT):
    """Runs the main loop until CONDITION holds; its value."""
    context = GLib.MainContext.default()
    end = time.monotonic() + limit
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what)
        # The condition may itself call over the bus: what that leaves to dispatch must not make this loop spin.
        passed = []
        GLib.timeout_add(5, lambda done=passed: done.append(True))
        while not passed:
            context.iteration(True)


class Receiver(dbus.service.Object):
    """The object that a cancelled tool reports to."""

    def __init__(self, bus):
        super().__init__(bus, PATH)
        self.events = []

    @dbus.service.method(APP, in_signature="ssa{s(sv)}", out_signature="ia{s(sv)}")
    def Event(self, event_class, event_id, parameters):
        self.events.append((str(event_class), str(event_id), plain(parameters)))
        return 0, {}


class Shell:
    """One connection, with folders of its own for preferences, cache and data."""

    def __init__(self, home):
        self.home = home
        self.root = tempfile.mkdtemp(prefix="quillon-toolhost-")
        self.work = os.path.join(self.root, "a b é")
        for folder in ("config", "cache", "data", "a b é"):
            os.makedirs(os.path.join(self.root, folder))
        self.environment = dict(os.environ, XDG_CONFIG_HOME=self.root + "/config",
                                XDG_CACHE_HOME=self.root + "/cache", XDG_DATA_HOME=self.root + "/data",
                                QUILLON_FRONT="headless", LC_ALL="C.UTF-8")
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "QUILLON_FOLLOWED", "QUILLON_SHELL_PID"):
            self.environment.pop(name, None)
        self.preferences = self.root + "/config/Quillon Preferences"
        self.write_preferences("SPACECHAR=31\n")
        self.bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.bus.set_exit_on_disconnect(False)
        self.receiver = Receiver(self.bus)
        self.tools = []

    def close(self):
        for tool in self.tools:
            tool.end()
        try:
            self.bus.close()
        except dbus.DBusException:
            pass
        shutil.rmtree(self.root, ignore_errors=True)

    def write_preferences(self, content):
        with open(self.preferences, "wb") as file:
            file.write(content.encode())

    def settings(self):
        with open(self.preferences, "rb") as file:
            return dict(line.rstrip(b"\n").split(b"=", 1) for line in file if b"=" in line)

    def write(self, name, content, mode=0o644):
        place = os.path.join(self.work, name)
        os.makedirs(os.path.dirname(place), exist_ok=True)
        with open(place, "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        os.chmod(place, mode)
        return place

    def bundle(self, tool, program, signature="TEST"):
        """A bundle made by hand that runs PROGRAM."""
        contents = os.path.join(self.root, "hand", tool + ".app", "Contents")
        os.makedirs(contents + "/Linux")
        with open(contents + "/PkgInfo", "w") as file:
            file.write("APPL" + signature)
        with open(contents + "/Info", "w") as file:
            file.write("program=" + program + "\n")
        os.symlink(os.path.join(self.home, "Quillon.app/Contents/Linux/quillon-toolhost"),
                   contents + "/Linux/" + tool)
        return os.path.dirname(contents)

    def launch(self, bundle, **environment):
        if "/" not in bundle:
            bundle = os.path.join(self.home, bundle + ".app")
        tool = Tool(self, bundle, environment)
        self.tools.append(tool)
        return tool

    def shell_tool(self, script, **environment):
        """A bundle whose program is a shell script."""
        place = self.write("program-%d" % len(self.tools), "#!/bin/sh\n" + script, 0o755)
        name = "tool%d" % len(self.tools)
        return self.launch(self.bundle(name, place), **environment)


class Tool:
    def __init__(self, shell, bundle, environment):
        self.shell = shell
        self.name = os.path.basename(bundle)[:-4]
        variables = dict(shell.environment)
        variables.update(environment)
        self.process = subprocess.Popen([bundle + "/Contents/Linux/" + self.name], env=variables,
                                        stdin=subprocess.DEVNULL, start_new_session=True)
        self.bus_name = "org.quillon.App.p%d" % self.process.pid
        wait_for(lambda: shell.bus.name_has_owner(self.bus_name), "the tool on the bus")
        self.object = shell.bus.get_object(self.bus_name, PATH, introspect=False)
        self.replies = []
        self.output = bytearray()

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()

    def property(self, interface, name):
        return self.object.Get(interface, name, dbus_interface="org.freedesktop.DBus.Properties")

    def event(self, event_class, event_id, parameters=None):
        parameters = dbus.Dictionary(parameters or {}, signature="s(sv)")
        error, reply = self.object.Event(event_class, event_id, parameters, dbus_interface=APP,
                                         signature="ssa{s(sv)}")
        return int(error), plain(reply)

    def send(self, line, folder=None):
        """Sends the command; its reply comes into self.replies."""
        parameters = dbus.Dictionary({"----": text(line), "dest": path(folder or self.shell.work)},
                                     signature="s(sv)")
        self.object.Event("QUIL", "priv", parameters, dbus_interface=APP, signature="ssa{s(sv)}",
                          timeout=1000,
                          reply_handler=lambda error, reply: self.replies.append((int(error), plain(reply))),
                          error_handler=lambda error: self.replies.append((error, None)))

    def run(self, line, folder=None):
        self.send(line, folder)
        return self.reply()

    def reply(self):
        wait_for(lambda: self.replies, "the reply")
        error, reply = self.replies.pop(0)
        assert error == 0, error
        return reply

    def follow(self):
        self.shell.bus.add_signal_receiver(lambda data: self.output.extend(bytearray(data)), "Output", TOOL,
                                           bus_name=self.bus_name, path=PATH)

    def answer(self, line):
        self.object.Answer(dbus.Array(line, signature="y"), dbus_interface=TOOL)

    def waiting(self):
        return bool(self.property(TOOL, "Waiting"))

    def gone(self):
        return self.process.poll() is not None


def log_of(reply):
    with open(reply["logf"], "rb") as file:
        return file.read()


def alive(pid):
    try:
        with open("/proc/%d/stat" % pid) as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except OSError:
        return False


def kill(pid, number=signal.SIGKILL):
    os.kill(pid, number)
