"""Tools that behave in every way a tool can: the replies, the crashes, the silence, the cancel."""

import os
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest, code, program_of, wait_until  # noqa: E402

LONG = "long"


class Replies(HomeTest):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1")
        self.file("x.tex", "text\n\\bye\n")

    def exec(self, command="pdftex x.tex"):
        return f"event QUIL exec ---- TEXT {command} dest fss {self.work}\n"

    def run_fake(self, script_after="print state exit_status\nprint state tex_error\n", **behaviour):
        self.fake_tool("pdftex", **behaviour)
        return self.shell(self.exec() + script_after)

    def test_a_tool_gets_the_command_line_and_the_folder(self):
        record = os.path.join(self.home, "record")
        self.run_fake(record=record)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), f"pdftex x.tex\n{self.work}\n")

    def test_exit_code_0_is_status_0(self):
        self.assertIn("exit_status=0\n", self.run_fake(reply={"----": [LONG, 0]}))

    def test_exit_code_5_is_status_1(self):
        self.assertIn("exit_status=1\n", self.run_fake(reply={"----": [LONG, 5]}))

    def test_a_reply_without_an_exit_code_is_status_1(self):
        self.assertIn("exit_status=1\n", self.run_fake(reply={"iden": [LONG, code("PXET")]}))

    def test_a_reply_of_wrong_types_is_status_1(self):
        self.assertIn("exit_status=1\n", self.run_fake(reply={"----": ["TEXT", "zero"]}))

    def test_after_a_completed_call_tex_error_is_0(self):
        output = self.run_fake(reply={"----": [LONG, 1], "iden": [LONG, code("PXET")]})
        self.assertIn("exit_status=1\ntex_error=0\n", output)

    def test_a_transcript_is_shown_and_deleted(self):
        output = self.run_fake(log="one\rtwo\r")
        self.assertIn("\none\ntwo\n", output)
        self.assertEqual(os.listdir(os.path.join(self.environment["XDG_CACHE_HOME"], "quillon")), [])

    def test_a_transcript_of_1024_bytes_is_shown_once(self):
        text = "x" * 1023 + "\r"
        self.assertEqual(self.run_fake(log=text).count("x" * 1023), 1)

    def test_an_empty_transcript_is_deleted(self):
        self.run_fake(log="")
        self.assertEqual(os.listdir(os.path.join(self.environment["XDG_CACHE_HOME"], "quillon")), [])

    def test_a_transcript_outside_its_folder_is_neither_shown_nor_deleted(self):
        secret = self.file("secret", "nothing for the console")
        output = self.run_fake(**{"outside log": secret})
        self.assertNotIn("nothing for the console", output)
        self.assertTrue(os.path.exists(secret))

    def test_edit_0_does_not_call_the_editor(self):
        output = self.run_fake(reply={"----": [LONG, 1], "edit": [LONG, 0]})
        self.assertNotIn("Use any text editor", output)

    def test_edit_calls_the_editor(self):
        output = self.run_fake(reply={"----": [LONG, 1], "edit": [LONG, 1]})
        self.assertIn("Use any text editor to edit", output)

    def test_a_reply_as_an_event_of_its_own(self):
        output = self.run_fake(report={"----": [LONG, 1], "edit": [LONG, 1]})
        self.assertIn("\nUse any text editor to edit \nat line number 0.\n", output)

    def test_a_tool_that_dies_at_launch_ends_the_wait(self):
        output = self.run_fake(crash="launch")
        self.assertIn("reply 0 ---- long", output)
        self.assertNotIn("Time out", output)

    def test_a_tool_that_dies_before_its_reply_ends_the_wait(self):
        output = self.run_fake(crash="before reply")
        self.assertIn("reply 0 ---- long", output)

    def test_a_tool_that_dies_after_its_reply_has_replied(self):
        output = self.run_fake(crash="after reply", reply={"----": [LONG, 0]})
        self.assertIn("exit_status=0\n", output)

    def test_a_tool_that_never_answers_is_cancelled_and_gone(self):
        record = os.path.join(self.home, "record")
        self.fake_tool("pdftex", never=True, record=record)
        output = self.shell(self.exec() + "key .\nprint state exit_status\nprint state tex_error\n")
        self.assertIn("tex_error=0\n", output)
        wait_until(lambda: not self.processes_of(self.binaries))

    def test_a_tool_that_never_comes_to_the_bus_is_cancelled_and_gone(self):
        program = program_of(os.path.join(self.copy_binaries(), "pdftex.app"))
        self.replace(program, "#!/bin/sh\nsleep 1000 &\nwait\n", 0o755)
        self.shell(self.exec() + "# comments do not hide the step\n\nkey .\n")
        wait_until(lambda: not self.processes_of(self.binaries))

    def test_a_child_that_keeps_the_connection_does_not_keep_the_tool(self):
        pid_path = os.path.join(self.home, "pid")
        self.fake_tool("pdftex", heir=pid_path, crash="before reply")
        output = self.shell(self.exec() + "print state exit_status\n")
        with open(pid_path, encoding="utf-8") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        self.assertIn("reply 0 ---- long", output)

    def test_a_run_after_a_crash_runs(self):
        self.fake_tool("dvips", crash="before reply")
        output = self.shell(self.exec("dvips x.dvi") + self.exec("pdftex x.tex"))
        self.assertIn("Output written on x.pdf", output)

    def test_a_missing_companion_is_said_with_folder(self):
        self.copy_binaries()
        os.unlink(os.path.join(self.binaries, "mpost.app", "Contents", "PkgInfo"))
        self.assertIn("I can't find mpost. It should be in the binaries folder.\n", self.shell(self.exec("mpost x")))

    def test_a_tool_that_says_it_timed_out(self):
        output = self.run_fake(error=-1712)
        self.assertIn(f"\nTime out error on <{self.binaries}/pdftex.app>!\n", output)

    def test_another_error_of_a_tool_is_not_a_timeout(self):
        self.assertNotIn("Time out", self.run_fake(error=-1700))

    def test_a_bundle_that_cannot_be_launched(self):
        os.unlink(program_of(os.path.join(self.copy_binaries(), "pdftex.app")))
        output = self.shell(self.exec())
        self.assertIn(f"Oops!!\nUnable to launch <{self.binaries}/pdftex.app>!\n", output)


if __name__ == "__main__":
    unittest.main()
