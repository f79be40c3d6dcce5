"""Each event as another program may send it: with good, missing, unknown and wrongly typed parameters."""

import os
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import wait_until  # noqa: E402
from service import PLAIN, Service  # noqa: E402

NOT_HANDLED, NOT_FOUND, WRONG_TYPE = -1708, -1701, -1700
INVALID = "org.freedesktop.DBus.Error.InvalidArgs"
EXTRA = {"what": ("long", dbus.Int32(1))}


def text(value):
    return "TEXT", dbus.String(value)


def listed(*items):
    return "list", dbus.Array([dbus.Struct(item, signature="sv") for item in items], signature="(sv)")


class RawEvents(Service):
    def setUp(self):
        super().setUp()
        self.copy_binaries()  # a run without a folder leaves its files there
        self.marks = 0
        self.start_shell()

    def event(self, event_class, event_id, direct=None, **more):
        """Sends an event; its error, and keyword -> (type, value) of its reply."""
        parameters = dict(more) if direct is None else {"----": direct, **more}
        error, reply = self.send(event_class, event_id, **parameters)
        return int(error), {str(key): (str(kind), value) for key, (kind, value) in reply.items()}

    def mark(self):
        """Puts a mark into the console and waits for it; the mark."""
        self.marks += 1
        self.event("QUIL", "find", text(f"nosuchmark{self.marks}"))
        mark = f"\nLooking for file <nosuchmark{self.marks}>.\nInput file not found.\n"
        self.assert_printed(mark)
        return mark

    def printed_by(self, *words, **more):
        """What the console gets from one event and its run."""
        begin = self.mark()
        self.event(*words, **more)
        end = self.mark()
        return self.output().split(begin)[1].split(end)[0]

    def test_an_open_application_event_takes_no_parameters(self):
        self.assertEqual(self.event("aevt", "oapp"), (0, {}))
        self.assertEqual(self.event("aevt", "oapp", **EXTRA), (NOT_HANDLED, {}))
        self.assertEqual(self.event("aevt", "oapp", text("x")), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("aevt", "oapp", **EXTRA), "")

    def test_an_open_document_event_wants_a_list_of_files(self):
        path = os.path.join(self.work, "x.tex")
        self.assertEqual(self.event("aevt", "odoc"), (NOT_FOUND, {}))
        self.assertEqual(self.event("aevt", "odoc", listed(("fss ", path)), **EXTRA), (NOT_HANDLED, {}))
        self.assertEqual(self.event("aevt", "odoc", listed(text(path))), (WRONG_TYPE, {}))
        self.assertEqual(self.event("aevt", "odoc", text(path)), (WRONG_TYPE, {}))
        self.assertEqual(self.event("aevt", "odoc", listed(listed(("fss ", path)))), (WRONG_TYPE, {}))
        self.assertEqual(self.printed_by("aevt", "odoc", text(path)), "")
        self.assertEqual(self.event("aevt", "odoc", listed(("fss ", path))), (0, {}))
        self.assert_printed("Output written on x.pdf")

    def test_three_documents_are_the_first_alone(self):
        paths = [self.file(name, PLAIN) for name in ("one.tex", "two.tex", "three.tex")]
        said = self.printed_by("aevt", "odoc", listed(*(("fss ", path) for path in paths)))
        self.assertIn("\nProcessing -- pdftex one.tex \n", said)
        self.assertEqual(said.count("Processing"), 1)
        self.assertEqual(sorted(name for name in os.listdir(self.work) if name.endswith(".pdf")), ["one.pdf"])

    def test_an_empty_list_processes_the_last_document_again(self):
        self.printed_by("aevt", "odoc", ("fss ", os.path.join(self.work, "x.tex")))
        self.assertIn("\nProcessing -- pdftex x.tex \n", self.printed_by("aevt", "odoc", listed()))

    def test_documents_that_do_not_exist(self):
        said = self.printed_by("aevt", "odoc", ("fss ", os.path.join(self.work, "nosuchfile.tex")))
        self.assertIn("\nProcessing -- pdftex nosuchfile.tex \n", said)
        self.assertEqual(self.error_of(lambda: self.event("aevt", "odoc", ("fss ", "/nowhere/at/all.tex"))), INVALID)

    def test_29_characters_are_accepted_and_30_are_not(self):
        # The letters outside ASCII take two bytes each.
        accepted, refused = "\u00e9" * 25 + ".tex", "\u00e9" * 26 + ".tex"
        for name in (accepted, refused):
            self.file(name, PLAIN)
        self.assertIn(f"Output written on {accepted[:-4]}.pdf",
                      self.printed_by("aevt", "odoc", ("fss ", os.path.join(self.work, accepted))))
        self.assertEqual(self.event("aevt", "odoc", ("fss ", os.path.join(self.work, refused))), (0, {}))
        self.assertEqual(self.printed_by("aevt", "odoc", ("fss ", os.path.join(self.work, refused))),
                         f'Filename "{refused}" is too long for Quillon.\n'
                         f"It can be typeset with: quillon exec pdftex '{refused}'\n")

    def test_printing_is_refused_whatever_comes_with_it(self):
        for direct in (None, text("x"), listed(("fss ", os.path.join(self.work, "x.tex")))):
            self.assertEqual(self.event("aevt", "pdoc", direct), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("aevt", "pdoc"), "")

    def test_quit_looks_at_no_parameters(self):
        self.assertEqual(self.event("aevt", "quit", text("x"), **EXTRA)[0], 0)
        self.assertEqual(self.running.wait(60), 0)

    def test_quit_during_a_run_ends_the_shell_at_once_and_the_run_with_it(self):
        run = self.start_endless()
        self.assertEqual(self.event("aevt", "quit"), (0, {}))
        self.assertEqual(self.running.wait(60), 0)
        run.join(60)
        self.assertEqual(run.result.get_dbus_name(), "org.freedesktop.DBus.Error.NoReply")
        wait_until(lambda: not self.processes_of("endless.tex"), "the end of the run")
        self.assertEqual(self.setting("RECENTFILE1"), os.path.join(self.work, "endless.tex"))

    def test_events_that_want_no_reply_are_carried_out(self):
        connection = self.bus()
        own = connection.get_object("org.quillon.Shell", "/org/quillon/App", introspect=False)
        direct = dbus.Dictionary({"----": dbus.Struct(text("nosuchfile"), signature="sv")}, signature="s(sv)")
        begin = self.mark()
        for event in (("QUIL", "loca"), ("QUIL", "frmt"), ("aevt", "pdoc"), ("core", "setd"), ("aevt", "ansr"),
                      ("QUIL", "find"), ("QUIL", "exec")):
            own.Event(*event, direct, dbus_interface="org.quillon.App1", signature="ssa{s(sv)}", ignore_reply=True)
        # The bus brings the calls of one connection in their order, so this one is answered after them.
        shell = connection.get_object("org.quillon.Shell", "/org/quillon/Shell")
        self.assertEqual(shell.Formats(dbus_interface="org.quillon.Shell1"), "")
        end = self.mark()
        self.assertEqual(self.output().split(begin)[1].split(end)[0],
                         "\nLooking for file <nosuchfile>.\nInput file not found.\n")

    def test_exec_answers_the_status(self):
        here = {"dest": ("fss ", self.work)}
        self.file("bad.tex", "\\undefined\n")
        self.assertEqual(self.event("QUIL", "exec", text("pdftex x.tex"), **here), (0, {"----": ("long", 0)}))
        self.assertEqual(self.event("QUIL", "exec", text("pdftex bad.tex"), **here), (0, {"----": ("long", 1)}))

    def test_exec_with_an_unknown_parameter_runs_nothing(self):
        command = text("pdftex x.tex")
        self.assertEqual(self.event("QUIL", "exec", command, **EXTRA), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("QUIL", "exec", command, **EXTRA), "I missed something.\n")

    def test_exec_without_a_text_runs_nothing(self):
        for direct in (None, ("long", dbus.Int32(7)), ("fss ", self.work), listed(text("pdftex x.tex")), text("")):
            self.assertEqual(self.printed_by("QUIL", "exec", direct), "")
            self.assertEqual(self.event("QUIL", "exec", direct)[0], 0)

    def test_exec_with_a_folder_of_a_wrong_type_or_without_one_uses_the_binaries_folder(self):
        said = f"\nProcessing -- pdftex nosuchfile.tex\nworking directory --  {self.binaries}\n"
        command = text("pdftex nosuchfile.tex")
        self.assertTrue(self.printed_by("QUIL", "exec", command).startswith(said))
        self.assertTrue(self.printed_by("QUIL", "exec", command, dest=text(self.work)).startswith(said))

    def test_exec_with_a_folder_in_the_command(self):
        other = os.path.join(self.home, "paper")
        self.file("y.tex", PLAIN, other)
        here = {"dest": ("fss ", self.work)}
        self.assertIn(f"\nProcessing -- etex y.tex\nworking directory --  {other}\n",
                      self.printed_by("QUIL", "exec", text(f"etex y.tex -@ {other}"), **here))
        self.assertTrue(os.path.exists(os.path.join(other, "y.dvi")))
        for folder in ("/nowhere/at/all", os.path.join(self.work, "x.tex"), ""):
            self.assertIn(f"\nProcessing -- etex x.tex\nworking directory --  {self.work}\n",
                          self.printed_by("QUIL", "exec", text(f"etex x.tex -@ {folder}"), **here))

    def test_find_is_acknowledged(self):
        for direct in (text("nosuchfile"), None, ("long", dbus.Int32(7))):
            self.assertEqual(self.event("QUIL", "find", direct),
                             (0, {"errs": ("TEXT", "TeX is processing your request.")}))
        self.assertEqual(self.printed_by("QUIL", "find", text("nosuchfile")),
                         "\nLooking for file <nosuchfile>.\nInput file not found.\n")
        self.assertEqual(self.event("QUIL", "find", text("x"), **EXTRA), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("QUIL", "find", text("x"), **EXTRA), "I missed something.\n")

    def test_locate_answers_the_path_or_an_empty_text(self):
        for direct in (text("nosuchfile"), None, ("long", dbus.Int32(7)), text("")):
            self.assertEqual(self.event("QUIL", "loca", direct), (0, {"----": ("TEXT", "")}))
        self.assertEqual(self.event("QUIL", "loca", text("x"), **EXTRA), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("QUIL", "loca", text("x"), **EXTRA), "I missed something.\n")

    def test_formats_of_a_menu_without_formats_are_an_empty_text(self):
        self.assertEqual(self.event("QUIL", "frmt"), (0, {"----": ("TEXT", "")}))
        self.assertEqual(self.event("QUIL", "frmt", text("x")), (NOT_HANDLED, {}))
        self.assertEqual(self.printed_by("QUIL", "frmt", **EXTRA), "")

    def test_reports_of_strangers_are_refused(self):
        for event in (("aevt", "ansr"), ("QUIL", "exit"), ("QUIL", "gone")):
            for direct in (None, ("long", dbus.Int32(0)), text("x")):
                self.assertEqual(self.event(*event, direct, edit=("long", dbus.Int32(1))), (NOT_HANDLED, {}))
            self.assertEqual(self.printed_by(*event), "")

    def test_unknown_classes_and_ids(self):
        for event in (("core", "setd"), ("QUIL", "EXEC"), ("aevt", "exec"), ("QUIL", "odoc"), ("    ", "    ")):
            self.assertEqual(self.event(*event, text("pdftex x.tex")), (NOT_HANDLED, {}))
        for event in (("", ""), ("QUI", "exec"), ("QUIL", "execs")):
            self.assertEqual(self.error_of(lambda of=event: self.event(*of)), INVALID)

    def test_texts_of_a_megabyte(self):
        megabyte = 1 << 20
        self.assertEqual(self.event("QUIL", "loca", text("x" * megabyte)), (0, {"----": ("TEXT", "")}))
        self.assertTrue(self.printed_by("QUIL", "find", text("x" * megabyte)).startswith(
            f"A text of {megabyte} characters was received; only its first 255 are used.\n"))
        self.assertEqual(self.event("QUIL", "exec", text("x" * megabyte))[0], 0)
        self.assert_printed(f"A text of {megabyte} characters was received; only its first 1023 are used.\n")

    def test_bytes_that_are_not_utf8(self):
        def raw(value):
            return "TEXT", dbus.ByteArray(value)
        here = {"dest": ("fss ", self.work)}
        self.assertEqual(self.event("QUIL", "loca", raw(b"no\xffsuch")), (0, {"----": ("TEXT", "")}))
        self.assertIn("\nLooking for file <no\udcffsuch>.\n", self.printed_by("QUIL", "find", raw(b"no\xffsuch")))
        with open(os.path.join(os.fsencode(self.work), b"z\xff.tex"), "w", encoding="ascii") as file:
            file.write(PLAIN)
        self.assertEqual(self.event("QUIL", "exec", raw(b"pdftex z\xff.tex"), **here), (0, {"----": ("long", 0)}))
        self.assertTrue(os.path.exists(os.path.join(os.fsencode(self.work), b"z\xff.pdf")))

    def test_lists_of_lists_are_taken_up_to_a_depth(self):
        value = listed()
        for _ in range(7):
            value = listed(value)
        self.assertEqual(self.event("aevt", "odoc", value), (WRONG_TYPE, {}))
        self.assertEqual(self.error_of(lambda: self.event("aevt", "odoc", listed(value))), INVALID)


if __name__ == "__main__":
    unittest.main()
