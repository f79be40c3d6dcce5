"""The menus as a script sees them: numbers, enabling, marks, and what each choice does."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

PLAIN = "Hello.\n\\bye\n"


class Menus(HomeTest):
    def items(self, output):
        """The printed items: number -> (enabled, mark, key, text)."""
        found = {}
        for line in output.split("\n"):
            parts = line.split(" ", 4)
            if len(parts) == 5 and parts[0].isdigit():
                found[int(parts[0])] = (parts[1], parts[2], parts[3], parts[4])
        return found

    def menu(self, number, script="", **settings):
        self.preferences(**settings)
        return self.items(self.shell(f"{script}print menu {number}\n"))

    def test_without_a_current_file_item_2_is_disabled(self):
        self.assertEqual(self.menu(129)[2], ("-", "-", "T", "Typeset"))

    def test_with_an_empty_last_command_item_5_is_disabled(self):
        self.assertEqual(self.menu(129)[5][0], "-")
        self.assertEqual(self.menu(129, LASTCOMMAND="pdftex x")[5][0], "+")

    def test_every_menu_exists_with_its_numbers(self):
        counts = {128: 3, 129: 23, 131: 20, 133: 19, 134: 3, 135: 9, 137: 4, 140: 5, 143: 2, 200: 1, 300: 4}
        self.preferences()
        for number, count in counts.items():
            self.assertEqual(sorted(self.items(self.shell(f"print menu {number}\n"))), list(range(1, count + 1)), number)
        for number in (130, 142, 201, 202, 139):
            self.shell(f"print menu {number}\n")
            self.assertNotIn("there is no menu", self.errors)

    def test_with_pdftex_off_options_item_2_is_checked(self):
        self.assertEqual(self.menu(131)[2][1], "*")
        self.assertEqual(self.menu(131, USEPDFTEX="1")[2][1], "-")
        self.assertEqual(self.menu(131, "menu 131 2\n")[2][1], "-")
        self.assertEqual(self.setting("USEPDFTEX"), "1")

    def test_each_toggle_writes_its_setting_and_its_mark(self):
        for menu, item, key in ((131, 3, "ADDSPECIALS"), (131, 4, "DORECORD"), (131, 18, "RERUN"), (131, 19, "SNAPSHOT"),
                                (131, 20, "WATCH"), (131, 7, "AUTOVIEW"), (131, 8, "DEBUG"), (133, 11, "USE8BIT")):
            self.assertEqual(self.menu(menu, f"menu {menu} {item}\n")[item][1], "*", key)
            self.assertEqual(self.setting(key), "1")
            self.assertEqual(self.menu(menu, f"menu {menu} {item}\nmenu {menu} {item}\n")[item][1], "-", key)
            self.assertEqual(self.setting(key), "0")

    def test_etex_mode_and_first_line_are_switched(self):
        items = self.menu(131, "menu 131 16\nmenu 131 17\n")
        self.assertEqual((items[16][1], items[17][1]), ("*", "*"))

    def test_the_metapost_format_is_one_of_two(self):
        items = self.menu(143, "menu 143 2\n")
        self.assertEqual((items[1][1], items[2][1], self.setting("MPTEXFORMAT")), ("-", "*", "2"))

    def test_a_font_is_chosen_and_marked_at_the_next_start(self):
        items = self.menu(139)
        self.assertGreaterEqual(len(items), 3)
        self.menu(139, "menu 139 2\n")
        self.assertEqual(self.setting("FONTNAME"), items[2][3])
        marks = self.items(self.shell("print menu 139\n"))
        self.assertEqual([number for number, item in marks.items() if item[1] == "*"], [2])

    def test_the_help_menu_prints_its_texts(self):
        self.preferences()
        output = self.shell("menu 300 1\nmenu 300 2\nmenu 300 3\n")
        for text in ("\nQUILLON\n", "MetaPost of today writes no file", "Ctrl+O          File > Typeset File...\n",
                     "WHAT THE MESSAGES MEAN"):
            self.assertIn(text, output)

    def test_transfer_keys_win_over_the_others(self):
        record = self.file("record", "")
        program = self.file("app", f"#!/bin/sh\necho started >> {record}\n", mode=0o755)
        self.preferences(TEXMENU1=program + "::O")
        output = self.shell(f"key o\nwait FILE {record}\nprint menu 200\n")
        self.assertIn("1 + - O app\n", output)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), "started\n")

    def test_a_transfer_application_that_has_gone_is_said(self):
        self.preferences(TEXMENU1="/none/app")
        self.assertIn("open: I can't find the application /none/app\n", self.shell("menu 200 1\n"))

    def test_an_application_of_an_earlier_system_is_started_once(self):
        record = self.file("record", "")
        program = self.file("app", f"#!/bin/sh\necho started >> {record}\n", mode=0o755)
        self.preferences(TEXMENU1=program)
        self.shell(f"menu 200 1\nwait FILE {record}\n", "--system", "9")
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), "started\n")

    def test_a_full_recent_menu_with_missing_files(self):
        paths = [self.file(f"{number}.tex", "x") for number in range(12)]
        for path in paths[::2]:
            os.unlink(path)
        settings = {f"RECENTFILE{number + 1}": path for number, path in enumerate(paths)}
        items = self.menu(142, **settings)
        self.assertEqual([items[number][3] for number in range(1, 7)], [f"{number}.tex" for number in range(1, 12, 2)])
        self.assertEqual(len(items), 9)

    def test_a_disabled_item_does_nothing(self):
        self.preferences()
        output = self.shell("menu 129 2\nmenu 129 10\nmenu 133 1\n")
        self.assertNotIn("Processing", output)

    def test_a_command_key_chooses(self):
        self.preferences()
        path = self.file("x.tex", PLAIN)
        self.assertIn("Processing -- pdftex -output-format=dvi x.tex \n", self.shell(f"choose {path}\nkey O\n"))

    def test_quit_saves_the_recent_files_and_ends(self):
        self.preferences()
        path = self.file("x.tex", PLAIN)
        output = self.shell(f"event aevt odoc ---- fss {path}\nmenu 129 20\nprint state home\n")
        self.assertNotIn("home=", output)
        self.assertEqual((self.setting("RECENTFILE1"), self.status), (path, 0))

    def test_the_application_menu_quits_by_a_quit_event(self):
        self.preferences()
        path = self.file("x.tex", PLAIN)
        self.shell(f"event aevt odoc ---- fss {path}\nmenu 128 3\n")
        self.assertEqual((self.setting("RECENTFILE1"), self.status), (path, 0))

    def test_a_quit_event_while_idle_saves_the_recent_files(self):
        self.preferences()
        path = self.file("x.tex", PLAIN)
        output = self.shell(f"event aevt odoc ---- fss {path}\nevent aevt quit\n")
        self.assertIn("reply 0\n", output)
        self.assertEqual((self.setting("RECENTFILE1"), self.status), (path, 0))

    def recent(self, count):
        paths = [self.file(f"r{number}.tex", PLAIN) for number in range(1, count + 1)]
        return paths, {f"RECENTFILE{number}": path for number, path in enumerate(paths, 1)}

    def test_a_recent_file_that_is_gone_is_offered_for_removal(self):
        paths, settings = self.recent(2)
        self.preferences(**settings)
        output = self.shell_with_removed(paths[1], "dialog ConfirmDelete\n  press 1\nmenu 142 2\nprint menu 142\n")
        self.assertEqual(len(self.items(output)), 4)
        self.assertNotIn("Processing", output)

    def test_a_recent_file_that_is_gone_stays_when_the_person_declines(self):
        paths, settings = self.recent(2)
        self.preferences(**settings)
        output = self.shell_with_removed(paths[1], "dialog ConfirmDelete\n  press 2\nmenu 142 2\nprint menu 142\n")
        self.assertEqual(len(self.items(output)), 5)
        self.assertNotIn("Processing", output)

    def shell_with_removed(self, path, script):
        """The shell under SCRIPT, with a file that a run removes before the script's steps."""
        self.file("remove.tex", "\\immediate\\write18{rm " + os.path.basename(path) + "}\\bye\n")
        output = self.shell(f"event QUIL exec ---- TEXT pdftex -shell-escape \\input remove dest fss {self.work}\n"
                            + script)
        self.assertFalse(os.path.exists(path))
        return output.partition("reply 0")[2]

    def test_recent_files_show_names_or_full_paths(self):
        paths, settings = self.recent(1)
        items = self.menu(142, "", **settings)
        self.assertEqual([items[n][3] for n in (1, 3, 4)], ["r1.tex", "Show full paths", "Remove all items"])
        items = self.menu(142, "menu 142 3\n", **settings)
        self.assertEqual([items[n][3] for n in (1, 3)],
                         [paths[0][1:].replace("/", ":"), "Show file names only"])
        self.assertEqual(self.setting("USEFULLPATHS"), "1")

    def test_remove_all_items_empties_the_menu(self):
        _, settings = self.recent(3)
        self.assertEqual(self.menu(142, "menu 142 6\n", **settings), {})
        self.assertEqual(self.setting("RECENTFILE1"), "")

    def test_a_recent_choice_typesets_and_moves_to_the_top(self):
        paths, settings = self.recent(5)
        items = self.menu(142, "menu 142 5\n", USEPDFTEX="1", **settings)
        self.assertEqual([items[n][3] for n in range(1, 6)], ["r5.tex", "r1.tex", "r2.tex", "r3.tex", "r4.tex"])
        self.assertTrue(os.path.exists(paths[4].replace(".tex", ".pdf")))

    def test_the_thirteenth_recent_file_drops_the_oldest(self):
        _, settings = self.recent(12)
        path = self.file("new.tex", PLAIN)
        items = self.menu(142, f"event aevt odoc ---- fss {path}\n", **settings)
        self.assertEqual(len(items), 15)
        self.assertEqual((items[1][3], items[12][3]), ("new.tex", "r11.tex"))

    def test_missing_recent_files_vanish_at_the_start(self):
        paths, settings = self.recent(3)
        os.unlink(paths[1])
        items = self.menu(142, "", **settings)
        self.assertEqual([items[1][3], items[2][3]], ["r1.tex", "r3.tex"])

    def test_the_dvi_and_postscript_items_follow_the_files(self):
        path = self.file("paper.tex", PLAIN)
        self.file("paper.dvi", "")
        self.file("paper.aux", "")
        items = self.menu(129, TEXFILE=path)
        self.assertEqual(items[10], ("+", "-", "D", 'View "paper.dvi" '))
        self.assertEqual(items[11][3], 'dvips "paper.dvi" ')
        self.assertEqual(items[13], ("-", "-", "-", "View"))
        self.assertEqual(items[8][3], 'bibtex "paper.aux"')

    def test_the_information_menu_shows_a_text_or_says_why_not(self):
        self.preferences()
        for item in range(1, 5):
            output = self.shell(f"menu 137 {item}\n")
            self.assertTrue("I can't open Info file\n" in output or len(output) > 300, output)


if __name__ == "__main__":
    unittest.main()
