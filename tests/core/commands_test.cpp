// The tests choose every row of the command table that has a procedure, with pdfTeX off and on, and compare
// all that the choice changed. A row that is added needs its effects in `expected`.
#include "core/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "core/command_table.h"
#include "core/event_loop.h"
#include "kpath/search_paths.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "support/whole_text.h"
#include "toolbox/events.h"
#include "toolbox/received_events.h"
#include "tools/shell_commands.h"

namespace quillon {
namespace {

using Effects = std::map<std::string, std::string>;

int copies = 0, finds = 0, problem_windows = 0;
std::string piped;

std::FILE *keep_command(const char *command, const char *) {
    piped += std::string(command) + "\n";
    return nullptr;
}

const char old_text[] = "old\n";
constexpr int file_count = 2; // in the Recent files menu

// A shell with every file, viewer and text that a command can use, but without an engine.
class Commands : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char *const name :
             {"x.tex", "x.dvi", "x.ps", "x.pdf", "x.aux", "x.mp", "a.tex", "b.tex", "config.ps"})
            home_.file(std::string("work/") + name);
        home_.preferences("SPACECHAR=31\nDEBUG=0\nTEXFILE=" + work("x.tex") +
                          "\nRECENTFILE1=" + work("a.tex") + "\nRECENTFILE2=" + work("b.tex") +
                          "\nTEXCONFIG=" + home_.path("work") + "\n");
        setpaths(1u << slot_texconfig);
        for (std::uint8_t *const flag :
             {&usePdfTeX, &useETeX, &doDebug, &use8bit, &useFullPaths, &doView, &addSpecials, &doRecord,
              &runUntilStable, &fastPreamble, &typesetOnSave, &parseFirstLine, &doQuit})
            *flag = 0;
        space_char = 31;
        mp_format_type = 1;
        oldItem = 0;
        format_name.clear();
        pdfexe.format("%s/pdftex.app", home_.root().c_str());
        viewpsexe = make_app(psview_, "psview");
        pdfview = make_app(pdfview_, "pdfview");
        ps2pdfexe = make_app(converter_, "converter");
        editor = make_app(editor_, "editor");
        dvipreview.copy(make_app(other_, "dviview"));
        setup.copy(make_app(other_, "setpaths"));
        contentsFolder.copy(home_.root());
        for (const char *const name :
             {"dvips_info", "makeindex_info", "metapost_info", "pdftex_info", "help_manual", "help_messages"})
            home_.file(std::string("Resources/") + name, std::string(name) + "\r");
        lastcommand.copy("pdftex last.tex");
        lastdir.copy(home_.path("work"));
        make_menus();
        theConsole = FrontWindow();
        changed = *front;
        changed.copy_text = [] { copies++; };
        changed.find_text = [] { finds++; };
        changed.show_problems = [] { problem_windows++; };
        front = &changed;
        copies = finds = problem_windows = 0;
        piped.clear();
        BSDpopenFunc = keep_command;
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
        TXNSetData(text, "old\r", 4);
    }
    void TearDown() override {
        BSDpopenFunc = nullptr;
        viewpsexe = pdfview = ps2pdfexe = editor = nullptr;
        theConsole = nullptr;
        usePdfTeX = useFullPaths = doQuit = 0;
        lastcommand.clear();
        lastdir.clear();
        oldItem = 0;
    }

    std::string work(const std::string &name) const { return home_.path("work/" + name); }

    // Chooses an item as a person does, and returns what that changed, by name.
    Effects choose(std::int16_t menu, std::int16_t item) {
        const Effects before = state();
        const EventRecord choice = {
            mouseDown, static_cast<std::uint32_t>(menu) << 16 | static_cast<std::uint16_t>(item),
            0,         {0, 0},
            0,         0};
        DoEvent(&choice);
        Effects after = state(), found;
        for (const auto &[name, value] : before)
            after.try_emplace(name, "");
        for (const auto &[name, value] : after)
            if (const auto old = before.find(name); value != (old == before.end() ? "" : old->second))
                found[name] = value;
        return found;
    }

    // The answer to every message window.
    void answer_windows(int answer) { recorded_->pressed = answer ? 1 : 2; }

    test::TemporaryHome home_;
    test::RecordingFront recorded_;

  private:
    static void make_menus() {
        SetUpMenus();
        for (const char *const format : {"plain", "latex"})
            AppendMenuItemText(formatMenu, format);
        for (const char *const font : {"Courier", "Helvetica"})
            AppendMenuItemText(fontMenu, font);
        ChangeMenus();
    }

    const char *make_app(std::string &path, const std::string &name) {
        home_.file(name + ".app/Contents/PkgInfo", "APPL" + name.substr(0, 4));
        path = home_.path(name + ".app");
        return path.c_str();
    }

    static std::string items(MenuHandle menu) {
        std::string all;
        BoundedString<1024> text;
        for (std::int16_t item = 1; item <= CountMenuItems(menu); item++) {
            GetMenuItemText(menu, item, text);
            all += std::string(text.c_str()) + "\n";
        }
        return all;
    }

    static void add_marks(Effects &found) {
        for (int i = 0; i < menu_row_count; i++) {
            const MenuHandle menu = GetMenuHandle(menu_rows[i].id);
            for (std::int16_t item = 1; item <= CountMenuItems(menu); item++)
                if (IsItemChecked(menu, item))
                    found["mark " + std::to_string(menu_rows[i].id) + " " + std::to_string(item)] = "on";
        }
    }

    static std::string queued() {
        std::string all;
        EventRecord event;
        while (GetNextEvent(everyEvent, &event)) {
            const OSType id = high_level_event_id(event);
            for (const OSType code : {static_cast<OSType>(event.message), id})
                for (int shift = 24; shift >= 0; shift -= 8)
                    all += static_cast<char>(code >> shift);
            all += "\n";
        }
        return all;
    }

    Effects state() {
        Effects found = {
            {"usePdfTeX", std::to_string(usePdfTeX)},
            {"useETeX", std::to_string(useETeX)},
            {"doDebug", std::to_string(doDebug)},
            {"use8bit", std::to_string(use8bit)},
            {"useFullPaths", std::to_string(useFullPaths)},
            {"doView", std::to_string(doView)},
            {"addSpecials", std::to_string(addSpecials)},
            {"doRecord", std::to_string(doRecord)},
            {"runUntilStable", std::to_string(runUntilStable)},
            {"fastPreamble", std::to_string(fastPreamble)},
            {"typesetOnSave", std::to_string(typesetOnSave)},
            {"doQuit", std::to_string(doQuit)},
            {"parseFirstLine", std::to_string(parseFirstLine)},
            {"aeQuit", std::to_string(aeQuit)},
            {"mp_format_type", std::to_string(mp_format_type)},
            {"oldItem", std::to_string(oldItem)},
            {"format_name", format_name.c_str()},
            {"copies", std::to_string(copies)},
            {"finds", std::to_string(finds)},
            {"problem windows", std::to_string(problem_windows)},
            {"transfer", items(transferMenu)},
            {"commands", piped},
            {"events", queued()},
            {"chooser", recorded_->asked ? recorded_->prompt : ""},
            {"formats", items(formatMenu)},
            {"recent", items(recentMenu)},
        };
        for (const std::string &window : recorded_->windows)
            found["windows"] += window + "\n";
        std::string console = test::whole_text(text);
        std::replace(console.begin(), console.end(), '\r', '\n');
        found["console"] = console;
        std::istringstream settings(home_.read("config/Quillon Preferences"));
        for (std::string line; std::getline(settings, line);) {
            const std::string key = line.substr(0, line.find('='));
            char *const value = myget_string(key.c_str());
            found["setting " + key] = value ? value : "";
            std::free(value);
        }
        add_marks(found);
        return found;
    }

    std::string psview_, pdfview_, converter_, editor_, other_;
    static Front changed;
};
Front Commands::changed;

