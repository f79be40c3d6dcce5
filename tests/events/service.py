"""A shell on a session bus, and a run that goes on until it is stopped."""

import dbus

from harness import ServiceTest, wait_until

PLAIN = "Hello.\n\\bye\n"
# Runs until it is stopped.
ENDLESS = "\\def\\again{\\again}\\again\n\\bye\n"


class Service(ServiceTest):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1")
        self.file("x.tex", PLAIN)
        self.file("endless.tex", ENDLESS)

    def assert_printed(self, text):
        """The console's text reaches standard output when the shell next waits, maybe after its answer."""
        wait_until(lambda: text in self.output())

    def start_endless(self):
        """A run that is going on, and the thread that waits for it."""
        thread = self.in_background(lambda: self.shell_object().Exec("pdftex endless.tex", self.work, timeout=90))
        wait_until(lambda: len(self.processes_of("endless.tex")) > 0)
        return thread

    def error_of(self, call):
        with self.assertRaises(dbus.exceptions.DBusException) as caught:
            call()
        return caught.exception.get_dbus_name()
