"""What other programs call the shell with: busctl, gdbus and Python each reach every method and get its result."""

import json
import os
import sys
import unittest
import xml.etree.ElementTree

from gi.repository import Gio, GLib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import wait_until  # noqa: E402
from service import PLAIN, Service  # noqa: E402

NAME, SHELL, APPLICATION = "org.quillon.Shell", "/org/quillon/Shell", "/org/quillon/App"
# interface -> member -> what goes in and what comes out
METHODS = {
    "org.quillon.Shell1": {
        "Exec": ("ss", "i"), "ExecRaw": ("ayay", "i"), "Run": ("ayaya{sv}", "ia{sv}"), "Answerers": ("", "bas"),
        "Locate": ("s", "s"), "Find": ("s", "s"), "Formats": ("", "s"), "Open": ("s", ""), "OpenRaw": ("ay", ""),
        "Problems": ("", "a(suss)"), "Cancel": ("", ""), "Quit": ("", ""), "Follow": ("b", "")},
    "org.freedesktop.Application": {
        "Activate": ("a{sv}", ""), "Open": ("asa{sv}", ""), "ActivateAction": ("sava{sv}", "")},
    "org.quillon.App1": {"Event": ("ssa{s(sv)}", "ia{s(sv)}")},
    "org.freedesktop.DBus.Introspectable": {"Introspect": ("", "s")},
    "org.freedesktop.DBus.Properties": {"Get": ("ss", "v")},
}


class CallFailed(Exception):
    pass


def as_lists(value):
    """VALUE with lists for tuples, as JSON has them."""
    if isinstance(value, (list, tuple)):
        return [as_lists(item) for item in value]
    if isinstance(value, dict):
        return {key: as_lists(item) for key, item in value.items()}
    return value


def without_types(value):
    """VALUE of busctl's JSON, in which a variant tells its type."""
    if isinstance(value, list):
        return [without_types(item) for item in value]
    if isinstance(value, dict):
        if set(value) == {"type", "data"}:
            return without_types(value["data"])
        return {key: without_types(item) for key, item in value.items()}
    return value


def busctl_words(value):
    """The words that busctl wants for a value."""
    kind = value.get_type_string()
    if kind == "v":
        inner = value.get_variant()
        return [inner.get_type_string(), *busctl_words(inner)]
    if value.is_container():
        items = [value.get_child_value(index) for index in range(value.n_children())]
        words = [word for item in items for word in busctl_words(item)]
        return [str(len(items)), *words] if kind[0] == "a" else words
    return [str(value.unpack()).lower() if kind == "b" else str(value.unpack())]