// A row, or an item of a menu that the shell fills while it runs; and whether pdfTeX is on.
using Choice = std::tuple<std::int16_t, std::int16_t, int>;

class EveryCommand : public Commands, public ::testing::WithParamInterface<Choice> {
  protected:
    // What a typeset run of a file changes before it finds that there is no engine.
    Effects run(const std::string &command, const std::string &source) const {
        return {{"console", old_text + ("\nProcessing -- " + command + "\nworking directory --  " +
                                        home_.path("work") + "\nI can't find " + home_.root() +
                                        "/pdftex.app. It should be in the binaries foldeer.\n")},
                {"setting TEXDIR", home_.path("work")},
                {"setting LASTDIR", home_.path("work")},
                {"setting LASTCOMMAND", command},
                {"recent", recent_after(source)}};
    }
    Effects typeset(const std::string &source) const {
        Effects found = run((usePdfTeX ? "pdftex " : "pdftex -output-format=dvi ") + source + " ", source);
        if (source != "x.tex")
            found["setting TEXFILE"] = work(source);
        if (source == "a.tex")
            found.erase("recent"); // it is at the top already
        return found;
    }
    static std::string recent_after(const std::string &source) {
        const std::string fixed = "-\nShow full paths\nRemove all items\n";
        return source == "b.tex" ? "b.tex\na.tex\n" + fixed : source + "\na.tex\nb.tex\n" + fixed;
    }
    Effects opened(const std::string &app, const std::string &document) const {
        std::string command = "open -a \"" + home_.path(app) + "\"";
        if (!document.empty())
            command += " \"" + work(document) + "\"";
        return {{"commands", command + " 2>&1\n"}};
    }
    static Effects switched(const std::string &name, const std::string &key, const std::string &mark) {
        Effects found = {{name, "1"}, {"mark " + mark, "on"}};
        if (!key.empty())
            found["setting " + key] = "1";
        return found;
    }
    Effects repeated() const {
        Effects found = run("pdftex last.tex", "");
        found.erase("recent"); // the file is not there
        return found;
    }
    static Effects missing(const std::string &tool) {
        return {
            {"console", old_text + ("I can't find " + tool + ". It should be in the binaries folder.\n")}};
    }
    static Effects with(Effects found, const Effects &more) {
        found.insert(more.begin(), more.end());
        return found;
    }
    Effects file_menu(int item) {
        switch (item) {
        case 8:
            return missing("bibtex");
        case 11:
            return missing("dvips");
        case 14:
            return {{"console", old_text + std::string("Oops!!\ndidlaunch = 0\n")}};
        case 1: {
            recorded_->answer = work("x.tex");
            Effects found = typeset("x.tex");
            found["chooser"] = "Select a tex file";
            return found;
        }
        case 2:
            return typeset("x.tex");
        case 5:
            return repeated();
        case 10:
            return opened("dviview.app", "x.dvi");
        case 13:
            return opened("psview.app", "x.ps");
        case 16:
            return opened("pdfview.app", "x.pdf");
        case 18:
            return {{"chooser", "Save console output as"}};
        case 20:
            SaveRecentFile(work("b.tex").c_str()); // an order that the settings do not have yet
            return {{"doQuit", "1"},
                    {"setting RECENTFILE1", work("b.tex")},
                    {"setting RECENTFILE2", work("a.tex")}};
        case 22:
            return {{"console", old_text + ("No run of " + work("x.tex") +
                                            " is on record, so I don't know what its runs wrote. Typeset it "
                                            "once.\n")}};
        case 23:
            return opened("pdfview.app", "x.pdf");
        default:
            return {{"not expected", ""}};
        }
    }
    Effects options_menu(int item) const {
        switch (item) {
        case 2:
            return {{"usePdfTeX", usePdfTeX ? "0" : "1"},
                    {"setting USEPDFTEX", usePdfTeX ? "0" : "1"},
                    {"mark 131 2", usePdfTeX ? "on" : ""}};
        case 3:
            return switched("addSpecials", "ADDSPECIALS", "131 3");
        case 4:
            return switched("doRecord", "DORECORD", "131 4");
        case 18:
            return switched("runUntilStable", "RERUN", "131 18");
        case 19:
            return switched("fastPreamble", "SNAPSHOT", "131 19");
        case 20:
            return switched("typesetOnSave", "WATCH", "131 20");
        case 7:
            return switched("doView", "AUTOVIEW", "131 7");
        case 8:
            return switched("doDebug", "DEBUG", "131 8");
        case 5:
            return {{"windows", "pdftex options\n"},
                    {"setting PDFTEXMODE", "ljfour"},
                    {"setting PDFMAKEFONT", "0"}};
        case 9:
            return opened("setpaths.app", "");
        case 10:
            return {{"windows", "Set apps\n"}};
        case 12:
            return {{"windows", "bibtex8 options\n"}};
        case 13:
            return {{"windows", "dvips options\n"}};
        case 16: {
            Effects found = switched("useETeX", "", "131 16");
            found["formats"] = "";
            found["console"] = std::string(old_text) + "I can't find any formats.\n"
                                                       "Check your TEXFORMATS search path or build\n"
                                                       "a format file using the \"Build format\" command\n"
                                                       "under the \"File\" Menu.\n";
            return found;
        }
        case 17:
            return switched("parseFirstLine", "", "131 17");
        default:
            return {{"not expected", ""}};
        }
    }
    // A format is built in the person's home, since there is no folder of formats.
    Effects built(const std::string &name) const {
        Effects found = run("pdftex -ini -jobname=" + name + " -progname=" + name + " *" + name + ".ini", "");
        for (const char *const key : {"setting TEXDIR", "setting LASTDIR"})
            found[key] = home_.path("home");
        std::string &console = found["console"];
        console.replace(console.find(home_.path("work")), home_.path("work").size(), home_.path("home"));
        console += "I can't find any formats.\nCheck your TEXFORMATS search path or build\n"
                   "a format file using the \"Build format\" command\nunder the \"File\" Menu.\n";
        found["windows"] = "command line\n";
        found["formats"] = "";
        found.erase("recent");
        return found;
    }
    // Every key of the table that something answers to.
    static std::string keys() {
        std::string text = "\nKEYS\n\n";
        for (const auto &[key, place] :
             std::vector<std::pair<char, std::string>>{{'O', "File > Typeset File..."},
                                                       {'T', "File > Typeset"},
                                                       {'R', "File > Repeat Last Command"},
                                                       {'D', "File > View"},
                                                       {'P', "File > View"},
                                                       {'S', "File > Save Console As..."},
                                                       {'Q', "File > Quit"},
                                                       {'J', "File > Show in Viewer"},
                                                       {'E', "Options > e-TeX Mode"},
                                                       {'C', "Edit > Copy"},
                                                       {'K', "Edit > Clear Console"},
                                                       {'8', "Edit > 8-bit Output"},
                                                       {'F', "Edit > Find in Console..."},
                                                       {'L', "Edit > Problems"},
                                                       {'N', "Edit > Next Problem"},
                                                       {'U', "Edit > Previous Problem"},
                                                       {'B', "Tools > BibTeX..."},
                                                       {'I', "Tools > MakeIndex..."},
                                                       {'M', "Tools > MetaPost..."}})
            text += "Ctrl+" + std::string(1, key) + "          " + place + "\n";
        return text + "Escape, Ctrl+.  cancel a run\n"
                      "F3, Shift+F3    the next and the previous hit in the console\n"
                      "Ctrl++, Ctrl+-  larger and smaller text in the console; Ctrl+0 as it was\n\n";
    }
    Effects tools_menu(int item) const {
        switch (item) {
        case 1:
            return {{"chooser", "Select an aux file"}};
        case 2:
            return with(missing("dvips"), {{"windows", "dvips run\n"}});
        case 3:
            return {{"windows", "makeindex options\n"}};
        case 4:
            return {{"chooser", "Select a mp file"}};
        case 5:
            return with(missing("mpost"), {{"windows", "command line\n"}});
        case 7:
            return {{"chooser", "Select a Postscript file"}};
        case 9:
            return missing("dvipdfm");
        default:
            return {{"not expected", ""}};
        }
    }
    Effects recent_menu(int item) {
        switch (item) {
        case 1:
            return typeset("a.tex");
        case 2:
            return typeset("b.tex");
        case file_count + 2:
            return {{"useFullPaths", "1"},
                    {"setting USEFULLPATHS", "1"},
                    {"recent", home_.mac("work/a.tex") + "\n" + home_.mac("work/b.tex") +
                                   "\n-\nShow file names only\nRemove all items\n"}};
        case file_count + 3:
            return {{"recent", ""}};
        default: // the separator, and numbers that no item has
            return {};
        }
    }
    // Returns the effects that a choice should have. For an unknown choice it is one that no choice can have.
    Effects expected(int menu, int item) {
        const std::string number = std::to_string(item);
        switch (menu) {
        case menu_apple:
            return item == 1 ? Effects{{"windows", "about box\n"}} : Effects{{"events", "aevtquit\n"}};
        case menu_file:
            return file_menu(item);
        case menu_format: {
            const std::string format = item == 1 ? "plain" : "latex";
            return {{"format_name", format}, {"setting PDFTEXFORMAT", format}, {"mark 130 " + number, "on"}};
        }
        case menu_options:
            return options_menu(item);
        case menu_edit:
            return item == 4    ? Effects{{"copies", "1"}}
                   : item == 6  ? Effects{{"console", ""}, {"setting TEXWINDOW", "45 10 300 600"}}
                   : item == 9  ? Effects{{"windows", "font size\n"}}
                   : item == 11 ? switched("use8bit", "USE8BIT", "133 11")
                   : item == 16 ? Effects{{"finds", "1"}}
                   : item == 17 ? Effects{{"problem windows", "1"}} // There is no problem to go to.
                   : item >= 18 ? Effects{}
                                : Effects{{"not expected", ""}};
        case menu_build:
            return item == 3 ? Effects{{"windows", "command line\n"}}
                             : built(item == 1 ? "pdftex" : "pdflatex");
        case menu_tool:
            return tools_menu(item);
        case menu_config:
            return item == 1 ? opened("editor.app", "config.ps") : Effects{};
        case menu_transfer:
            return item == 1 ? Effects{{"chooser", "Choose an application"}} : Effects{};
        case menu_delete:
        case menu_change: // they have no items yet
            return {};
        case menu_info: {
            static const char *const names[] = {"dvips", "makeindex", "metapost", "pdftex"};
            return {{"console", std::string(old_text) + names[item - 1] + "_info\n"}};
        }
        case menu_help:
            if (item == 4)
                return {{"windows", "package manual\n"}};
            return {{"console", old_text + (item == 1   ? std::string("help_manual\n")
                                            : item == 2 ? keys()
                                                        : std::string("help_messages\n"))}};
        case menu_font: {
            const std::string font = item == 1 ? "Courier" : "Helvetica";
            return {{"oldItem", number}, {"setting FONTNAME", font}, {"mark 139 " + number, "on"}};
        }
        case menu_recent:
            return recent_menu(item);
        case menu_mpformat:
            return item == 1 ? Effects{{"setting MPTEXFORMAT", "1"}}
                             : Effects{{"mp_format_type", "2"},
                                       {"setting MPTEXFORMAT", "2"},
                                       {"mark 143 1", ""},
                                       {"mark 143 2", "on"}};
        default:
            return {{"not expected", ""}};
        }
    }
};

