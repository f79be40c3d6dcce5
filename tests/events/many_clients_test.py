"""Eight clients that call the shell at once: each gets its own answer, and every command that is taken runs once."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness.many_clients import ManyClients  # noqa: E402


class Answers(ManyClients):
    def setUp(self):
        super().setUp()
        self.start_shell()

    def test_a_thousand_runs_of_eight_clients_are_each_told_to_their_own(self):
        self.interleaved(1000)

    def test_ten_thousand_calls_during_a_run_are_each_refused_or_run_once(self):
        self.burst(10000)


del ManyClients

if __name__ == "__main__":
    unittest.main()
