"""Programs that ask, and programs that say much, under the tool host."""

import os
import resource
import sys
import unittest

import dbus
import dbus.service

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import MAIN_LOOP, HostTest, log_of, wait_until  # noqa: E402
from harness.tool_host import PATH, TOOL  # noqa: E402


class AnsweringShell(dbus.service.Object):
    """The shell, as far as a tool asks it who can answer."""

    def __init__(self, bus, names):
        super().__init__(bus, "/org/quillon/Shell")
        self.names = names

        self.held = None  # the replies that wait, once it is a list

    def reply(self, answer):
        answer(False, dbus.Array(self.names, signature="s"))

    @dbus.service.method("org.quillon.Shell1", out_signature="bas", async_callbacks=("answer", "fail"))
    def Answerers(self, answer, fail):
        if self.held is None:
            self.reply(answer)
        else:
            self.held.append(answer)


class Prompts(HostTest):
    def wait_prompt(self, tool):
        wait_until(tool.waiting, "the prompt")

    def test_answers_reach_tex(self):
        self.file("err.tex", "\\wrong\n\\bye\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex err.tex")
        self.wait_prompt(tool)
        # Sent before, but taken from the bus only when this program next waits.
        wait_until(lambda: bytes(tool.output).endswith(b"\n? "), "what came before the prompt")
        tool.answer(b"h\n")
        wait_until(lambda: b"The control sequence at the end" in tool.output, "TeX's help")
        self.wait_prompt(tool)
        tool.answer(b"\n")
        reply = tool.reply()
        self.assertEqual(reply["edit"], 0)
        self.assertIn(b"? h\rThe control sequence", log_of(reply))
        self.assertEqual(self.settings()["LINENUMBER"], "1")
        self.assertEqual(log_of(reply), bytes(tool.output).replace(b"\r\n", b"\r").replace(b"\n", b"\r"))

    def test_waiting_is_announced(self):
        seen = []
        tool = self.shell_tool('printf "name: "; read x; echo "<$x>"\n')
        tool.follow()
        self.connection.add_signal_receiver(lambda interface, changed, gone: seen.append(interface),
                                           "PropertiesChanged", "org.freedesktop.DBus.Properties",
                                           bus_name=tool.bus_name)
        tool.send("x")
        self.wait_prompt(tool)
        tool.answer(b"you\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<you>\r"))
        wait_until(lambda: len(seen) >= 2, "both changes")

    def test_a_listener_alone_keeps_the_prompt_open(self):
        tool = self.shell_tool('printf "name: "; read x && echo "<$x>"\n')
        tool.follow()
        tool.send("x")
        self.wait_prompt(tool)
        tool.answer(b"me\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<me>\r"))

    def test_a_prompt_without_a_line_is_seen(self):
        tool = self.shell_tool('read x; echo "<$x>"\n')
        self.assertEqual(log_of(tool.run("x")), b"<>\r")

    def test_a_child_that_reads_is_seen(self):
        tool = self.shell_tool('sh -c "read x; echo end"; true\n')
        self.assertEqual(log_of(tool.run("x")), b"end\r")

    def test_the_shell_names_who_can_answer(self):
        follower = self.bus(MAIN_LOOP)
        shell = AnsweringShell(self.connection, [follower.get_unique_name()])
        self.addCleanup(shell.remove_from_connection)
        tool = self.shell_tool('printf "name: "; read x; echo "<$x>"\n')
        heard = bytearray()
        follower.add_signal_receiver(lambda data: heard.extend(bytearray(data)), "Output", TOOL)
        tool.send("x")
        self.wait_prompt(tool)
        # All that was printed reaches who was named, also what came before the shell said so.
        wait_until(lambda: bytes(heard) == b"name: ", "the first output")
        tool.answer(b"one\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<one>\r"))
        follower.close()

    def test_what_is_printed_before_the_shell_says_who_can_answer_is_kept_for_them(self):
        follower = self.bus(MAIN_LOOP)
        shell = AnsweringShell(self.connection, [follower.get_unique_name()])
        self.addCleanup(shell.remove_from_connection)
        shell.held = []
        tool = self.shell_tool('printf "name: "; read x; echo "<$x>"\n')
        heard = bytearray()
        follower.add_signal_receiver(lambda data: heard.extend(bytearray(data)), "Output", TOOL)
        tool.send("x")
        self.wait_prompt(tool)
        self.assertEqual((len(shell.held), bytes(heard)), (1, b""))
        shell.reply(shell.held.pop())
        wait_until(lambda: bytes(heard) == b"name: ", "what was printed before")
        tool.answer(b"one\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<one>\r"))
        follower.close()

    def test_a_shell_that_names_nobody_leaves_the_input_empty(self):
        shell = AnsweringShell(self.connection, [])
        self.addCleanup(shell.remove_from_connection)
        tool = self.shell_tool('read x; echo end\n')
        self.assertEqual(log_of(tool.run("x")), b"end\r")

    def test_when_the_last_who_can_answer_leaves_the_input_is_empty(self):
        for leave in (lambda follower: follower.close(), self.let_go):
            tool = self.shell_tool('read x; echo end\n')
            follower = self.bus(MAIN_LOOP)
            follower.get_object(tool.bus_name, PATH, introspect=False).Follow(True, dbus_interface=TOOL)
            tool.send("x")
            self.wait_prompt(tool)
            self.follower_tool = tool
            leave(follower)
            self.assertEqual(log_of(tool.reply()), b"end\r")

    def let_go(self, follower):
        follower.get_object(self.follower_tool.bus_name, PATH, introspect=False).Follow(False, dbus_interface=TOOL)

    def test_one_of_two_followers_may_leave(self):
        tool = self.shell_tool('read x; echo "<$x>"\n')
        first = self.bus(MAIN_LOOP)
        first.get_object(tool.bus_name, PATH, introspect=False).Follow(True, dbus_interface=TOOL)
        tool.follow()
        tool.send("x")
        self.wait_prompt(tool)
        first.close()
        tool.answer(b"still here\n")
        self.assertTrue(log_of(tool.reply()).endswith(b"<still here>\r"))

    def test_e_opens_the_file_whatever_its_name(self):
        for name in ("it's.tex", "a b.tex", "é.tex", "a&b;c.tex"):
            with self.subTest(name=name):
                self.file(name, "\n\n\\wrong\n")
                tool = self.launch("pdftex")
                tool.follow()
                tool.send('pdftex "%s"' % name)
                self.wait_prompt(tool)
                tool.answer(b"e\n")
                reply = tool.reply()
                self.assertEqual(reply["edit"], 1)
                settings = self.settings()
                self.assertEqual(settings["LINENUMBER"], "3")
                self.assertTrue(settings["FILENAME"].endswith(("/" + name).replace(" ", "\\x1f")))
                self.assertEqual(tool.event("aevt", "quit")[0], 0)

    def test_a_name_is_never_run(self):
        name = "x$(touch$IFS$()ran)`touch ran`.tex"
        self.file(name, "\\wrong\n")
        self.file("main.tex", "\\catcode`\\$=12 \\input \"%s\"\n\\bye\n" % name)
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex main.tex")
        self.wait_prompt(tool)
        tool.answer(b"e\n")
        reply = tool.reply()
        self.assertEqual(reply["edit"], 1, log_of(reply))
        self.assertFalse(os.path.exists(self.work + "/ran"))

    def test_metapost_asks_for_its_editor(self):
        self.file("fig.mp", "beginfig(1);\n draw nothing at all;\nendfig;\nend\n")
        reply = self.launch("mpost").run("mpost fig")
        self.assertEqual(reply["edit"], 1, log_of(reply))
        self.assertTrue(self.settings()["FILENAME"].endswith("/fig.mp"))
        self.assertEqual(self.settings()["LINENUMBER"], "2")