std::vector<Choice> every_choice() {
    std::vector<Choice> all;
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        // In a menu that the shell fills, the test chooses the items that it made itself, and in the Recent
        // files menu also their neighbours.
        const std::int16_t first = row.item                  ? row.item
                                   : row.menu == menu_recent ? std::int16_t{0}
                                                             : std::int16_t{1};
        const std::int16_t last = row.item                  ? row.item
                                  : row.menu == menu_recent ? std::int16_t{file_count + 4}
                                                            : std::int16_t{2};
        for (std::int16_t item = first; has_effect(row) && item <= last; item++)
            for (const int pdftex : {0, 1})
                all.emplace_back(row.menu, item, pdftex);
    }
    return all;
}

TEST_P(EveryCommand, DoesWhatItsRowSaysAndNothingElse) {
    const auto [menu, item, pdftex] = GetParam();
    if (pdftex) {
        usePdfTeX = 1;
        CheckMenuItem(optionsMenu, 2, 0);
    }
    const Effects wanted = expected(menu, item);
    EXPECT_EQ(choose(menu, item), wanted);
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryCommand, ::testing::ValuesIn(every_choice()), [](const auto &info) {
    return "Menu" + std::to_string(std::get<0>(info.param)) + "Item" +
           std::to_string(std::get<1>(info.param)) + (std::get<2>(info.param) ? "WithPdfTeX" : "WithTeX");
});

