"""What a screen reader is told of the shell's windows, asked over AT-SPI as a screen reader asks."""

import os
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import HELD, PLAIN  # noqa: E402
from harness import wait_until  # noqa: E402
from harness.processes import LIMIT  # noqa: E402
from reader import (CONTROLS, ROLE, STATE, Atspi, Reader, children, described, everything, has, label_of,  # noqa: E402
                    quietly, text_of, wait_for)

MENUS = ["Quillon", "File", "Edit", "Options", "Tools", "Transfer", "Help"]
ASKS = "echo $$ > \"$HOME/leader\"; printf 'What? '; read x; echo \"answer $x\"; while [ ! -e \"$HOME/go\" ]; do " \
       "sleep 0.05; done\n"


class ShellReader(Reader):
    def menu(self, title):
        """Opens a menu of the bar, and gives what it shows."""
        bar = wait_for(self.frame(), "the menu bar", role=ROLE.MENU_BAR)
        item = wait_for(bar, title, name=title)
        wait_until(lambda: has(item, STATE.SENSITIVE), f"the menu {title}")
        Atspi.Action.do_action(item, 0)
        return wait_for(item, "the open menu", role=ROLE.POPUP_MENU)

    def choose(self, title, *path):
        """Chooses an item of a menu, by the action that a screen reader has for it."""
        menu = self.menu(title)
        for name in path[:-1]:
            item = wait_for(menu, name, name=name)
            Atspi.Action.do_action(item, 0)
            menu = wait_for(item, "the open submenu", role=ROLE.POPUP_MENU)
        Atspi.Action.do_action(wait_for(menu, path[-1], name=path[-1]), 0)

    def dialog(self, title):
        """The window of that title, when it is active."""
        window = wait_until(lambda: matching_windows(self.shell(), title), f"the window {title}")[0]
        wait_until(lambda: has(window, STATE.ACTIVE), f"the keyboard in {title}")
        return window

    def close_dialog(self, title):
        self.keys("Escape")
        wait_until(lambda: not matching_windows(self.shell(), title), f"the end of {title}")

    def walk(self, window):
        """Looks at every control of a window: it says what it is, and the keyboard is somewhere in it."""
        controls = [node for node in everything(window) if node.get_role() in CONTROLS]
        self.assertTrue(controls, described(window))
        names = []
        for node in controls:
            self.assertTrue(node.get_name(), described(node))
            names.append((node.get_role(), node.get_name(), label_of(node)))
        self.assertEqual(len(set(names)), len(names), "two controls that cannot be told apart")
        for node in everything(window):
            self.assertNotIn(node.get_role(), (ROLE.INVALID, ROLE.UNKNOWN), described(node))
        wait_until(lambda: [node for node in controls if has(node, STATE.FOCUSED)], "the keyboard in a control")


def matching_windows(root, title):
    return [one for one in children(root) if quietly(one.get_name) == title and
            quietly(one.get_role) in (ROLE.DIALOG, ROLE.FRAME, ROLE.ALERT, ROLE.WINDOW)]