class Streams(HostTest):
    def test_a_flood_goes_through_with_bounded_memory(self):
        tool = self.shell_tool("head -c 100000000 /dev/zero | tr '\\0' 'x' | fold -w 100\n")
        reply = tool.run("x")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(os.path.getsize(reply["logf"]), 101000000 - 1)
        with open("/proc/%d/status" % tool.process.pid) as file:
            peak = [line for line in file if line.startswith("VmHWM")][0].split()[1]
        self.assertLess(int(peak), 30000)

    def test_nuls_and_split_characters(self):
        tool = self.shell_tool("head -c 70000 /dev/zero; i=0; while [ $i -lt 3000 ]; do "
                                     "printf 'é€'; i=$((i+1)); done; printf '\\303'\n")
        self.assertEqual(log_of(tool.run("x")), b"\0" * 70000 + "é€".encode() * 3000 + b"\xc3")

    def test_line_ends(self):
        tool = self.shell_tool("printf 'a\\r\\nb\\nc\\r'; sleep 0.05; printf '\\nd\\re\\n\\n'\n")
        self.assertEqual(log_of(tool.run("x")), b"a\rb\rc\rd\re\r\r")

    def test_output_comes_while_the_program_runs(self):
        tool = self.shell_tool("echo one; while [ ! -e go ]; do sleep 0.02; done; echo two\n")
        tool.follow()
        tool.send("x")
        wait_until(lambda: bytes(tool.output) == b"one\n", "the first line")
        self.file("go", "")
        self.assertEqual(log_of(tool.reply()), b"one\rtwo\r")

    def test_a_full_disk_is_said_and_the_run_goes_on(self):
        limit = resource.getrlimit(resource.RLIMIT_FSIZE)
        program = self.file("flood", "#!/bin/sh\nhead -c 900000 /dev/zero | tr '\\0' 'x'\nexit 3\n", mode=0o755)
        bundle = self.bundle("flood", program)
        resource.setrlimit(resource.RLIMIT_FSIZE, (200000, limit[1]))
        try:
            tool = self.launch(bundle)
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, limit)
        reply = tool.run("flood")
        self.assertEqual(reply["----"], 3)
        log = log_of(reply)
        self.assertLessEqual(len(log), 200000)
        self.assertRegex(log, rb"\rThe rest of the output was lost \(7000\d\d bytes\): File too large\r$")