TEST_F(Commands, ASecondChoiceOfASwitchTurnsItOffAgain) {
    const struct {
        std::int16_t menu, item;
        const char *name;
    } switches[] = {{menu_options, 3, "addSpecials"}, {menu_options, 4, "doRecord"},
                    {menu_options, 7, "doView"},      {menu_options, 8, "doDebug"},
                    {menu_options, 16, "useETeX"},    {menu_options, 17, "parseFirstLine"},
                    {menu_edit, 11, "use8bit"}};
    for (const auto &row : switches) {
        EXPECT_EQ(choose(row.menu, row.item)[row.name], "1") << row.name;
        const Effects off = choose(row.menu, row.item);
        EXPECT_EQ(off.at(row.name), "0") << row.name;
        EXPECT_EQ(off.at("mark " + std::to_string(row.menu) + " " + std::to_string(row.item)), "")
            << row.name;
    }
}

TEST_F(Commands, AChoiceOutsideTheRecentFilesMenuChangesNothing) {
    for (const int item : {-1, 0, file_count + 1, file_count + 4, 100}) {
        choose_recent(static_cast<std::int16_t>(item));
        EXPECT_EQ(CountMenuItems(recentMenu), file_count + 3) << item;
    }
    EXPECT_TRUE(recorded_->windows.empty());
    DeleteAllRecentItems();
    for (const int item : {-2, -1, 0, 1})
        choose_recent(static_cast<std::int16_t>(item));
    EXPECT_EQ(useFullPaths, 0);
    EXPECT_TRUE(recorded_->windows.empty());
}