class Caller(Service):
    """The tests; how a call is made, a class below says."""

    def call(self, path, interface, method, *values):
        """Calls a method; the list of what comes back. Raises CallFailed with the message of an error."""
        inside = METHODS[interface][method][0]
        return as_lists(self.make_call(path, interface, method, GLib.Variant(f"({inside})", values)))

    def shell_call(self, method, *values):
        return self.call(SHELL, "org.quillon.Shell1", method, *values)

    def event(self, event_class, event_id, **parameters):
        return self.call(APPLICATION, "org.quillon.App1", "Event", event_class, event_id, parameters)

    def assert_fails(self, message, procedure, *values):
        with self.assertRaisesRegex(CallFailed, message):
            procedure(*values)

    def made(self, name):
        return os.path.exists(os.path.join(self.work, name))

    def folder_of_bytes(self):
        """A folder whose name is not UTF-8, with a document in it."""
        folder = os.path.join(os.fsencode(self.work), b"d\xff")
        os.mkdir(folder)
        with open(os.path.join(folder, b"y.tex"), "w", encoding="ascii") as file:
            file.write(PLAIN)
        return folder

    def test_exec(self):
        self.start_shell()
        self.assertEqual(self.shell_call("Exec", "pdftex x.tex", self.work), [0])
        self.assertTrue(self.made("x.pdf"))
        self.file("bad.tex", "\\undefined\n")
        self.assertEqual(self.shell_call("Exec", "pdftex bad.tex", self.work), [1])
        self.assert_fails("no tool has that name", self.shell_call, "Exec", "frobnicate x", "")
        self.assert_fails("there is no folder /nowhere/at/all", self.shell_call, "Exec", "pdftex x.tex",
                          "/nowhere/at/all")

    def test_exec_raw(self):
        folder = self.folder_of_bytes()
        self.start_shell()
        self.assertEqual(self.shell_call("ExecRaw", b"pdftex y.tex", folder), [0])
        self.assertTrue(os.path.exists(os.path.join(folder, b"y.pdf")))

    def test_bytes_that_end_in_a_zero_byte_are_taken_without_it(self):
        # So GLib sends what it calls a byte string.
        folder = self.folder_of_bytes()
        self.start_shell()
        self.assertEqual(self.shell_call("ExecRaw", b"pdftex y.tex\0", folder + b"\0"), [0])
        self.assertEqual(self.shell_call("Run", b"pdftex y.tex\0", folder + b"\0", {}), [0, {}])
        self.assertEqual(self.shell_call("OpenRaw", os.fsencode(os.path.join(self.work, "x.tex")) + b"\0"), [])
        self.assert_printed("Output written on x.pdf")
        self.assertNotIn("zero byte", self.output())

    def test_run_with_each_option(self):
        marks = {name: os.path.join(self.home, name) for name in ("viewed", "edited")}
        programs = {name: self.file(name + ".sh", f"#!/bin/sh\ntouch '{mark}'\n", mode=0o755)
                    for name, mark in marks.items()}
        self.preferences(USEPDFTEX="1", AUTOVIEW="1", PDFVIEW=programs["viewed"], Editor=programs["edited"])
        bad = self.file("bad.tex", "\n\\undefined\n\\bye\n")
        self.start_shell()
        folder, no, yes = os.fsencode(self.work), GLib.Variant("b", False), GLib.Variant("b", True)
        self.assertEqual(self.shell_call("Run", b"pdftex x.tex", folder, {}), [0, {}])
        first_error = {"file": list(os.fsencode(bad)), "line": 2, "message": "Undefined control sequence."}
        for options in ({}, {"view": no, "edit": no, "answer": no}, {"view": yes}):
            self.assertEqual(self.shell_call("Run", b"pdftex bad.tex", folder, options), [1, first_error])
        self.assertEqual(self.shell_call("Run", b"pdftex x.tex", folder, {"edit": yes, "answer": yes}), [0, {}])
        self.assertFalse(os.path.exists(marks["viewed"]) or os.path.exists(marks["edited"]))
        self.assertEqual(self.shell_call("Run", b"pdftex x.tex", folder, {"view": yes}), [0, {}])
        wait_until(lambda: os.path.exists(marks["viewed"]), "the viewer")
        self.assertEqual(self.shell_call("Run", b"pdftex bad.tex", folder, {"edit": yes}), [1, first_error])
        wait_until(lambda: os.path.exists(marks["edited"]), "the editor")
        self.assert_fails("there is no option fast", self.shell_call, "Run", b"pdftex x.tex", folder, {"fast": yes})
        self.assert_fails("option view is a boolean", self.shell_call, "Run", b"pdftex x.tex", folder,
                          {"view": GLib.Variant("s", "yes")})

    def test_answerers(self):
        self.start_shell()
        self.assertEqual(self.shell_call("Answerers"), [False, []])

    def test_locate_and_find(self):
        self.add_preferences(f"TEXINPUTS={self.work}\n")
        self.start_shell()
        self.assertEqual(self.shell_call("Locate", "x"), [os.path.join(self.work, "x.tex")])
        self.assertEqual(self.shell_call("Locate", "nosuchfile"), [""])
        self.assertEqual(self.shell_call("Find", "nosuchfile"), ["TeX is processing your request."])
        self.assert_printed("\nLooking for file <nosuchfile>.\nInput file not found.\n")

    def test_formats(self):
        formats = os.path.join(self.home, "formats")
        for name in ("one", "two", "three", "four"):
            os.setxattr(self.file(name + ".fmt", "x", formats), "user.quillon.creator", b"QXET")
        self.add_preferences(f"TEXFORMATS={formats}\n")
        self.start_shell()
        (said,) = self.shell_call("Formats")
        self.assertEqual(len(said.split(" ")), 2)
        self.assertLess(set(said.split(" ")), {"one", "two", "three", "four"})

    def test_problems(self):
        self.file("y.tex", "Hello.\n\\nothing\n\\bye\n")
        self.start_shell()
        self.assertEqual(self.shell_call("Problems"), [[]])
        self.shell_call("Exec", "pdftex -interaction=nonstopmode y.tex", self.work)
        ((problem,),) = self.shell_call("Problems")
        self.assertEqual(list(problem), [os.path.join(self.work, "y.tex"), 2, "error", "Undefined control sequence."])

    def test_open_and_open_raw(self):
        path = os.path.join(self.folder_of_bytes(), b"y.tex")
        self.start_shell()
        self.assertEqual(self.shell_call("Open", os.path.join(self.work, "x.tex")), [])
        self.assert_printed("Output written on x.pdf")
        self.assertEqual(self.shell_call("OpenRaw", path), [])
        self.assert_printed("Output written on y.pdf")
        for missing in ("relative.tex", "", "/nowhere/at/all.tex"):
            self.assert_fails("there is no file " + missing, self.shell_call, "Open", missing)
        self.assert_fails("there is no file of that name", self.shell_call, "OpenRaw", path + b"\0more")

    def test_cancel(self):
        self.start_shell()
        run = self.start_endless()
        self.assertEqual(self.shell_call("Cancel"), [])
        run.join(60)
        self.assertEqual(run.result.get_dbus_name(), "org.quillon.Shell1.Error.Cancelled")

    def test_quit(self):
        shell = self.start_shell()
        self.assertEqual(self.shell_call("Quit"), [])
        self.assertEqual(shell.wait(60), 0)

    def test_follow(self):
        self.start_shell()
        self.assertEqual(self.shell_call("Follow", True), [])
        self.assertEqual(self.shell_call("Follow", False), [])

    def test_event(self):
        self.start_shell()
        self.assertEqual(self.event("aevt", "oapp"), [0, {}])
        command = ("TEXT", GLib.Variant("s", "pdftex x.tex"))
        folder = ("fss ", GLib.Variant("s", self.work))
        self.assertEqual(self.event("QUIL", "exec", **{"----": command, "dest": folder}), [0, {"----": ["long", 0]}])
        self.assertTrue(self.made("x.pdf"))
        self.assertEqual(self.event("QUIL", "loca", **{"----": ("TEXT", GLib.Variant("s", "nosuchfile"))}),
                         [0, {"----": ["TEXT", ""]}])
        self.assertEqual(self.event("QUIL", "frmt", what=("long", GLib.Variant("i", 1))), [-1708, {}])
        for name, value in (("Signature", "QUIL"), ("Name", "Quillon"), ("Path", self.shell_program())):
            found = self.call(APPLICATION, "org.freedesktop.DBus.Properties", "Get", "org.quillon.App1", name)
            self.assertEqual(found, [value])

    def test_the_interface_of_desktop_programs(self):
        self.start_shell()
        interface = "org.freedesktop.Application"
        self.assertEqual(self.call(SHELL, interface, "Activate", {}), [])
        self.assertEqual(self.call(SHELL, interface, "Open", [f"file://{self.work}/x.tex"], {}), [])
        self.assert_printed("Output written on x.pdf")
        self.assert_fails("there is no file", self.call, SHELL, interface, "Open", ["file:///nowhere/at/all"], {})
        self.assert_fails("there is no such action", self.call, SHELL, interface, "ActivateAction", "new", [], {})

    def test_introspection_names_every_method_and_signal(self):
        self.start_shell()
        found = {}
        for path in (SHELL, APPLICATION):
            (text,) = self.call(path, "org.freedesktop.DBus.Introspectable", "Introspect")
            for interface in xml.etree.ElementTree.fromstring(text).iter("interface"):
                found[interface.get("name")] = interface
        for name, methods in METHODS.items():
            if not name.startswith("org.freedesktop.DBus."):
                self.assertEqual({method.get("name"): signatures(method) for method in found[name].iter("method")},
                                 methods)
        self.assertEqual({signal.get("name"): signatures(signal)[0] + signatures(signal)[1]
                          for signal in found["org.quillon.Shell1"].iter("signal")},
                         {"ConsoleText": "s", "ConsoleTranscript": "b"})