class Menus(ShellReader):
    def test_the_menu_bar_and_its_items_say_their_names_and_states(self):
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800", ADDSPECIALS="1")
        self.start_desktop()
        bar = wait_for(self.frame(), "the menu bar", role=ROLE.MENU_BAR)
        self.assertEqual([item.get_name() for item in children(bar)], MENUS)
        menu = self.menu("Options")
        names = [item.get_name() for item in children(menu) if item.get_role() != ROLE.SEPARATOR]
        self.assertEqual(names[:4], ["Formats", "Use TeX (DVI Output)", "Add Source Links", "Record Files Used"])
        for item in children(menu):
            expected = STATE.CHECKED in item.get_state_set().get_states()
            self.assertEqual(expected, item.get_name() == "Add Source Links", item.get_name())
        self.keys("Escape", "Escape")
        file = self.menu("File")
        self.assertFalse(has(wait_for(file, "Typeset", name="Typeset"), STATE.ENABLED))
        self.assertTrue(has(wait_for(file, "Typeset File...", name="Typeset File..."), STATE.ENABLED))

    def test_a_choice_by_the_reader_switches_a_setting(self):
        self.start_desktop()
        self.choose("Options", "Record Files Used")
        wait_until(lambda: self.setting("DORECORD") == "1")
        wait_until(lambda: not self.menus_shown(), "the end of the menu")
        self.assertTrue(has(wait_for(self.menu("Options"), "the item", name="Record Files Used"), STATE.CHECKED))

    def test_during_a_run_the_menus_are_said_to_be_disabled(self):
        self.begin(HELD)
        bar = wait_for(self.frame(), "the menu bar", role=ROLE.MENU_BAR)
        for item in children(bar):
            wait_until(lambda item=item: not has(item, STATE.SENSITIVE), "the menu to be disabled")
        self.let_end()
        for item in children(bar):
            wait_until(lambda item=item: has(item, STATE.SENSITIVE), "the menu to be enabled")


    def test_the_recent_menu_says_that_it_is_empty(self):
        self.start_desktop()
        item = wait_for(self.menu("File"), "the item", name="Recent Files")
        Atspi.Action.do_action(item, 0)
        (line,) = wait_until(lambda: children(wait_for(item, "the submenu", role=ROLE.POPUP_MENU)))
        self.assertEqual(line.get_name(), "Empty")
        self.assertFalse(has(line, STATE.ENABLED))


class Problems(ShellReader):
    def test_the_list_and_its_filters_say_their_names(self):
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800", Editor="/usr/bin/false")
        self.file("bad.tex", "Hello \\wrong\n\\hbox to 1pt{wide}\n\\bye\n")
        self.start_desktop()
        self.shell_object().Exec("pdftex -interaction=nonstopmode bad.tex", self.work, timeout=60)
        self.choose("Edit", "Problems")
        window = self.dialog("Problems")
        self.walk(window)
        for name in ("Errors (1)", "Warnings (0)", "Undefined references (0)", "Bad boxes (1)"):
            box = wait_for(window, name, role=ROLE.CHECK_BOX, name=name)
            self.assertTrue(has(box, STATE.CHECKED), name)
        wait_for(window, "the list", name="Problems of the last run")
        for name in ("Error", "bad.tex:1", "Undefined control sequence.", "Box", "bad.tex:2"):
            wait_for(window, name, name=name)
        line = wait_until(lambda: [node for node in everything(self.frame())
                                   if quietly(node.get_name).startswith("Last run: 1 page, 1 error, 1 bad box, ")])
        self.assertEqual(len(line), 1)
        self.keys("Escape")
        wait_until(lambda: not has(window, STATE.SHOWING), "the end of the window")


class Console(ShellReader):
    def test_the_console_is_read_as_text_with_its_insertion_point(self):
        self.start_desktop()
        console = self.console_text()
        self.assertEqual(console.get_name(), "Console")
        self.assertTrue(has(console, STATE.FOCUSED, STATE.MULTI_LINE, STATE.READ_ONLY, STATE.SHOWING))
        before = text_of(console)
        self.assertTrue(before.startswith("I can't find any formats.\n"), before)
        self.assertEqual(Atspi.Text.get_caret_offset(console), len(before))
        line = Atspi.Text.get_text_at_offset(console, 30, Atspi.TextBoundaryType.LINE_START)
        self.assertEqual(line.content, "Check your TEXFORMATS search path or build\n")
        self.choose("Edit", "Clear Console")
        wait_until(lambda: text_of(console) == "", "the empty console")
        self.assertEqual(console.get_description(), "Choose File > Typeset File... (Ctrl+O) to typeset a document.")

    def of(self, heard, node, kind):
        """The events of a KIND from NODE: (kind, offset, text)."""
        return [(name, offset, text) for name, source, offset, text in heard if source == node and kind in name]

    def test_what_a_run_prints_is_told_as_it_comes(self):
        self.start_desktop()
        console = self.console_text()
        heard = self.listen("object:text-changed:insert", "object:text-caret-moved")
        self.in_background(lambda: self.shell_object().Exec("pdftex x.tex", self.work, timeout=100))
        self.file("x.tex", PLAIN)
        wait_until(lambda: "Output written on x.pdf" in text_of(console), "the end of the run")
        told = wait_until(lambda: self.told(heard, console, "Transcript written on x.log."))
        self.assertIn("Processing -- pdftex x.tex", told)
        self.assertIn(told, text_of(console))
        wait_until(lambda: Atspi.Text.get_caret_offset(console) in
                   [place for _, place, _ in self.of(heard, console, "caret")], "the insertion point")

    def told(self, heard, console, last):
        text = "".join(text for _, _, text in self.of(heard, console, "insert"))
        return text if last in text else None


