"""The tool host as the shell sees it: real bundles, real engines, a real bus."""

import os
import resource
import signal
import sys
import time
import unittest

import dbus
from gi.repository import GLib

from shell_double import APP, PATH, TOOL, Shell, alive, code, kill, log_of, wait_for

HOME = os.path.join(os.environ["QUILLON_BUILD_FOLDER"], "lib/quillon")
LATEX = r"\documentclass{article}\begin{document}Hi\newpage there\end{document}"


def read_pid(path):
    try:
        with open(path) as file:
            content = file.read()
    except OSError:
        return 0
    return int(content) if content.endswith("\n") else 0


class HostTest(unittest.TestCase):
    def setUp(self):
        self.shell = Shell(HOME)
        self.addCleanup(self.shell.close)

    def pid(self, name):
        return wait_for(lambda: read_pid(os.path.join(self.shell.work, name)), "the process " + name)

    def assertGone(self, *pids):
        for pid in pids:
            wait_for(lambda: not alive(pid), "the end of process %d" % pid, 10)


class Runs(HostTest):
    def test_says_who_it_is(self):
        tool = self.shell.launch("pdftex")
        self.assertEqual(str(tool.property(APP, "Signature")), "PXET")
        self.assertEqual(str(tool.property(APP, "Name")), "pdftex")
        self.assertEqual(str(tool.property(APP, "Path")), HOME + "/pdftex.app")
        self.assertFalse(tool.waiting())

    def test_every_bundle_has_its_signature(self):
        for name, signature in {"tex": "*Xet", "etex": "eXet", "pdftex": "PXET", "pdfetex": "PxET", "dvips": "DVPS",
                                "bibtex": "BIBT", "makeindex": "MKIX", "mpost": "MPST", "dvipdfm": "DPDF",
                                "setpaths": "SETP"}.items():
            with open(os.path.join(HOME, name + ".app/Contents/PkgInfo")) as file:
                self.assertEqual(file.read(), "APPL" + signature)

    def test_a_clean_run_in_a_folder_with_blanks_and_accents(self):
        self.shell.write("my file.tex", LATEX)
        reply = self.shell.launch("pdftex").run("pdftex -fmt=pdflatex my\x1ffile.tex ")
        self.assertEqual((reply["----"], reply["edit"], reply["iden"]), (0, 0, code("PXET")))
        log = log_of(reply)
        self.assertIn(b'\rOutput written on "my file.pdf" (2 pages, ', log)
        self.assertNotIn(b"\n", log)
        settings = self.shell.settings()
        self.assertEqual(settings[b"PDFTEXOUTPUT"], b"1")
        self.assertEqual(settings[b"PDFFILE"],
                         (self.shell.work + "/my file.pdf").replace(" ", "\\x1f").encode())
        self.assertNotIn(b"LINENUMBER", settings)
        self.assertEqual(os.stat(reply["logf"]).st_mode & 0o777, 0o600)
        self.assertEqual(os.stat(os.path.dirname(reply["logf"])).st_mode & 0o777, 0o700)

    def test_a_quoted_name_with_blanks(self):
        self.shell.write("my file.tex", LATEX)
        reply = self.shell.launch("pdftex").run('pdftex -fmt=pdflatex "my file.tex"')
        self.assertEqual(reply["----"], 0)

    def test_dvi_output(self):
        self.shell.write("x.tex", "Hi\\bye\n")
        reply = self.shell.launch("pdftex").run("pdftex -output-format=dvi x.tex ")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(self.shell.settings()[b"PDFTEXOUTPUT"], b"2")
        self.assertTrue(self.shell.settings()[b"DVIFILE"].endswith(b"/x.dvi"))

    def test_output_directory_and_jobname(self):
        self.shell.write("x.tex", "Hi\\bye\n")
        os.mkdir(self.shell.work + "/the out")
        tool = self.shell.launch("pdfetex")
        for mode in ("", "-interaction=batchmode "):
            reply = tool.run('pdfetex %s-output-directory="the out" -jobname="a b" x.tex' % mode)
            self.assertEqual(reply["----"], 0)
            self.assertEqual(self.shell.settings()[b"PDFTEXOUTPUT"], b"1")
            self.assertTrue(self.shell.settings()[b"PDFFILE"].endswith(b"/the\\x1fout/a\\x1fb.pdf"))
            os.remove(self.shell.work + "/the out/a b.pdf")

    def test_an_older_output_is_not_this_runs(self):
        self.shell.write("x.tex", "\\bye\n")
        self.shell.write("x.pdf", "old")
        os.utime(self.shell.work + "/x.pdf", (1000, 1000))
        reply = self.shell.launch("pdftex").run("pdftex x.tex")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(self.shell.settings()[b"PDFTEXOUTPUT"], b"0")

    def test_an_error_without_a_display_asks_for_the_editor(self):
        self.shell.write("sub/part.tex", "ok\n\n\\wrong\n")
        self.shell.write("main.tex", "Hello\n\\input sub/part\n\\bye\n")
        reply = self.shell.launch("pdftex").run("pdftex main.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 1))
        self.assertIn(b"! Emergency stop.", log_of(reply))
        settings = self.shell.settings()
        self.assertTrue(settings[b"FILENAME"].endswith(b"/sub/part.tex"), settings)
        self.assertTrue(settings[b"FILENAME"].startswith(b"/"))
        self.assertEqual(settings[b"LINENUMBER"], b"3")
        self.assertEqual(settings[b"PDFTEXOUTPUT"], b"0")

    def test_an_error_in_a_deep_path_is_not_cut(self):
        name = "/".join(["a folder with a long name " + str(i) for i in range(5)]) + "/the part.tex"
        self.shell.write(name, "\n\\wrong\n")
        self.shell.write("main.tex", '\\input "%s"\n\\bye\n' % name)
        reply = self.shell.launch("pdftex").run("pdftex main.tex")
        self.assertEqual(reply["edit"], 1)
        self.assertEqual(self.shell.settings()[b"FILENAME"].decode(),
                         (self.shell.work + "/" + name).replace(" ", "\\x1f"))

    def test_file_line_error_style(self):
        self.shell.write("b c.tex", "\n\n\n\\wrong\n")
        self.shell.write("main.tex", '\\input "b c"\n\\bye\n')
        reply = self.shell.launch("pdftex").run("pdftex -file-line-error -interaction=nonstopmode main.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 1))
        self.assertTrue(self.shell.settings()[b"FILENAME"].endswith(b"/b\\x1fc.tex"))
        self.assertEqual(self.shell.settings()[b"LINENUMBER"], b"4")

    def test_a_missing_file_has_no_line(self):
        reply = self.shell.launch("pdftex").run("pdftex nothing.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 0))
        self.assertNotIn(b"LINENUMBER", self.shell.settings())

    def test_a_program_that_is_missing(self):
        tool = self.shell.launch(self.shell.bundle("lost", "no-such-program"))
        reply = tool.run("lost x")
        self.assertEqual((reply["----"], reply["edit"]), (127, 0))
        self.assertEqual(log_of(reply), b"I can't start no-such-program: there is no such program\r")

    def test_a_folder_that_is_missing(self):
        reply = self.shell.launch("pdftex").run("pdftex x", self.shell.work + "/none")
        self.assertEqual(reply["----"], 127)
        self.assertEqual(log_of(reply), b"I can't start pdftex: No such file or directory\r")

    def test_a_program_that_prints_nothing_has_no_log(self):
        reply = self.shell.shell_tool("exit 5\n").run("x")
        self.assertEqual(reply["----"], 5)
        self.assertNotIn("logf", reply)

    def test_a_program_that_dies_by_a_signal(self):
        reply = self.shell.shell_tool("kill -SEGV $$\n").run("x")
        self.assertEqual(reply["----"], 128 + signal.SIGSEGV)

    def test_wrong_parameters_are_refused(self):
        tool = self.shell.launch("dvips")
        long = dbus.Struct(("long", dbus.Int32(3)), signature="sv")
        line = dbus.Struct(("TEXT", dbus.String("dvips x")), signature="sv")
        self.assertEqual(tool.event("QUIL", "priv")[0], -1701)
        self.assertEqual(tool.event("QUIL", "priv", {"----": line})[0], -1701)
        self.assertEqual(tool.event("QUIL", "priv", {"----": long, "dest": long})[0], -1700)
        self.assertEqual(tool.event("QUIL", "zzzz")[0], -1708)
        self.assertEqual(tool.event("aevt", "oapp")[0], 0)

    def test_words_reach_the_program_as_they_are(self):
        tool = self.shell.shell_tool('for w in "$@"; do printf "<%s>" "$w"; done; printf "[%s]" "$0"\n')
        reply = tool.run('word a\x1fb "c  d" "" $HOME `id` \'x\' e"f g"h ;')
        self.assertTrue(log_of(reply).startswith(b"<a b><c  d><><$HOME><`id`><'x'><ef gh><;>"), log_of(reply))

    def test_a_command_line_that_is_not_utf8(self):
        tool = self.shell.shell_tool('printf "%s" "$1"\n')
        self.assertEqual(log_of(tool.run(b"x \xca\xff")), b"\xca\xff")

    def test_the_output_follows_the_space_setting(self):
        self.shell.write_preferences("SPACECHAR=abc\n")
        tool = self.shell.shell_tool('printf "%s" "$1"\n')
        self.assertEqual(log_of(tool.run(b"x a\xcab")), b"a b")

    def test_the_engine_runs_under_the_commands_first_word(self):
        self.shell.write("x.tex", "\\immediate\\write16{[\\jobname]}\\end\n")
        reply = self.shell.launch("etex").run("etex x.tex")
        self.assertEqual(reply["----"], 0)
        self.assertIn(b"preloaded format=etex", log_of(reply))

    def test_knuths_engine_runs_for_tex(self):
        self.shell.write("x.tex", "Hi\\bye\n")
        reply = self.shell.launch("tex").run("tex x.tex")
        self.assertIn(b"This is TeX, Version", log_of(reply))
        self.assertEqual(self.shell.settings()[b"PDFTEXOUTPUT"], b"2")

    def test_a_second_command_while_one_runs_is_refused(self):
        tool = self.shell.shell_tool("touch started; sleep 100\n")
        tool.send("x")
        wait_for(lambda: os.path.exists(self.shell.work + "/started"), "the start")
        tool.send("x")
        wait_for(lambda: tool.replies, "the refusal")
        self.assertEqual(tool.replies[0][0], -609)

    def test_quit_while_idle(self):
        tool = self.shell.launch("dvips")
        self.assertEqual(tool.event("aevt", "quit")[0], 0)
        wait_for(tool.gone, "the end")
        self.assertEqual(tool.process.returncode, 0)


class Formats(HostTest):
    LINES = {
        "pdftex": [("pdftex -ini -jobname=pdftex -progname=pdftex *pdftex.ini", "pdftex", b"QXET"),
                   ("pdftex -ini -jobname=pdflatex -progname=pdflatex *pdflatex.ini", "pdflatex", b"QXET")],
        "pdfetex": [("pdfetex -ini -jobname=pdfetex -progname=pdfetex *pdftex.ini", "pdfetex", b"qXET"),
                    ("pdfetex -ini -jobname=pdfelatex -progname=pdfelatex *pdflatex.ini", "pdfelatex", b"qXET")],
        "etex": [("etex -ini -jobname=etex -progname=etex *etex.ini", "etex", b"qXET"),
                 ("etex -ini -jobname=elatex -progname=elatex *elatex.ini", "elatex", b"qXET")],
        "tex": [("tex -ini -jobname=tex -progname=tex tex.ini", "tex", b"????"),
                ("tex -ini -jobname=latex -progname=latex latex.ini", "latex", b"QXET")],
    }

    def test_every_build_line_makes_a_format_with_its_creator(self):
        for bundle, lines in self.LINES.items():
            tool = self.shell.launch(bundle)
            for line, name, creator in lines:
                with self.subTest(line=line):
                    reply = tool.run(line)
                    self.assertEqual(reply["----"], 0, log_of(reply)[-600:])
                    place = os.path.join(self.shell.work, name + ".fmt")
                    self.assertGreater(os.path.getsize(place), 50000)
                    self.assertEqual(os.getxattr(place, "user.quillon.creator"), creator)
                    self.assertEqual(self.shell.settings()[b"PDFTEXOUTPUT"], b"0")

    def test_a_built_format_is_used(self):
        tool = self.shell.launch("etex")
        self.assertEqual(tool.run("etex -ini -jobname=elatex -progname=elatex *elatex.ini")["----"], 0)
        self.shell.write("x.tex", LATEX)
        reply = tool.run("elatex x.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assertIn(b"preloaded format=elatex", log_of(reply))
        self.assertTrue(self.shell.settings()[b"DVIFILE"].endswith(b"/x.dvi"))


class Prompts(HostTest):
    def wait_prompt(self, tool):
        wait_for(tool.waiting, "the prompt")

    def test_answers_reach_tex(self):
        self.shell.write("err.tex", "\\wrong\n\\bye\n")
        tool = self.shell.launch("pdftex", QUILLON_FOLLOWED="1")
        tool.follow()
        tool.send("pdftex err.tex")
        self.wait_prompt(tool)
        # Sent before, but taken from the bus only when this program next waits.
        wait_for(lambda: bytes(tool.output).endswith(b"\n? "), "what came before the prompt")
        tool.answer(b"h\n")
        wait_for(lambda: b"The control sequence at the end" in tool.output, "TeX's help")
        self.wait_prompt(tool)
        tool.answer(b"\n")
        reply = tool.reply()
        self.assertEqual(reply["edit"], 0)
        self.assertIn(b"? h\rThe control sequence", log_of(reply))
        self.assertEqual(self.shell.settings()[b"LINENUMBER"], b"1")
        self.assertEqual(log_of(reply), bytes(tool.output).replace(b"\r\n", b"\r").replace(b"\n", b"\r"))

    def test_waiting_is_announced(self):
        seen = []
        tool = self.shell.shell_tool('printf "name: "; read x; echo "<$x>"\n', QUILLON_FOLLOWED="1")
        tool.follow()
        self.shell.bus.add_signal_receiver(lambda interface, changed, gone: seen.append(interface),
                                           "PropertiesChanged", "org.freedesktop.DBus.Properties",
                                           bus_name=tool.bus_name)
        tool.send("x")
        self.wait_prompt(tool)
        tool.answer(b"you\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<you>\r"))
        wait_for(lambda: len(seen) >= 2, "both changes")

    def test_a_listener_alone_keeps_the_prompt_open(self):
        tool = self.shell.shell_tool('printf "name: "; read x && echo "<$x>"\n')
        tool.follow()
        tool.send("x")
        self.wait_prompt(tool)
        tool.answer(b"me\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<me>\r"))

    def test_a_prompt_without_a_line_is_seen(self):
        tool = self.shell.shell_tool('read x; echo "<$x>"\n')
        self.assertEqual(log_of(tool.run("x")), b"<>\r")

    def test_a_child_that_reads_is_seen(self):
        tool = self.shell.shell_tool('sh -c "read x; echo end"; true\n')
        self.assertEqual(log_of(tool.run("x")), b"end\r")

    def test_a_followed_run_whose_follower_never_listens_ends(self):
        tool = self.shell.shell_tool('read x; echo end\n', QUILLON_FOLLOWED="1")
        self.assertEqual(log_of(tool.run("x")), b"end\r")

    def test_e_opens_the_file_whatever_its_name(self):
        for name in ("it's.tex", "a b.tex", "é.tex", "a&b;c.tex"):
            with self.subTest(name=name):
                self.shell.write(name, "\n\n\\wrong\n")
                tool = self.shell.launch("pdftex", QUILLON_FOLLOWED="1")
                tool.follow()
                tool.send('pdftex "%s"' % name)
                self.wait_prompt(tool)
                tool.answer(b"e\n")
                reply = tool.reply()
                self.assertEqual(reply["edit"], 1)
                settings = self.shell.settings()
                self.assertEqual(settings[b"LINENUMBER"], b"3")
                self.assertTrue(settings[b"FILENAME"].endswith(("/" + name).replace(" ", "\\x1f").encode()))
                self.assertEqual(tool.event("aevt", "quit")[0], 0)

    def test_a_name_is_never_run(self):
        name = "x$(touch$IFS$()ran)`touch ran`.tex"
        self.shell.write(name, "\\wrong\n")
        self.shell.write("main.tex", "\\catcode`\\$=12 \\input \"%s\"\n\\bye\n" % name)
        tool = self.shell.launch("pdftex", QUILLON_FOLLOWED="1")
        tool.follow()
        tool.send("pdftex main.tex")
        self.wait_prompt(tool)
        tool.answer(b"e\n")
        reply = tool.reply()
        self.assertEqual(reply["edit"], 1, log_of(reply))
        self.assertFalse(os.path.exists(self.shell.work + "/ran"))

    def test_metapost_asks_for_its_editor(self):
        self.shell.write("fig.mp", "beginfig(1);\n draw nothing at all;\nendfig;\nend\n")
        reply = self.shell.launch("mpost").run("mpost fig")
        self.assertEqual(reply["edit"], 1, log_of(reply))
        self.assertTrue(self.shell.settings()[b"FILENAME"].endswith(b"/fig.mp"))
        self.assertEqual(self.shell.settings()[b"LINENUMBER"], b"2")


class Streams(HostTest):
    def test_a_flood_goes_through_with_bounded_memory(self):
        tool = self.shell.shell_tool("head -c 100000000 /dev/zero | tr '\\0' 'x' | fold -w 100\n")
        reply = tool.run("x")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(os.path.getsize(reply["logf"]), 101000000 - 1)
        with open("/proc/%d/status" % tool.process.pid) as file:
            peak = [line for line in file if line.startswith("VmHWM")][0].split()[1]
        self.assertLess(int(peak), 30000)

    def test_nuls_and_split_characters(self):
        tool = self.shell.shell_tool("head -c 70000 /dev/zero; i=0; while [ $i -lt 3000 ]; do "
                                     "printf 'é€'; i=$((i+1)); done; printf '\\303'\n")
        self.assertEqual(log_of(tool.run("x")), b"\0" * 70000 + "é€".encode() * 3000 + b"\xc3")

    def test_line_ends(self):
        tool = self.shell.shell_tool("printf 'a\\r\\nb\\nc\\r'; sleep 0.05; printf '\\nd\\re\\n\\n'\n")
        self.assertEqual(log_of(tool.run("x")), b"a\rb\rc\rd\re\r\r")

    def test_output_comes_while_the_program_runs(self):
        tool = self.shell.shell_tool("echo one; while [ ! -e go ]; do sleep 0.02; done; echo two\n",
                                     QUILLON_FOLLOWED="1")
        tool.follow()
        tool.send("x")
        wait_for(lambda: bytes(tool.output) == b"one\n", "the first line")
        self.shell.write("go", "")
        self.assertEqual(log_of(tool.reply()), b"one\rtwo\r")

    def test_a_full_disk_is_said_and_the_run_goes_on(self):
        limit = resource.getrlimit(resource.RLIMIT_FSIZE)
        program = self.shell.write("flood", "#!/bin/sh\nhead -c 900000 /dev/zero | tr '\\0' 'x'\nexit 3\n", 0o755)
        bundle = self.shell.bundle("flood", program)
        resource.setrlimit(resource.RLIMIT_FSIZE, (200000, limit[1]))
        try:
            tool = self.shell.launch(bundle)
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, limit)
        reply = tool.run("flood")
        self.assertEqual(reply["----"], 3)
        log = log_of(reply)
        self.assertLessEqual(len(log), 200000)
        self.assertRegex(log, rb"\rThe rest of the output was lost \(7000\d\d bytes\): File too large\r$")


class Stopping(HostTest):
    STUBBORN = "trap '' INT TERM HUP; echo $$ > leader; (trap '' INT TERM HUP; sh -c 'echo $$ > child; " \
               "while :; do sleep 0.1; done') & while :; do sleep 0.1; done\n"

    def exit_event(self):
        events = self.shell.receiver.events
        wait_for(lambda: events, "the exit event")
        event_class, event_id, parameters = events[0]
        self.assertEqual((event_class, event_id), ("QUIL", "exit"))
        return parameters

    def test_cancel_goes_up_to_kill(self):
        tool = self.shell.shell_tool(self.STUBBORN)
        tool.send("x")
        pids = [self.pid("leader"), self.pid("child")]
        begun = time.monotonic()
        self.assertEqual(tool.event("aevt", "quit")[0], 0)
        parameters = self.exit_event()
        self.assertGoneWithin(begun, 5)
        self.assertEqual(parameters["----"], 128 + signal.SIGKILL)
        self.assertEqual(parameters["iden"], code("TEST"))
        wait_for(tool.gone, "the host's end")
        self.assertGone(*pids)

    def assertGoneWithin(self, begun, seconds):
        self.assertLess(time.monotonic() - begun, seconds)

    def test_an_interrupt_is_enough_for_most(self):
        tool = self.shell.shell_tool("echo begun; echo $$ > leader; exec sleep 100\n")
        tool.send("x")
        self.pid("leader")
        tool.event("aevt", "quit")
        parameters = self.exit_event()
        self.assertEqual(parameters["----"], 128 + signal.SIGINT)
        self.assertEqual(log_of(parameters), b"begun\r")
        self.assertEqual(parameters["edit"], 0)

    def test_tex_in_a_loop_is_cancelled_at_once(self):
        self.shell.write("loop.tex", "\\immediate\\write16{on}\\def\\x{\\x}\\x\n")
        tool = self.shell.launch("pdftex", QUILLON_FOLLOWED="1")
        tool.follow()
        tool.send("pdftex loop.tex")
        wait_for(lambda: b"on" in tool.output, "the loop")
        begun = time.monotonic()
        tool.event("aevt", "quit")
        self.exit_event()
        self.assertGoneWithin(begun, 0.9)
        wait_for(tool.gone, "the host's end")

    def test_tex_at_its_prompt_is_cancelled(self):
        self.shell.write("err.tex", "\\wrong\n\\bye\n")
        tool = self.shell.launch("pdftex", QUILLON_FOLLOWED="1")
        tool.follow()
        tool.send("pdftex err.tex")
        wait_for(tool.waiting, "the prompt")
        tool.event("aevt", "quit")
        self.assertEqual(self.exit_event()["edit"], 0)

    def test_a_terminated_host_cancels(self):
        tool = self.shell.shell_tool("echo $$ > leader; exec sleep 100\n")
        tool.send("x")
        leader = self.pid("leader")
        kill(tool.process.pid, signal.SIGTERM)
        self.exit_event()
        self.assertGone(leader)

    OUTLIVING = "trap '' HUP; echo $$ > leader\n" \
                "(trap '' HUP; sh -c 'echo $$ > hangup; exec sleep 1000') &\n" \
                "setsid sh -c 'echo $$ > session; exec sleep 1000' &\n" \
                "(setsid sh -c '(echo; exec sh -c \"echo \\$\\$ > daemon; exec sleep 1000\") & exit 0' &)\n" \
                "while :; do sleep 0.1; done\n"

    def outliving(self, **environment):
        tool = self.shell.shell_tool(self.OUTLIVING, **environment)
        tool.send("x")
        return tool, [self.pid(name) for name in ("leader", "hangup", "session", "daemon")]

    def test_a_killed_host_leaves_nothing(self):
        tool, pids = self.outliving()
        kill(tool.process.pid)
        self.assertGone(*pids)

    def test_a_killed_guard_leaves_nothing(self):
        tool, pids = self.outliving()
        with open("/proc/%d/stat" % pids[0]) as file:
            guard = int(file.read().rpartition(")")[2].split()[1])
        with open("/proc/%d/comm" % guard) as file:
            self.assertEqual(file.read(), "quillon-guard\n")
        kill(guard)
        reply = tool.reply()
        self.assertEqual(reply["----"], 128 + signal.SIGKILL)
        self.assertGone(*pids)

    def test_a_cancelled_run_leaves_nothing(self):
        tool, pids = self.outliving()
        tool.event("aevt", "quit")
        self.exit_event()
        self.assertGone(*pids)

    def test_a_run_that_ended_leaves_nothing(self):
        tool = self.shell.shell_tool("setsid sh -c 'trap \"\" HUP TERM; echo $$ > daemon; while :; do sleep 0.1; "
                                     "done' & while [ ! -s daemon ]; do sleep 0.02; done\n")
        self.assertEqual(tool.run("x")["----"], 0)
        self.assertGone(self.pid("daemon"))

    def test_background_children_of_tex_end_with_it(self):
        self.shell.write("x.tex", "\\immediate\\write18{(sh -c 'echo $PPID >p; echo $$ >daemon; exec sleep 1000') "
                                  "</dev/null >/dev/null 2>&1 &}"
                                  "\\immediate\\write18{while [ ! -s daemon ]; do sleep 0.02; done}Hi\\bye\n")
        reply = self.shell.launch("pdftex").run("pdftex -shell-escape x.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assertGone(self.pid("daemon"))

    def test_the_shells_end_is_the_runs_end(self):
        tool, pids = self.outliving()
        self.shell.bus.close()
        self.assertGone(tool.process.pid, *pids)
        self.assertEqual(os.listdir(self.shell.root + "/cache/quillon") if
                         os.path.isdir(self.shell.root + "/cache/quillon") else [], [])

    def test_a_shell_that_is_killed_takes_an_idle_tool_with_it(self):
        bundle = os.path.join(HOME, "pdftex.app/Contents/Linux/pdftex")
        report = self.shell.work + "/tool"
        parent = os.fork()
        if parent == 0:
            try:
                child = os.fork()
                if child == 0:
                    os.execve(bundle, [bundle], dict(self.shell.environment, QUILLON_SHELL_PID=str(os.getppid())))
                with open(report, "w") as file:
                    file.write("%d\n" % child)
                signal.pause()
            finally:
                os._exit(0)
        tool = self.pid("tool")
        wait_for(lambda: self.shell.bus.name_has_owner("org.quillon.App.p%d" % tool), "the tool")
        kill(parent)
        os.waitpid(parent, 0)
        self.assertGone(tool)


class Environments(HostTest):
    SHOW = 'for v in "$@"; do eval "printf \'%s=%s\\n\' $v \\"\\$$v\\""; done\n'

    def show(self, preferences, names, signature="TEST", **environment):
        self.shell.write_preferences("SPACECHAR=31\n" + preferences)
        program = self.shell.write("show", "#!/bin/sh\n" + self.SHOW, 0o755)
        tool = self.shell.launch(self.shell.bundle("show", program, signature), **environment)
        log = log_of(tool.run("true " + names)).decode()
        return dict(line.split("=", 1) for line in log.rstrip("\r").split("\r"))

    def test_only_elements_outside_the_trees_are_handed_on(self):
        shown = self.show("TEXMFTREES=/usr/share/texmf:/var/lib/texmf\n"
                          "TEXINPUTS=.:/own\\x1ftex//:/usr/share/texmf/tex//\n"
                          "BSTINPUTS=/usr/share/texmf/bibtex//\nBIBINPUTS=:~/bib\nTEXCONFIG=.\n"
                          "TYPE1FONTS=/t1\nENCFOLDER=/enc\nISTFILES=/ist\nDVIPSHEADERS=~/../ps\n",
                          "TEXINPUTS BSTINPUTS BIBINPUTS TEXCONFIG T1FONTS ENCFONTS INDEXSTYLE DVIPSHEADERS")
        hand = self.shell.root + "/hand"
        self.assertEqual(shown, {"TEXINPUTS": ".:/own tex//:", "BSTINPUTS": "", "BIBINPUTS": ":" + hand + "/bib",
                                 "TEXCONFIG": "", "T1FONTS": "/t1:", "ENCFONTS": "/enc:", "INDEXSTYLE": "/ist:",
                                 "DVIPSHEADERS": self.shell.root + "/ps:"})

    def test_a_variable_of_the_person_stays_behind_the_setting(self):
        shown = self.show("TEXINPUTS=/own\n", "TEXINPUTS BIBINPUTS", TEXINPUTS="/mine:", BIBINPUTS="/b:")
        self.assertEqual(shown, {"TEXINPUTS": "/own:/mine:", "BIBINPUTS": "/b:"})

    def test_the_persons_cnf_files(self):
        os.makedirs(self.shell.root + "/data/Quillon/formats")
        with open(self.shell.root + "/data/Quillon/formats/tex.cnf", "w") as file:
            file.write("% comment\nmain_memory = 7000000 % more\nopenout_any=p\nbad name$ = 1\n")
        with open(self.shell.root + "/data/Quillon/formats/pdftex.cnf", "w") as file:
            file.write("# comment\nopenout_any = a\n")
        shown = self.show("", "main_memory openout_any", "PXET")
        self.assertEqual(shown, {"main_memory": "7000000", "openout_any": "a"})
        self.assertEqual(self.shell.launch("dvips").property(APP, "Name"), "dvips")

    def test_font_generation_settings(self):
        self.assertEqual(self.show("PDFTEXMODE=cx\nPDFMAKEFONT=0\n", "MODE MKTEXPK", "PXET"),
                         {"MODE": "cx", "MKTEXPK": "0"})

    def test_a_setting_finds_a_file(self):
        self.shell.write_preferences("SPACECHAR=31\nTEXINPUTS=" + self.shell.work.replace(" ", "\\x1f") +
                                     "/own\\x1fstyles//\n")
        self.shell.write("own styles/deep/part.tex", "\\immediate\\write16{found it}")
        self.shell.write("x.tex", "\\input part \\bye\n")
        self.assertIn(b"found it", log_of(self.shell.launch("pdftex").run("pdftex x.tex")))

    def test_bibtex8_when_its_options_are_given(self):
        self.shell.write("x.aux", "\\citation{k}\n\\bibstyle{plain}\n\\bibdata{x}\n")
        self.shell.write("x.bib", "@book{k,author={A},title={T},publisher={P},year=2000}\n")
        tool = self.shell.launch("bibtex")
        self.assertIn(b"This is BibTeX, Version", log_of(tool.run("bibtex x")))
        self.assertNotIn(b"This is BibTeX, Version", log_of(tool.run("bibtex -B x")))
        self.shell.write("own.csf", "\\lowupcase\n%\n\\order\n%\n")
        self.shell.write_preferences("SPACECHAR=31\nCSFFILE=own.csf\n")
        self.assertIn(b"own.csf", log_of(tool.run("bibtex x")))


if __name__ == "__main__":
    unittest.main(verbosity=2, argv=sys.argv[:1] + sys.argv[1:])
