"""Eight clients that call the shell at once."""

import os

import dbus
import dbus.lowlevel

from harness.bus import MAIN_LOOP, ServiceTest
from harness.processes import wait_until

NAME = "org.quillon.Shell"
CLIENTS = 8
BUSY = "org.quillon.Shell1.Error.Busy"
# Writes down its last word; a number is the line and the message of its error, but each seventh ends well. The word
# "hold" waits until somebody opens the gate.
ENGINE = """for word; do :; done
echo "$word" >>'%s'
echo "(./x.tex"
[ "$word" = hold ] && { read line <'%s'; exit 0; }
[ $((word %% 7)) = 0 ] && exit 0
printf '! Fault number %%d.\\nl.%%d \\\\x\\n' "$word" "$word"
exit $((word %% 251 + 2))
"""


def status_of(number):
    """What the event tells, and Exec with it: whether the run failed."""
    return 1 if number % 7 else 0


def told_of(number):
    """What Run tells of the run of that number: the exit code, the line of the first error, and its message."""
    return (number % 251 + 2, number, f"Fault number {number}.") if status_of(number) else (0, 0, "")


class ManyClients(ServiceTest):
    """A shell whose engine writes down each run, and eight clients of it."""

    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", Editor="/usr/bin/true")  # a run that fails asks nobody
        self.file("x.tex", "Hello.\n\\bye\n")
        self.journal, self.gate = os.path.join(self.home, "journal"), os.path.join(self.home, "gate")
        os.mkfifo(self.gate)
        self.script_tool(ENGINE % (self.journal, self.gate))

    def ran(self):
        """The last words of the commands that were run."""
        with open(self.journal, encoding="utf-8") as file:
            return file.read().split()

    def call_in_turn(self, numbers):
        """What one client is told of each of its runs, a call after the other."""
        shell, told = self.shell_object(), []
        for number in numbers:
            command, folder = b"pdftex x.tex %d" % number, os.fsencode(self.work)
            status, result = shell.Run(dbus.ByteArray(command), dbus.ByteArray(folder),
                                       dbus.Dictionary({}, signature="sv"), timeout=300)
            told.append((int(status), int(result.get("line", 0)), str(result.get("message", ""))))
        return told

    def interleaved(self, count):
        """COUNT runs, called by eight clients at once: each is told its own status, line and message."""
        numbers = [range(client, count, CLIENTS) for client in range(CLIENTS)]
        threads = [self.in_background(lambda of=own: self.call_in_turn(of)) for own in numbers]
        for own, thread in zip(numbers, threads):
            thread.join(600)
            self.assertEqual(thread.result, [told_of(number) for number in own])
        self.assertEqual(sorted(map(int, self.ran())), list(range(count)))

    def command_call(self, number):
        """The call for a command: the shell's own method, and for each fifth the event of the same meaning."""
        command = f"pdftex x.tex {number}"
        if number % 5:
            call = dbus.lowlevel.MethodCallMessage(NAME, "/org/quillon/Shell", "org.quillon.Shell1", "Exec")
            call.append(command, self.work)
        else:
            call = dbus.lowlevel.MethodCallMessage(NAME, "/org/quillon/App", "org.quillon.App1", "Event")
            call.append("QUIL", "exec", {"----": ("TEXT", command), "dest": ("fss ", self.work)},
                        signature="ssa{s(sv)}")
        return call

    def answer_of(self, number, status):
        return [status] if number % 5 else [0, {"----": ("long", status)}]

    def burst(self, count, during=lambda: None):
        """COUNT calls at once during a run: each is refused or run once. Returns how many were run.

        DURING, which returns nothing, is called again and again until all are answered.
        """
        first = self.in_background(lambda: self.shell_object().Exec("pdftex x.tex hold", self.work, timeout=300))
        wait_until(lambda: os.path.exists(self.journal) and self.ran() == ["hold"], "the first run")
        clients = [self.bus(MAIN_LOOP) for _ in range(CLIENTS)]
        answers = [[] for _ in range(count)]
        for number, told in enumerate(answers):
            clients[number % CLIENTS].send_message_with_reply(self.command_call(number), told.append, 600)
        # What the queue does not hold is refused at once, and nothing that waits is run meanwhile.
        wait_until(lambda: during() or sum(map(bool, answers)) > count - 512, "the refusals")
        self.assertEqual(self.ran(), ["hold"])
        self.assertIsNone(first.result)
        with open(self.gate, "w", encoding="ascii") as gate:
            gate.write("\n")
        first.join(60)
        self.assertEqual(first.result, 0)
        wait_until(lambda: during() or all(answers), "all answers", 300)
        taken = []
        for number, (reply, *more) in enumerate(answers):
            self.assertEqual(more, [])
            if reply.get_type() == dbus.lowlevel.MESSAGE_TYPE_ERROR:
                self.assertEqual((reply.get_error_name(), reply.get_args_list()), (BUSY, ["too many events wait"]))
            else:
                self.assertEqual(reply.get_args_list(), self.answer_of(number, status_of(number)))
                taken.append(str(number))
        self.assertGreater(len(taken), 400)
        self.assertEqual(sorted(self.ran()), sorted(taken + ["hold"]))
        for client in clients:
            client.close()
        return len(taken)