class Dialogs(ShellReader):
    WINDOWS = [(("Quillon", "About Quillon"), "About Quillon"),
               (("Options", "pdfTeX Options..."), "pdfTeX Options"),
               (("Options", "Set Applications..."), "Applications"),
               (("Options", "BibTeX8 Options..."), "bibtex8 Options"),
               (("Options", "dvips Options..."), "dvips Options"),
               (("Edit", "Font Size..."), "Font Size"),
               (("File", "Build Format", "Execute..."), "Run a Command"),
               (("Help", "Manual of a Package..."), "Manual of a Package")]

    def test_every_control_of_every_dialog_says_what_it_is(self):
        self.start_desktop()
        for path, title in self.WINDOWS:
            with self.subTest(title):
                self.choose(*path)
                window = self.dialog(title)
                self.assertEqual(window.get_role(), ROLE.DIALOG)
                self.walk(window)
                self.close_dialog(title)

    def test_the_files_to_clean_say_whether_they_are_ticked(self):
        self.start_desktop(self.file("x.tex", PLAIN))
        self.wait_for_line("Transcript written on x.log.")
        self.choose("File", "Clean...")
        window = self.dialog("Clean")
        self.walk(window)
        row = wait_for(window, "the file", name="x.log")
        wait_until(lambda: has(row, STATE.CHECKED), "the tick")
        files = wait_for(window, "the list", name="Files to remove")
        self.assertEqual(files.get_description(), "The files that are ticked are moved to the trash.")
        self.keys("space")
        wait_until(lambda: not has(row, STATE.CHECKED), "no tick")
        self.close_dialog("Clean")

    def test_the_find_bar_says_what_it_is(self):
        self.start_desktop(self.file("x.tex", PLAIN))
        self.wait_for_line("Transcript written on x.log.")
        self.keys("ctrl+f")
        field = wait_for(self.frame(), "the field", name="Find in console")
        self.xdotool("type", "written")
        wait_until(lambda: text_of(field) == "written")
        wait_until(lambda: field.get_description() == "1 of 2", "the number of hits")
        self.walk(self.frame())