TEST_F(Commands, ARecentFileThatIsGoneIsRemovedOnlyWhenThePersonAgrees) {
    std::filesystem::remove(work("a.tex"));
    answer_windows(0);
    choose_recent(1);
    EXPECT_EQ(CountMenuItems(recentMenu), file_count + 3);
    answer_windows(1);
    choose_recent(1);
    EXPECT_EQ(CountMenuItems(recentMenu), file_count + 2);
    EXPECT_EQ(RecentFile[1].view(), work("b.tex"));
}

TEST_F(Commands, ASetUpThatIsNotThereIsSaid) {
    setup.copy(home_.path("none.app"));
    EXPECT_EQ(choose(menu_options, 9),
              (Effects{{"console", "old\nI can't find setpaths. It should be in the binaries folder.\n"}}));
}

TEST_F(Commands, AGreyItemHasAReason) {
    const auto reason = [](std::int16_t menu, std::int16_t item) {
        const char *const why = why_grey(*find_command(menu, item));
        return std::string(why ? why : "");
    };
    EXPECT_EQ(reason(menu_file, file_view_pdf), "");
    mypdffile.clear();
    EXPECT_EQ(reason(menu_file, file_view_pdf), "There is no PDF file beside the current document.");
    EXPECT_EQ(reason(menu_edit, edit_undo), "The text of the console cannot be changed.");
    forceQuit = 1;
    EXPECT_EQ(reason(menu_file, file_typeset), "After a serious error Quillon can only be quit.");
    forceQuit = 0;
    // Every item that can be grey says why.
    for (int i = 0; i < command_count; i++) {
        if (command_table[i].enabled) {
            for (BoundedBuffer *const path :
                 {static_cast<BoundedBuffer *>(&dotexfile), static_cast<BoundedBuffer *>(&lastcommand),
                  static_cast<BoundedBuffer *>(&mybibfile), static_cast<BoundedBuffer *>(&mydvifile),
                  static_cast<BoundedBuffer *>(&mypsfile), static_cast<BoundedBuffer *>(&mypdffile)})
                path->clear();
            EXPECT_NE(why_grey(command_table[i]), nullptr) << command_table[i].title;
        }
    }
}

TEST_F(Commands, AnotherFontTakesTheMarkFromTheOneBefore) {
    choose(menu_font, 1);
    EXPECT_EQ(
        choose(menu_font, 2),
        (Effects{
            {"oldItem", "2"}, {"setting FONTNAME", "Helvetica"}, {"mark 139 1", ""}, {"mark 139 2", "on"}}));
}

TEST_F(Commands, ARowWithoutAProcedureIsNeverEnabled) {
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        if (!has_effect(row) && !row.submenu) {
            EXPECT_EQ(IsMenuItemEnabled(GetMenuHandle(row.menu), row.item), 0) << row.menu << " " << row.item;
        }
    }
    EXPECT_EQ(IsMenuItemEnabled(fileMenu, 10), 1);
}

TEST_F(Commands, ARowWithoutAProcedureDoesNothing) {
    for (int i = 0; i < command_count; i++)
        if (!has_effect(command_table[i])) {
            EXPECT_EQ(choose(command_table[i].menu, command_table[i].item), Effects{});
        }
}

} // namespace
} // namespace quillon
