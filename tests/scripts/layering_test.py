#!/usr/bin/python3
"""The layering check: it is quiet over the sources, and refuses one breach of each kind."""

import importlib.util
import os
import unittest

SOURCE = os.environ.get("QUILLON_SOURCE_FOLDER",
                        os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
description = importlib.util.spec_from_file_location("checks", os.path.join(SOURCE, "scripts", "checks.py"))
checks = importlib.util.module_from_spec(description)
description.loader.exec_module(checks)


def reasons(name, *lines):
    return [reason for _, reason in checks.breaches(name, "\n".join(lines) + "\n")]


class Layering(unittest.TestCase):
    def test_the_sources_keep_the_rules(self):
        self.assertEqual(checks.layering(), [])

    def test_every_folder_of_the_sources_is_known(self):
        for folder, inside, files in os.walk(os.path.join(SOURCE, "src")):
            if any(name.endswith((".cpp", ".h")) for name in files):
                name = os.path.relpath(folder, os.path.join(SOURCE, "src"))
                self.assertEqual(checks.folder_of(name + "/x.h"), name)

    def test_what_is_allowed_passes(self):
        self.assertEqual(reasons("jobs/x.cpp", '#include "jobs/x.h"', '#include "state/job_state.h"', "#include <map>",
                                 '#include "toolbox/files.h"', '#include "common/search_settings.h"'), [])
        self.assertEqual(reasons("toolhost/x.cpp", '#include "common/places.h"', "#include <systemd/sd-bus.h>"), [])

    def test_an_arrow_upwards_is_refused_in_every_folder(self):
        for folder in checks.ALLOWED:
            if folder != "program":
                self.assertEqual(reasons(folder + "/x.h", '#include "program/x.h"'),
                                 [f"{folder} does not include program/x.h"], folder)

    def test_the_shell_does_not_see_the_host(self):
        for included in ("linux/events/loop.h", "linux/files/host.h", "common/places.h", "desktop/main_window.h",
                         "headless/headless.h", "toolhost/run.h"):
            for folder in (*checks.SHELL, "state"):
                self.assertEqual(reasons(folder + "/x.cpp", f'#include "{included}"'),
                                 [f"{folder} does not include {included}"])

    def test_the_ground_floor_stands_on_nothing_of_the_shell(self):
        for folder in ("state", "toolbox", "front", "common"):
            self.assertEqual(len(reasons(folder + "/x.h", '#include "core/event_loop.h"')), 1)

    def test_the_back_ends_do_not_see_the_shell(self):
        for folder in ("linux/events", "linux/files", "common", "client", "helpers", "setpaths", "toolhost", "widgets"):
            self.assertEqual(len(reasons(folder + "/x.cpp", '#include "settings/settings.h"')), 1, folder)

    def test_the_rooms_of_the_host_are_rooms_of_their_own(self):
        self.assertEqual(len(reasons("linux/files/x.cpp", '#include "linux/events/loop.h"')), 1)
        self.assertEqual(len(reasons("toolhost/x.cpp", '#include "setpaths/defaults.h"')), 1)

    def test_a_bare_include_is_refused(self):
        self.assertEqual(reasons("toolhost/x.cpp", '#include "run.h"'), ["includes are written from src/: run.h"])
        self.assertEqual(reasons("core/x.cpp", '#include "../files/paths.h"'),
                         ["includes are written from src/: ../files/paths.h"])

    def test_a_folder_that_is_not_known_is_refused(self):
        self.assertEqual(reasons("attic/x.cpp", "#include <map>"), ["the rules know no folder attic"])
        self.assertEqual(reasons("core/attic/x.cpp"), ["the rules know no folder core/attic"])
        self.assertEqual(reasons("core/x.cpp", '#include "attic/x.h"'), ["includes are written from src/: attic/x.h"])

    def test_a_library_is_refused_outside_the_back_ends(self):
        for header in ("QString", "systemd/sd-bus.h", "gio/gio.h", "glib.h", "zlib.h"):
            for folder in ("core", "state", "toolbox", "front", "headless", "program"):
                self.assertEqual(reasons(folder + "/x.h", f"#include <{header}>"),
                                 [f"a library's header: #include <{header}>"])
            self.assertEqual(reasons("common/x.h", f"#include <{header}>"), [])

    def test_the_shell_does_not_ask_for_the_operating_system(self):
        for line in ("#ifdef __linux__", "#if defined(_WIN32)", "#elif defined(__APPLE__)"):
            self.assertEqual(reasons("files/x.cpp", line), ["the shell does not ask for the operating system"])


if __name__ == "__main__":
    unittest.main()
