"""Scripts and 'exec' events as they arrive at applications on a real bus."""

import os
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, FAKES, ServiceTest, alive, stop, wait_until  # noqa: E402

DRIVER = os.path.join(BUILD, "bin", "tests", "script-driver")
APPLICATION = os.path.join(FAKES, "application.py")
OWN_EVENTS = "suspend\nresume\n"  # what the driver finds in its queue when nothing of it was lost


class Scripts(ServiceTest):
    work_name = "a b é"

    def setUp(self):
        super().setUp()
        self.preferences()

    def bundle(self, name, signature):
        """A bundle that is the application of the fakes when it is launched."""
        bundle = os.path.join(self.home, "apps", name + ".app")
        contents = os.path.join(bundle, "Contents")
        record = os.path.join(self.home, name + " record")
        self.file("PkgInfo", "APPL" + signature, contents)
        self.file(name, f"#!/bin/sh\nexec /usr/bin/python3 -B '{APPLICATION}' '{signature}' '{bundle}' '{record}'\n",
                  os.path.join(contents, "Linux"), 0o755)
        self.addCleanup(self.end, bundle)
        return bundle

    def end(self, bundle):
        for process in self.processes_of(bundle):
            os.kill(process, signal.SIGKILL)
            wait_until(lambda pid=process: not alive(pid))

    def start(self, bundle):
        """Starts the application before anybody sends to it."""
        name = os.path.basename(bundle)[:-len(".app")]
        running = subprocess.Popen([os.path.join(bundle, "Contents", "Linux", name)], env=self.environment,
                                   stdin=subprocess.DEVNULL)
        self.addCleanup(stop, running)
        wait_until(lambda: self.lines(name))

    def lines(self, name):
        """What the application wrote down, the caller's name left out."""
        path = os.path.join(self.home, name + " record")
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8") as file:
            return [line.rstrip("\n").split("\t")[1:] for line in file]

    def arrived(self, name, count):
        """The first COUNT events, once they have arrived."""
        wait_until(lambda: len(self.lines(name)) > count)
        self.assertEqual(self.lines(name)[0], [])  # "ready"
        return self.lines(name)[1:]

    def drive(self, *words, running=None):
        """What the driver prints; an application that it launches keeps its standard error, so that goes to a file."""
        options = ["--running", running] if running else []
        self.start_program(DRIVER, *options, *words)
        wait_until(self.ended, "the end of the driver")
        self.assertEqual(self.running.returncode, 0, self.output())
        return self.output()

    def hfs(self, bundle):
        return bundle[1:].replace("/", ":")

    def test_activate_arrives_at_an_application_that_runs(self):
        bundle = self.bundle("one", "SCR1")
        self.start(bundle)
        self.assertEqual(self.drive("activate", bundle, running="SCR1"), "0\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["miscactv", ""]])
        self.assertEqual(len(self.processes_of("application.py")), 1)

    def test_select_arrives_at_an_application_that_runs(self):
        bundle = self.bundle("one", "SCR1")
        self.start(bundle)
        self.assertEqual(self.drive("line", bundle, "12", running="SCR1"), "0\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["miscslct", "12"]])
        self.assertEqual(len(self.processes_of("application.py")), 1)

    def test_activate_arrives_at_an_application_that_had_to_be_launched(self):
        bundle = self.bundle("one", "SCR1")
        self.assertEqual(self.drive("activate", bundle), "0\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["miscactv", ""]])

    def test_select_arrives_at_an_application_that_had_to_be_launched(self):
        bundle = self.bundle("one", "SCR1")
        self.assertEqual(self.drive("line", bundle, "2147483647"), "0\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["miscslct", "2147483647"]])

    def test_a_script_of_several_statements_launches_once_and_sends_in_order(self):
        bundle = self.bundle("one", "SCR1")
        script = (f'tell application "{self.hfs(bundle)}"\r\tactivate\r\tselect display_line 3 of text window 1\r'
                  '\tselect display_line -1 of text window 1\rend tell')
        self.assertEqual(self.drive("run", script), "0\nError code = 0\nError Message: \n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 3), [["miscactv", ""], ["miscslct", "3"], ["miscslct", "-1"]])
        self.assertEqual(len(self.processes_of("application.py")), 1)

    def test_a_script_with_a_bad_line_sends_nothing(self):
        bundle = self.bundle("one", "SCR1")
        self.start(bundle)
        script = f'tell application "{self.hfs(bundle)}"\ractivate\rquit\rend tell'
        self.assertEqual(self.drive("run", script, running="SCR1"),
                         '-1753\nError code = -2741\nError Message: Expected "activate", "select" or "end" but found '
                         '"quit".\n' + OWN_EVENTS)
        # What is sent afterwards is the first that arrives.
        self.drive("line", bundle, "5", running="SCR1")
        self.assertEqual(self.arrived("one", 1), [["miscslct", "5"]])

    def test_the_error_of_an_application_that_ends_at_once_is_kept(self):
        bundle = self.bundle("one", "SCR1")
        self.file("one", "#!/bin/sh\nexit 3\n", os.path.join(bundle, "Contents", "Linux"), 0o755)
        path = self.hfs(bundle)
        shown = path if len(path) <= 100 else path[:100] + "..."
        self.assertEqual(self.drive("run", f'tell application "{path}"\ractivate\rend tell'),
                         f'-1753\nError code = -600\nError Message: The application "{shown}" gave the error -600.\n'
                         + OWN_EVENTS)

    def test_exec_arrives_with_its_command_and_folder(self):
        bundle = self.bundle("one", "SCR1")
        self.start(bundle)
        self.assertEqual(self.drive("exec", bundle, "pdftex é.tex", self.work.replace(" ", "\x1f"), running="SCR1"),
                         "1\n" + OWN_EVENTS)
        # It is brought to the front first.
        self.assertEqual(self.arrived("one", 2), [["Activate"],
                                                  ["QUILexec", "pdftex é.tex", "dest", "fss ", self.work]])

    def test_exec_arrives_at_an_application_that_had_to_be_launched(self):
        bundle = self.bundle("one", "SCR1")
        self.assertEqual(self.drive("exec", bundle, "tex x", self.home), "1\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["QUILexec", "tex x", "dest", "fss ", self.home]])

    def test_exec_names_no_folder_when_there_is_none(self):
        bundle = self.bundle("one", "SCR1")
        self.assertEqual(self.drive("exec", bundle, "tex x", self.home + "/none"), "1\n" + OWN_EVENTS)
        self.assertEqual(self.arrived("one", 1), [["QUILexec", "tex x", "dest", "fss ", ""]])

    def test_exec_is_not_sent_to_what_is_not_there(self):
        self.assertEqual(self.drive("exec", os.path.join(self.home, "none.app"), "tex x", self.home),
                         "0\n" + OWN_EVENTS)


if __name__ == "__main__":
    unittest.main()