def signatures(member):
    """What goes into a member and what comes out of it."""
    arguments = [(argument.get("direction", "in"), argument.get("type")) for argument in member.iter("arg")]
    return tuple("".join(kind for direction, kind in arguments if direction == way) for way in ("in", "out"))


class Busctl(Caller):
    def make_call(self, path, interface, method, values):
        signature = METHODS[interface][method][0]
        words = [signature, *busctl_words(values)] if signature else []
        done = self.run_program("busctl", "--user", "--address=" + self.address, "-j", "--", "call", NAME, path,
                                interface, method, *words)
        if done.returncode != 0:
            raise CallFailed(done.stderr)
        return without_types(json.loads(done.stdout)["data"]) if done.stdout.strip() else []


class Gdbus(Caller):
    def make_call(self, path, interface, method, values):
        words = [values.get_child_value(index).print_(True) for index in range(values.n_children())]
        done = self.run_program("gdbus", "call", "--session", "--timeout", "90", "--dest", NAME, "--object-path", path,
                                "--method", f"{interface}.{method}", "--", *words)
        if done.returncode != 0:
            raise CallFailed(done.stderr)
        return GLib.Variant.parse(None, done.stdout, None, None).unpack()


class Python(Caller):
    def make_call(self, path, interface, method, values):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        connection = Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)
        try:
            return connection.call_sync(NAME, path, interface, method, values, None, 0, 90000, None).unpack()
        except GLib.Error as error:
            raise CallFailed(error.message) from error
        finally:
            connection.close_sync(None)


del Caller

if __name__ == "__main__":
    unittest.main()