class EnginePipe(HostTest):
    """Engines print into a pipe and read the terminal."""

    def engine(self, script, interpreter="/bin/sh"):
        # A sanitizer keeps what is freed for a while, which would count as used.
        options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
        return self.launch(self.bundle("pdftex", self.file("engine", f"#!{interpreter}\n" + script, mode=0o755), "PXET"),
                           ASAN_OPTIONS=options)

    def test_an_engine_that_never_flushes_loses_nothing(self):
        tool = self.engine("import os, time\nprint('x' * 2000)\n"
                           "while not os.path.exists('go'): time.sleep(0.02)\nprint('end')\n", "/usr/bin/python3")
        tool.follow()
        tool.send("pdftex")
        self.file("go", "")
        self.assertEqual(log_of(tool.reply()), b"x" * 2000 + b"\rend\r")
        self.assertEqual(bytes(tool.output), b"x" * 2000 + b"\nend\n")

    def test_a_hundred_megabytes_without_a_line_end(self):
        tool = self.engine("head -c 100000000 /dev/zero | tr '\\0' 'x'\nexit 3\n")
        reply = tool.run("pdftex")
        self.assertEqual(reply["----"], 3)
        self.assertEqual(os.path.getsize(reply["logf"]), 100000000)
        with open(f"/proc/{tool.process.pid}/status", encoding="ascii") as file:
            peak = [line for line in file if line.startswith("VmHWM")][0].split()[1]
        self.assertLess(int(peak), 30000)

    def test_what_an_engine_writes_to_the_terminal_itself_is_kept(self):
        tool = self.engine("echo piped\necho direct > /dev/tty\necho error >&2\n")
        self.assertEqual(sorted(log_of(tool.run("pdftex")).split(b"\r")), [b"", b"direct", b"error", b"piped"])

    def test_an_answer_that_is_typed_before_the_prompt_is_taken_at_it(self):
        tool = self.engine("echo begun\nwhile [ ! -e go ]; do sleep 0.02; done\nprintf 'name: '\nread x\n"
                           "echo \"<$x>\"\n")
        tool.follow()
        tool.send("pdftex")
        wait_until(lambda: b"begun" in tool.output, "the start")
        tool.answer(b"early\n")
        self.file("go", "")
        self.assertTrue(log_of(tool.reply()).endswith(b"<early>\r"))

    def test_tex_takes_an_answer_that_was_typed_before_its_prompt(self):
        self.file("err.tex", "\\immediate\\write16{begun}\\count1=0 \\loop\\ifnum\\count1<2000000 "
                  "\\advance\\count1 1 \\repeat\n\\wrong\n\\bye\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex err.tex")
        tool.answer(b"x\n")
        reply = tool.reply()
        self.assertIn(b"Undefined control sequence", log_of(reply))
        self.assertEqual(reply["----"], 1)


if __name__ == "__main__":
    unittest.main()
