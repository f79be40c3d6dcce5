"""Clients of the shell: many at once, each with its own run, and none leaves anything behind."""

import os
import re
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, stop, wait_until  # noqa: E402
from harness.clients import ENDLESS, QUILLON, Clients, Starts  # noqa: E402

NAME = "org.quillon.Shell"


class Private(Clients):
    """Without a shell of the person's each client has one for itself."""

    def test_eight_at_once_are_each_told_of_their_own(self):
        for mark in range(3):
            self.eight_at_once(mark)
            self.nothing_is_left()

    def test_make_runs_all_its_documents(self):
        before = self.preferences_bytes()
        self.make(10)
        self.nothing_is_left()
        self.assertEqual(self.preferences_bytes(), before)

    def test_the_persons_preferences_are_not_touched(self):
        before = self.preferences_bytes()
        self.assertEqual(self.quillon("exec", "pdftex", self.document(1))[0], 0)
        self.assertEqual(self.quillon("formats")[0], 0)
        self.assertEqual(self.preferences_bytes(), before)

    def test_neither_viewer_nor_editor_opens_unless_asked(self):
        viewer, editor = self.recorder("viewer"), self.recorder("kate")
        self.preferences(USEPDFTEX="1", AUTOVIEW="1", PDFVIEW=viewer, Editor=editor)
        path = self.file("bad.tex", "text\n\\undefined\n")
        self.assertEqual(self.quillon("exec", "pdftex", self.document(1))[0], 0)
        self.assertEqual(self.quillon("exec", "pdftex", "bad")[0], 1)
        self.assertEqual(self.starts("viewer") + self.starts("kate"), [])
        self.assertEqual(self.quillon("exec", "--view", "pdftex", "d1")[0], 0)
        self.assertEqual(self.started("viewer"), [os.path.join(self.work, "d1.pdf")])
        self.assertEqual(self.quillon("exec", "--edit", "pdftex", "bad")[0], 1)
        self.assertEqual(self.started("kate"), ["--line", "2", path])

    def test_find_prints_the_path_and_opens_the_file(self):
        self.recorder("kate")
        self.preferences(Editor=os.path.join(self.programs, "kate"), TEXINPUTS=self.work)
        path = self.file("x.tex", "x")
        self.assertEqual(self.quillon("find", "x"), (0, path + "\n", ""))
        self.assertEqual(self.started("kate"), [path])
        self.assertEqual(self.quillon("find", "nosuchfile"), (1, "", ""))
        self.assertEqual(self.quillon("locate", "nosuchfile"), (1, "", ""))
        self.nothing_is_left()

    def killed(self, *numbers):
        self.file("endless.tex", ENDLESS)
        for number in numbers:
            client = self.start("exec", "pdftex", "endless")
            self.wait_for_engine()
            client.send_signal(number)
            self.assertNotEqual(self.finish(client)[0], 0)
            self.nothing_is_left()

    def test_a_client_that_ends_takes_everything_with_it(self):
        self.killed(signal.SIGKILL, signal.SIGQUIT, signal.SIGTERM, signal.SIGINT, signal.SIGHUP)

    def test_a_client_whose_output_is_closed(self):
        self.file("endless.tex", ENDLESS)
        client = self.start("exec", "-f", "pdftex", "endless")
        client.stdout.readline()
        client.stdout.close()
        client.stdout = None
        wait_until(lambda: client.poll() is not None, "the end of the client")
        self.nothing_is_left()

    def test_a_shell_that_is_killed_leaves_nothing_and_is_said(self):
        self.file("endless.tex", ENDLESS)
        client = self.start("exec", "pdftex", "endless")
        self.wait_for_engine()
        (shell,) = self.processes_of("--private")
        os.kill(shell, signal.SIGKILL)
        status, _, error = self.finish(client)
        self.assertEqual((status, error), (69, "quillon: the shell has gone\n"))
        self.assertEqual(self.quillon("exec", "pdftex", self.document(1))[0], 0)
        self.nothing_is_left()

    def test_a_word_that_no_tool_has(self):
        self.assertEqual(self.quillon("exec", "nosuchtool", "x")[0], 127)

    def test_a_person_who_starts_the_shell_meanwhile_has_one(self):
        self.file("endless.tex", ENDLESS)
        client = self.start("exec", "pdftex", "endless")
        self.wait_for_engine()
        self.start_shell("--service")
        # Neither uses the other's engine.
        self.document(2)
        self.assertEqual(self.shell_object().Exec("pdftex d2", self.work, timeout=60), 0)
        self.assertIsNone(client.poll())
        client.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(client)[0], 130)


