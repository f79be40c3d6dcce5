"""Nothing of a run is left when it is cancelled, killed, or has ended."""

import os
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HostTest, alive, code, log_of, wait_until  # noqa: E402
from harness.processes import parent_of  # noqa: E402


class Stopping(HostTest):
    STUBBORN = "trap '' INT TERM HUP; echo $$ > leader; (trap '' INT TERM HUP; sh -c 'echo $$ > child; " \
               "while :; do sleep 0.1; done') & while :; do sleep 0.1; done\n"

    def exit_event(self):
        events = self.receiver.events
        wait_until(lambda: events, "the exit event")
        event_class, event_id, parameters = events[0]
        self.assertEqual((event_class, event_id), ("QUIL", "exit"))
        return parameters

    def test_cancel_goes_up_to_kill(self):
        tool = self.shell_tool(self.STUBBORN)
        tool.send("x")
        pids = [self.pid("leader"), self.pid("child")]
        self.assertEqual(tool.event("aevt", "quit")[0], 0)
        parameters = self.exit_event()
        self.assertEqual(parameters["----"], 128 + signal.SIGKILL)
        self.assertEqual(parameters["iden"], code("TEST"))
        wait_until(tool.gone, "the host's end")
        self.assert_gone(*pids)

    def test_an_interrupt_is_enough_for_most(self):
        tool = self.shell_tool("echo begun; echo $$ > leader; exec sleep 100\n")
        tool.send("x")
        self.pid("leader")
        tool.event("aevt", "quit")
        parameters = self.exit_event()
        self.assertEqual(parameters["----"], 128 + signal.SIGINT)
        self.assertEqual(log_of(parameters), b"begun\r")
        self.assertEqual(parameters["edit"], 0)

    def test_tex_in_a_loop_is_cancelled_by_the_interrupt(self):
        self.file("loop.tex", "\\immediate\\write16{on}\\shipout\\hbox{}\\def\\x{\\x}\\x\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex loop.tex")
        wait_until(lambda: b"\non\n" in tool.output, "the loop")
        tool.event("aevt", "quit")
        # The engine asked what to do, and was told to stop: it ended by itself.
        parameters = self.exit_event()
        self.assertEqual(parameters["----"], 1)
        self.assertIn(b"! Interruption.\r", log_of(parameters))
        self.assertIn(b"Output written on loop.pdf", log_of(parameters))
        wait_until(tool.gone, "the host's end")

    LONG = ("\\documentclass{article}\\makeatletter\\begin{document}x\\newpage\n"
            "\\immediate\\write\\@auxout{\\relax}\\immediate\\write16{on}\\shipout\\hbox{}\\loop\\iftrue\n"
            "\\immediate\\write\\@auxout{\\string\\gdef\\string\\a{%s}}\\repeat\\end{document}\n" % ("b" * 70))

    def test_a_cancelled_run_leaves_the_document_usable(self):
        source = self.file("long.tex", self.LONG)
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdflatex long.tex")
        wait_until(lambda: b"\non\n" in tool.output, "the loop")
        tool.event("aevt", "quit")
        self.assertEqual(self.exit_event()["----"], 1)
        with open(os.path.join(self.work, "long.aux"), "rb") as file:
            self.assertTrue(file.read().endswith(b"\n"))
        settings = self.settings()
        self.assertEqual(settings["PDFTEXOUTPUT"], "0")
        wait_until(tool.gone, "the host's end")
        self.file(os.path.basename(source), "\\documentclass{article}\\begin{document}x\\end{document}\n")
        reply = self.launch("pdftex").run("pdflatex long.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "1")

    def kept_engine(self, text):
        """A tool whose engine writes over half.pdf, says so in the file "leader", and then does what TEXT says."""
        return self.launch(self.kept_bundle(text))

    def kept_bundle(self, text):
        engine = self.file("engine", f"#!/bin/sh\nprintf broken > half.pdf\necho $$ > leader\n{text}\n", mode=0o755)
        return self.bundle("pdftex", engine, "PXET")

    def pdf(self, name="half.pdf"):
        with open(os.path.join(self.work, name), "rb") as file:
            return file.read()

    def assert_nothing_aside(self):
        self.assertEqual([name for name in os.listdir(self.work) if name.endswith(".before")], [])

    def test_a_cancelled_run_gives_the_output_of_the_run_before_back(self):
        self.file("half.pdf", "whole")
        tool = self.kept_engine("exec tail -f /dev/null")
        tool.send("pdftex half.tex")
        self.pid("leader")
        self.assertEqual(self.pdf(), b"broken")
        tool.event("aevt", "quit")
        self.exit_event()
        self.assertEqual(self.pdf(), b"whole")
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "0")
        self.assert_nothing_aside()

    def test_an_engine_that_closes_its_half_output_when_cancelled_gives_it_back_too(self):
        self.file("half.pdf", "whole")
        self.file("half.tex", "\\shipout\\hbox{x}\\loop\\iftrue\\repeat\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex half.tex")
        wait_until(lambda: b"[1" in tool.output, "the first page")
        tool.event("aevt", "quit")
        self.assertIn(b"Output written on half.pdf", log_of(self.exit_event()))
        self.assertEqual(self.pdf(), b"whole")
        self.assert_nothing_aside()

    def test_a_host_that_is_killed_leaves_it_to_its_guard(self):
        # The host takes the engine's terminal along, which may end the engine before the guard knows of the host.
        bundle = self.kept_bundle("exec tail -f /dev/null")
        for _ in range(25):
            self.file("half.pdf", "whole")
            tool = self.launch(bundle)
            tool.send("pdftex half.tex")
            pid = self.pid("leader")
            tool.kill()
            self.assert_gone(pid)
            wait_until(lambda: self.pdf() == b"whole", "the output of the run before")
            self.assert_nothing_aside()
            os.unlink(os.path.join(self.work, "leader"))

    def test_a_run_that_fails_without_output_gives_it_back(self):
        self.file("half.pdf", "whole")
        self.assertEqual(self.kept_engine("exit 1").run("pdftex half.tex")["----"], 1)
        self.assertEqual(self.pdf(), b"whole")
        self.assert_nothing_aside()

    def test_a_run_that_fails_with_output_keeps_its_own(self):
        self.file("half.pdf", "whole")
        self.kept_engine("echo 'Output written on half.pdf (1 page, 6 bytes).'; exit 1").run("pdftex half.tex")
        self.assertEqual(self.pdf(), b"broken")
        self.assert_nothing_aside()

    def test_a_run_that_ends_well_has_its_own(self):
        self.file("half.pdf", "whole")
        self.kept_engine("exit 0").run("pdftex half.tex")
        self.assertEqual(self.pdf(), b"broken")
        self.assert_nothing_aside()

    def test_a_run_without_pages_leaves_the_output_of_the_run_before(self):
        self.file("empty.pdf", "whole")
        self.file("empty.tex", "\\bye\n")
        self.launch("pdftex").run("pdftex empty.tex")
        self.assertEqual(self.pdf("empty.pdf"), b"whole")
        self.assert_nothing_aside()

    def test_what_was_left_aside_is_given_back_by_the_next_run(self):
        self.file(".half.pdf.before", "whole")
        self.kept_engine("rm half.pdf; exit 1").run("pdftex half.tex")
        self.assertEqual(self.pdf(), b"whole")
        self.assert_nothing_aside()

    def test_a_killed_engines_aux_is_cut_back_to_its_last_whole_line(self):
        self.file("old.aux", "\\relax\nold without an end")
        engine = self.file("engine", "#!/bin/sh\ntrap '' INT TERM HUP\nprintf '\\\\relax\\nwhole\\ncut off' > long.aux\n"
                           "echo $$ > leader\nwhile :; do sleep 0.1; done\n", mode=0o755)
        tool = self.launch(self.bundle("pdftex", engine, "PXET"))
        tool.send("pdftex long.tex")
        self.pid("leader")
        tool.event("aevt", "quit")
        self.assertEqual(self.exit_event()["----"], 128 + signal.SIGKILL)
        with open(os.path.join(self.work, "long.aux"), "rb") as file:
            self.assertEqual(file.read(), b"\\relax\nwhole\n")
        with open(os.path.join(self.work, "old.aux"), "rb") as file:
            self.assertTrue(file.read().endswith(b"without an end"))

    def test_tex_at_its_prompt_is_cancelled(self):
        self.file("err.tex", "\\wrong\n\\bye\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex err.tex")
        wait_until(tool.waiting, "the prompt")
        tool.event("aevt", "quit")
        self.assertEqual(self.exit_event()["edit"], 0)

    def test_a_terminated_host_cancels(self):
        tool = self.shell_tool("echo $$ > leader; exec sleep 100\n")
        tool.send("x")
        leader = self.pid("leader")
        tool.kill(signal.SIGTERM)
        self.exit_event()
        self.assert_gone(leader)

    OUTLIVING = "trap '' HUP; echo $$ > leader\n" \
                "(trap '' HUP; sh -c 'echo $$ > hangup; exec sleep 1000') &\n" \
                "setsid sh -c 'echo $$ > session; exec sleep 1000' &\n" \
                "(setsid sh -c '(echo; exec sh -c \"echo \\$\\$ > daemon; exec sleep 1000\") & exit 0' &)\n" \
                "while :; do sleep 0.1; done\n"

    def outliving(self, **environment):
        tool = self.shell_tool(self.OUTLIVING, **environment)
        tool.send("x")
        return tool, [self.pid(name) for name in ("leader", "hangup", "session", "daemon")]

    def test_a_killed_host_leaves_nothing(self):
        tool, pids = self.outliving()
        tool.kill()
        self.assert_gone(*pids)

    def test_the_guard_does_not_look_like_the_host(self):
        tool = self.shell_tool("echo $PPID > guard; read x\n")
        tool.follow()
        tool.send("x")
        for name in ("cmdline", "comm"):
            with open(f"/proc/{self.pid('guard')}/{name}", "rb") as file:
                self.assertEqual(file.read().rstrip(b"\0\n"), b"quillon-guard")
        wait_until(tool.waiting, "the prompt")
        tool.answer(b"\n")
        self.assertEqual(tool.reply()["----"], 0)

    def test_a_program_that_reads_on_at_the_end_of_its_input_is_ended(self):
        tool = self.shell_tool("while :; do read x; done\n")
        tool.send("x")
        wait_until(lambda: self.receiver.events, "the report")
        self.assertEqual(self.receiver.events[0][:2], ("QUIL", "exit"))
        wait_until(tool.gone, "the end of the host")

    def test_a_killed_guard_leaves_nothing(self):
        tool, pids = self.outliving()
        with open("/proc/%d/stat" % pids[0]) as file:
            guard = int(file.read().rpartition(")")[2].split()[1])
        with open("/proc/%d/comm" % guard) as file:
            self.assertEqual(file.read(), "quillon-guard\n")
        os.kill(guard, signal.SIGKILL)
        reply = tool.reply()
        self.assertEqual(reply["----"], 128 + signal.SIGKILL)
        self.assert_gone(*pids)

    def test_the_next_run_ends_what_a_host_and_its_guard_have_left(self):
        # The shell of this test does nothing for it.
        tool, pids = self.outliving()
        for owner in (tool.process.pid, parent_of(pids[0])):
            os.kill(owner, signal.SIGKILL)
        tool.process.wait()
        self.assertEqual(self.shell_tool("exit 0\n").run("x")["----"], 0)
        self.assert_gone(*pids)
        self.assertEqual(os.listdir(os.path.join(self.home, "run", "quillon", "runs")), [])

    def test_a_run_that_still_has_its_host_is_left_alone(self):
        tool, pids = self.outliving()
        self.assertEqual(self.shell_tool("exit 0\n").run("x")["----"], 0)
        self.assertTrue(all(alive(pid) for pid in pids))
        self.assertFalse(tool.gone())
        tool.kill()
        self.assert_gone(*pids)

    def test_a_cancelled_run_leaves_nothing(self):
        tool, pids = self.outliving()
        tool.event("aevt", "quit")
        self.exit_event()
        self.assert_gone(*pids)

    def test_a_run_that_ended_leaves_nothing(self):
        tool = self.shell_tool("setsid sh -c 'trap \"\" HUP TERM; echo $$ > daemon; while :; do sleep 0.1; "
                                     "done' & while [ ! -s daemon ]; do sleep 0.02; done\n")
        self.assertEqual(tool.run("x")["----"], 0)
        self.assert_gone(self.pid("daemon"))

    def test_background_children_of_tex_end_with_it(self):
        self.file("x.tex", "\\immediate\\write18{(sh -c 'echo $PPID >p; echo $$ >daemon; exec sleep 1000') "
                                  "</dev/null >/dev/null 2>&1 &}"
                                  "\\immediate\\write18{while [ ! -s daemon ]; do sleep 0.02; done}Hi\\bye\n")
        reply = self.launch("pdftex").run("pdftex -shell-escape x.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assert_gone(self.pid("daemon"))

    def test_the_shells_end_is_the_runs_end(self):
        tool, pids = self.outliving()
        self.connection.close()
        self.assert_gone(tool.process.pid, *pids)
        self.assertEqual(os.listdir(self.home + "/cache/quillon") if
                         os.path.isdir(self.home + "/cache/quillon") else [], [])

    def test_a_shell_that_is_killed_takes_an_idle_tool_with_it(self):
        bundle = os.path.join(BINARIES, "pdftex.app/Contents/Linux/pdftex")
        report = self.work + "/tool"
        parent = os.fork()
        if parent == 0:
            try:
                child = os.fork()
                if child == 0:
                    os.execve(bundle, [bundle], dict(self.environment, QUILLON_SHELL_PID=str(os.getppid())))
                with open(report, "w") as file:
                    file.write("%d\n" % child)
                signal.pause()
            finally:
                os._exit(0)
        tool = self.pid("tool")
        wait_until(lambda: self.connection.name_has_owner("org.quillon.App.p%d" % tool), "the tool")
        os.kill(parent, signal.SIGKILL)
        os.waitpid(parent, 0)
        self.assert_gone(tool)


if __name__ == "__main__":
    unittest.main()