class SeldomDialogs(ShellReader):
    """The windows that come before the menus, at the end of memory, or only for a moment."""

    # The keyboard goes down the window from where it begins, and then to what is above that.
    TOOLS = [("dvips...", "Run dvips", ["Options of dvips", "Output file", "Cancel", "OK", "Choose the DVI file"]),
             ("MakeIndex...", "Run MakeIndex",
              ["Add an index file", "Compress blanks", "German word ordering", "Letter ordering",
               "No implicit page ranges", "Starting page", "Style file", "Output file", "Transcript file", "Cancel",
               "OK"])]

    def message(self, title, name=None):
        """The dialog TITLE of the program that shows the seldom window NAME, when it has the keyboard."""
        if name:
            self.start_program(self.program("window-shower"), name)
        late = time.monotonic() + LIMIT / 6

        def active():
            shown = [one for one in matching_windows(self.shell(), title) if one.get_role() == ROLE.DIALOG]
            if shown and time.monotonic() > late:
                # On a busy machine the window manager may have given the keyboard to nobody.
                for window in self.windows(f"^{title}$"):
                    self.xdotool("windowactivate", window)
            return [one for one in shown if has(one, STATE.ACTIVE)]

        return wait_until(active, title)[0]

    def said(self, window):
        return [node.get_name() for node in everything(window) if node.get_role() == ROLE.LABEL]

    def shows_one_button(self, window, heading, button):
        """A message is a heading, a sentence, and the button that has the keyboard."""
        self.walk(window)
        self.assertEqual(self.said(window)[0], heading)
        self.assertTrue(self.said(window)[1].endswith("."), self.said(window))
        buttons = [node for node in everything(window) if node.get_role() in CONTROLS]
        self.assertEqual([node.get_name() for node in buttons], [button])
        self.keys("Return")
        wait_until(self.ended, "the end of the program")

    def tab_order(self, window):
        """The names of the controls in the order in which Tab goes through them, from where the keyboard begins."""
        names = []
        while True:
            focused = wait_until(lambda: [node for node in everything(window) if has(node, STATE.FOCUSED)
                                          and node.get_role() in CONTROLS], "the keyboard in a control")[0]
            if focused.get_name() in names:
                return names
            names.append(focused.get_name())
            self.keys("Tab")
            wait_until(lambda node=focused: not has(node, STATE.FOCUSED), "the next control")

    def test_a_shell_that_is_not_set_up(self):
        os.unlink(self.preferences_path)
        self.start_program(self.shell_program())
        self.shows_one_button(self.message("Quillon"), "Quillon has not been set up", "Quit")

    def test_a_name_that_is_too_long(self):
        self.shows_one_button(self.message("Quillon", "LongName"), "The name is too long", "OK")

    def test_the_end_of_memory(self):
        self.shows_one_button(self.message("Quillon", "alert 900"), "Out of memory", "Quit")

    def test_the_window_for_a_command_key(self):
        window = self.message("Command Key", "cmdkey")
        self.walk(window)
        self.assertEqual(self.tab_order(window), ["Command key", "Cancel", "OK"])

    def test_the_sheet_of_a_script(self):
        self.start_program(self.program("window-shower"), "wait")
        sheet = wait_until(lambda: [one for one in matching_windows(self.shell(), "Quillon")
                                    if one.get_role() == ROLE.DIALOG], "the sheet")[0]
        self.assertEqual(self.said(sheet), ["A script is running..."])
        wait_until(lambda: has(self.console_text(), STATE.FOCUSED), "the keyboard in the console")
        self.assertFalse(has(sheet, STATE.ACTIVE))

    def test_the_windows_of_tools(self):
        self.start_desktop()
        for item, title, order in self.TOOLS:
            with self.subTest(title):
                self.choose("Tools", item)
                window = self.message(title)
                self.walk(window)
                self.assertEqual(self.tab_order(window), order)
                self.close_dialog(title)


class RunWindow(ShellReader):
    def test_the_window_of_a_run_is_read_and_answered(self):
        self.begin(ASKS)
        self.tool_window()
        (window,) = children(self.tool())
        self.assertEqual((window.get_role(), window.get_name()), (ROLE.FRAME, "pdftex – Quillon"))
        self.walk(window)
        output = wait_for(window, "the output", name="Output of pdftex")
        wait_until(lambda: text_of(output).endswith("What? "))
        wait_for(window, "what the run does", role=ROLE.LABEL, name="Waits for an answer")
        answer = wait_for(window, "the line for answers", role=ROLE.TEXT, name="Answer to the program")
        wait_until(lambda: has(answer, STATE.FOCUSED, STATE.EDITABLE))
        heard = self.listen("object:text-changed:insert")
        Atspi.EditableText.set_text_contents(answer, "yes")
        Atspi.Action.do_action(wait_for(window, "the button", role=ROLE.PUSH_BUTTON, name="Return"), 0)
        wait_until(lambda: "answer yes" in text_of(output))
        wait_until(lambda: "answer yes" in "".join(text for _, source, _, text in heard if source == output))
        self.let_end()
        wait_until(lambda: "answer yes" in text_of(self.console_text()))


if __name__ == "__main__":
    unittest.main()