class Shared(Clients):
    """Clients of a shell that runs."""

    def setUp(self):
        super().setUp()
        self.start_shell("--service")
        self.file("endless.tex", ENDLESS)

    def test_an_interrupt_takes_back_the_clients_own_command_alone(self):
        first = self.start("exec", "pdftex", "endless")
        self.wait_for_engine()
        waiting = self.start("exec", "pdftex", self.document(1))
        wait_until(lambda: self.queued(waiting), "the waiting client")
        waiting.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(waiting)[0], 130)
        self.assertIsNone(first.poll())
        self.assertFalse(os.path.exists(os.path.join(self.work, "d1.pdf")))
        first.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(first)[0], 130)

    def queued(self, client):
        """Whether a client has sent its command: it waits in poll with its signals in a descriptor."""
        try:
            links = [os.readlink(f"/proc/{client.pid}/fd/{fd}") for fd in os.listdir(f"/proc/{client.pid}/fd")]
            with open(f"/proc/{client.pid}/wchan", encoding="utf-8") as file:
                return any("signalfd" in link for link in links) and "poll" in file.read()
        except OSError:
            return False

    def test_a_client_that_is_killed_takes_its_command_with_it(self):
        first = self.start("exec", "pdftex", "endless")
        self.wait_for_engine()
        waiting = self.start("exec", "pdftex", self.document(1))
        wait_until(lambda: self.queued(waiting), "the waiting client")
        waiting.kill()
        waiting.wait()
        first.kill()
        first.wait()
        wait_until(lambda: not self.processes_of("Linux/pdftex"), "the end of the run")
        self.assertEqual(self.quillon("exec", "pdftex", self.document(2))[0], 0)
        self.assertNotIn("this is 1\n", self.output())

    def test_a_cancel_right_behind_its_command_is_never_lost(self):
        for _ in range(20):
            connection = self.bus()
            call = connection.get_object(NAME, "/org/quillon/Shell", introspect=False)
            outcome = []
            call.Exec("pdftex endless", self.work, dbus_interface="org.quillon.Shell1", signature="ss",
                      ignore_reply=True)
            self.shell_object()  # another client, which does nothing
            call.Cancel(dbus_interface="org.quillon.Shell1")
            wait_until(lambda: not self.engines(), "the end of the run")
            connection.close()
            outcome.clear()
        self.assertEqual(self.quillon("exec", "pdftex", self.document(1))[0], 0)

    def test_who_has_no_command_cancels_what_runs(self):
        client = self.start("exec", "pdftex", "endless")
        self.wait_for_engine()
        self.shell_object().Cancel()
        self.assertEqual(self.finish(client)[0], 130)

    def test_quit_returns_when_the_name_is_free(self):
        for number in range(5):
            self.assertEqual(self.quillon("quit"), (0, "", ""))
            self.assertEqual(self.quillon("exec", "pdftex", self.document(number))[0], 0)
            wait_until(self.ended)
            self.start_shell("--service")

    def test_the_command_that_is_told_for_a_long_name_typesets_it(self):
        for name in ("a-name_of.thirty+characters-xy.tex", "it's a name of more than 29 characters", "\u00e9" * 30):
            path = self.file(name if name.endswith(".tex") else name + ".tex", "Hello.\\bye\n")
            told = "It can be typeset with: "
            before = self.output().count(told)
            self.assertEqual(self.quillon(path)[0], 0)
            wait_until(lambda of=before: self.output().count(told) > of and self.output().endswith("\n"), "the command")
            command = self.output().rpartition(told)[2].split("\n")[0]
            done = self.run_program("bash", "-c", command, PATH=os.path.dirname(QUILLON) + ":" + os.environ["PATH"])
            self.assertEqual((done.returncode, done.stderr), (0, ""), command)
            self.assertTrue(os.path.exists(path[:-len(".tex")] + ".pdf"), command)

    def test_eight_clients_at_once_are_served_in_turn(self):
        names = [self.document(number) for number in range(8)]
        clients = [self.start("exec", "pdftex", name) for name in names]
        for number, client in enumerate(clients):
            status, out, _ = self.finish(client)
            self.assertEqual(status, 0)
            # Each is shown its own run, and not those that it waited for.
            self.assertEqual(re.findall("this is .*", out), [f"this is {number}"])
        for number in range(8):
            self.assertEqual(self.output().count(f"this is {number}\n"), 1)


class BesideAWindow(Starts, DesktopTest):
    def test_a_run_of_a_client_asks_nobody_and_takes_no_keyboard(self):
        self.preferences(USEPDFTEX="1", Editor="/usr/bin/false", AUTOVIEW="1", PDFVIEW="/usr/bin/false")
        self.file("bad.tex", "text\n\\undefined\n\\bye\n")
        self.start_desktop()
        done = self.run_program(QUILLON, "exec", "pdftex", "bad.tex")
        self.assertEqual((done.returncode, done.stderr), (1, f"{self.work}/bad.tex:2: Undefined control sequence.\n"))
        self.assertEqual(self.active(), self.window)
        self.assertIn("! Undefined control sequence.", self.console())

    def test_a_person_gets_a_window_beside_a_shell_without_one(self):
        self.preferences(USEPDFTEX="1", AUTOVIEW="0")
        self.file("endless.tex", ENDLESS)
        self.file("good.tex", "good\\bye\n")
        service = self.start_shell("--service")
        own = self.bus()
        first = own.get_name_owner(NAME)
        client = self.start("exec", "pdftex", "endless")
        wait_until(lambda: self.running_as("pdftex", "endless"), "the engine of the service")
        self.start_window("^Quillon$", QUILLON)
        person = self.running
        wait_until(lambda: own.get_name_owner(NAME) != first, "the name with the window")
        # The window serves whoever comes; what the other shell does goes on.
        self.assertEqual(self.quillon("exec", "pdftex", "good.tex")[0], 0)
        self.assertIsNone(client.poll())
        self.assertEqual(self.quillon("quit")[0], 0)
        wait_until(lambda: person.poll() is not None, "the window gone")
        self.assertEqual(own.get_name_owner(NAME), first)
        self.assertIsNone(client.poll())
        client.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(client)[0], 130)
        self.assertEqual(self.quillon("quit")[0], 0)
        wait_until(lambda: service.poll() is not None, "the service gone")

    def test_a_second_start_opens_the_callers_file_in_the_first_which_comes_forward(self):
        self.preferences(USEPDFTEX="1", Editor="/usr/bin/false")
        # The file of that name beside the shell is another.
        self.file("x.tex", "Wrong.\\bye\n")
        folder = os.path.join(self.home, "elsewhere")
        self.file("x.tex", "\\immediate\\write16{the right one}Right.\\bye\n", folder)
        shell = self.start_desktop()
        first = self.running
        other = subprocess.Popen([self.program("desk"), "window", "Another"], env=self.environment,
                                 stdout=subprocess.DEVNULL)
        self.addCleanup(stop, other)
        wait_until(lambda: self.windows("^Another$"), "the other window")
        self.activate(*self.windows("^Another$"))
        done = subprocess.run([QUILLON, "x.tex"], cwd=folder, env=self.environment, capture_output=True, text=True,
                              timeout=60, check=False)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        wait_until(lambda: os.path.exists(os.path.join(folder, "x.pdf")), "the output beside the caller's file")
        wait_until(lambda: self.active() == shell, "the first shell in front")
        self.assertIsNone(first.poll())
        self.assertEqual(len(self.windows("^Quillon$")), 1)
        wait_until(lambda: "the right one" in self.console())
        self.assertFalse(os.path.exists(os.path.join(self.work, "x.pdf")))


del Clients

if __name__ == "__main__":
    unittest.main()
