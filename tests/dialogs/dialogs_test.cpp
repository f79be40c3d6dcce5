// The dialogs, filled as a person fills them: what they store, what they hand on, and what OK refuses.
#include <gtest/gtest.h>

#include "console/window.h"
#include "dialogs/applications.h"
#include "dialogs/command_line.h"
#include "dialogs/dialog.h"
#include "dialogs/dvips.h"
#include "dialogs/message_windows.h"
#include "dialogs/options.h"
#include "front/dialogs.h"
#include "settings/settings.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

using Texts = std::map<int, std::string>;

// What the next dialog is given before its button is pressed, and what it held before that.
Texts given, held;
std::vector<int> ticked, pressed_before;
int beeps, selected;
Front watching;

class Dialogs : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\n");
        space_char = 31;
        given.clear();
        held.clear();
        ticked.clear();
        pressed_before.clear();
        beeps = selected = 0;
        watching = *front;
        watching.beep = [] { beeps++; };
        watching.select_control = [](Dialog *, std::int16_t control) { selected = control; };
        front = &watching;
        front_->fills = [](DialogRef window) {
            BoundedString<2048> text;
            for (std::int16_t control = 1; control <= 12; control++)
                if (GetControlText(window, control, text))
                    held[control] = text.c_str();
            for (const auto &[control, value] : given)
                SetControlText(window, static_cast<std::int16_t>(control), value.c_str());
            for (const int control : ticked)
                SetControlValue(window, static_cast<std::int16_t>(control), 1);
            for (const int control : pressed_before)
                hit_control(window, static_cast<std::int16_t>(control));
            for (std::int16_t control = 1; control <= 12; control++)
                if (GetControlText(window, control, text))
                    held[100 + control] = text.c_str();
        };
    }
    void TearDown() override {
        space_char = 202;
        for (const char **const application : {&editor, &viewpsexe, &pdfview}) {
            std::free(const_cast<char *>(*application));
            *application = nullptr;
        }
        format_folder.clear();
    }
    static std::string stored(const char *key) {
        char *const value = myget_string(key);
        const std::string text = value ? value : "(none)";
        std::free(value);
        return text;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Dialogs, TheOptionsOfDvipsAreStoredAsTyped) {
    given = {{3, " -Ppdf  -t a4 "}};
    EXPECT_EQ(GetAllDvipsOptions(), 1);
    EXPECT_EQ(stored("DVIPS_OPTION_STR"), " -Ppdf  -t a4 ");
    EXPECT_EQ(GetAllDvipsOptions(), 1);
    EXPECT_EQ(held[3], " -Ppdf  -t a4 ");
}

TEST_F(Dialogs, ClearedOptionsOfDvipsAreNotProposed) {
    set_str_resource("DVIPS_OPTION_STR", "-Ppdf");
    given = {{3, ""}};
    EXPECT_EQ(GetAllDvipsOptions(), 1);
    BoundedString<512> options;
    stored_dvips_options(options);
    EXPECT_TRUE(options.empty());
}

TEST_F(Dialogs, AnOptionStringOf511BytesFitsAndOneMoreIsRefused) {
    given = {{3, std::string(511, 'x')}};
    EXPECT_EQ(GetAllDvipsOptions(), 1);
    EXPECT_EQ(stored("DVIPS_OPTION_STR"), std::string(511, 'x'));
    given = {{3, std::string(512, 'y')}};
    EXPECT_EQ(GetAllDvipsOptions(), 0);
    EXPECT_EQ(stored("DVIPS_OPTION_STR"), std::string(511, 'x'));
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(selected, 3);
}

TEST_F(Dialogs, ACancelledDialogChangesNothing) {
    front_->pressed = 2;
    given = {{3, "new"}, {4, "new"}};
    ticked = {4, 5};
    EXPECT_EQ(GetAllDvipsOptions(), 0);
    EXPECT_EQ(GetBibtex8OptionString(), 0);
    EXPECT_EQ(pdftex_options(), 0);
    get_fontsize();
    SetTools();
    for (const char *const key :
         {"DVIPS_OPTION_STR", "BIBTEXOPTIONS", "CSFFILE", "PDFTEXMODE", "FONTSIZE", "Editor"})
        EXPECT_EQ(stored(key), "(none)") << key;
}

TEST_F(Dialogs, ADvipsRunTakesFileOptionsAndOutput) {
    BoundedString<256> dvi;
    BoundedString<257> out, options;
    dvi.copy(home_.file("work/paper.dvi"));
    options.copy("-Ppdf");
    given = {{6, "out.ps"}};
    EXPECT_EQ(GetDvipsOptions(dvi, out, options), 1);
    EXPECT_EQ(held[4], "-Ppdf");
    EXPECT_EQ(held[5], home_.path("work/paper.dvi"));
    EXPECT_EQ(out.view(), "out.ps");
    EXPECT_EQ(options.view(), "-Ppdf");
    EXPECT_EQ(stored("DVIPS_OPTION_STR"), "(none)");
}

TEST_F(Dialogs, ADvipsRunWithoutAFileWaitsForOne) {
    BoundedString<256> dvi;
    BoundedString<257> out, options;
    dvi.copy(home_.path("work/gone.dvi"));
    EXPECT_EQ(GetDvipsOptions(dvi, out, options), 0);
    EXPECT_EQ(held[5], "");
    EXPECT_EQ(beeps, 0); // the click is ignored
    front_->answer = home_.file("work/other.dvi");
    pressed_before = {3};
    EXPECT_EQ(GetDvipsOptions(dvi, out, options), 1);
    EXPECT_EQ(front_->prompt, "Select a dvi file");
    EXPECT_EQ(dvi.view(), home_.path("work/other.dvi"));
}

TEST_F(Dialogs, TheStoredOptionsOfMakeIndex) {
    BoundedString<1024> options;
    home_.preferences("MICOMPRESS=1\nMIRANGE=1\nMIGERMAN=0\nMIPAGESTRING=7\nMISTYLE=my.ist\n");
    SetMakeIndexOptions(options);
    EXPECT_EQ(options.view(), " -c -r -p 7 -s my.ist");
    home_.preferences("");
    SetMakeIndexOptions(options);
    EXPECT_EQ(options.view(), "");
}

struct IndexRun {
    BoundedString<256> folder;
    BoundedString<1024> files, options;
    BoundedString<257> output, style, transcript;
    int ask() { return GetMakeIndexOptions(folder, files, output, style, transcript, options); }
};

TEST_F(Dialogs, AMakeIndexRunTakesEveryField) {
    IndexRun run;
    front_->answer = home_.file("work/a.idx");
    pressed_before = {3};
    given = {{8, "7"}, {9, "my.ist"}, {10, "a.ind"}, {11, "a.ilg"}};
    ticked = {4, 7};
    ASSERT_EQ(run.ask(), 1);
    EXPECT_EQ(front_->prompt, "Select an idx file");
    EXPECT_EQ(run.folder.view(), home_.path("work"));
    EXPECT_EQ(run.files.view(), " a.idx");
    EXPECT_EQ(run.options.view(), " -c -r -p 7");
    EXPECT_EQ(run.style.view(), "my.ist");
    EXPECT_EQ(run.output.view(), "a.ind");
    EXPECT_EQ(run.transcript.view(), "a.ilg");
    EXPECT_EQ(stored("MISTYLE"), "my.ist");
    EXPECT_EQ(stored("MICOMPRESS") + stored("MIGERMAN") + stored("MILETTER") + stored("MIRANGE"), "1001");
    // The starting page holds for one run.
    EXPECT_EQ(stored("MIPAGESTRING"), "(none)");
}

TEST_F(Dialogs, ManyIndexFilesKeepTheFolderOfTheFirst) {
    static std::vector<std::string> files;
    files = {home_.file("one/a.idx"), home_.file("two/b.glo")};
    for (int i = 0; i < 8; i++)
        files.push_back(home_.file("two/" + std::to_string(i) + ".idx"));
    static std::size_t next;
    next = 0;
    watching.navigate = [](const NavRequest *, BoundedBuffer &path) { return path.copy(files[next++]); };
    pressed_before = std::vector<int>(10, 3);
    IndexRun run;
    ASSERT_EQ(run.ask(), 1);
    EXPECT_EQ(run.files.view(), " a.idx b.glo 0.idx 1.idx 2.idx 3.idx 4.idx 5.idx 6.idx 7.idx");
    EXPECT_EQ(run.folder.view(), home_.path("one"));
    EXPECT_EQ(held[112], " a.idx b.glo 0.idx 1.idx 2.idx 3.idx 4.idx 5.idx 6.idx 7.idx");
}

TEST_F(Dialogs, MakeIndexWithoutAFileBeeps) {
    IndexRun run;
    EXPECT_EQ(run.ask(), 0);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(stored("MICOMPRESS"), "(none)");
}

TEST_F(Dialogs, TheOptionsOfBibtex8) {
    EXPECT_EQ(GetBibtex8OptionString(), 0); // both fields are empty
    EXPECT_EQ(beeps, 1);
    given = {{4, "88591lat.csf"}};
    EXPECT_EQ(GetBibtex8OptionString(), 1);
    EXPECT_EQ(stored("CSFFILE"), "88591lat.csf");
    EXPECT_EQ(stored("BIBTEXOPTIONS"), "(none)");
    given = {{3, "-B"}, {4, ""}};
    EXPECT_EQ(GetBibtex8OptionString(), 1);
    EXPECT_EQ(held[4], "88591lat.csf");
    EXPECT_EQ(stored("BIBTEXOPTIONS"), "-B");
    EXPECT_EQ(stored("CSFFILE"), "(none)");
}

TEST_F(Dialogs, TheOptionsOfPdftex) {
    ticked = {5};
    EXPECT_EQ(pdftex_options(), 1);
    EXPECT_EQ(held[4], "ljfour");
    EXPECT_EQ(stored("PDFTEXMODE"), "ljfour");
    EXPECT_EQ(stored("PDFMAKEFONT"), "1");
    given = {{4, ""}};
    EXPECT_EQ(pdftex_options(), 0);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(selected, 4);
}

TEST_F(Dialogs, AStoredEmptyModeIsShownEmpty) {
    home_.preferences("PDFTEXMODE=\n");
    given = {{4, "x"}};
    EXPECT_EQ(pdftex_options(), 1);
    EXPECT_EQ(held[4], "");
}

TEST_F(Dialogs, OnlyTheApplicationsThatWereChosenChange) {
    home_.preferences("SPACECHAR=31\nEditor=/e/old\nPDFVIEW=/p/old\n");
    front_->answer = home_.silent_bundle("My Viewer", "VIEW");
    pressed_before = {6};
    SetTools();
    EXPECT_EQ(front_->prompt, "Find a PDF viewer");
    EXPECT_EQ(held[110], home_.path("My Viewer.app"));
    EXPECT_EQ(stored("PDFVIEW"), home_.path("My\x1FViewer.app"));
    EXPECT_EQ(std::string(pdfview), home_.path("My\x1FViewer.app"));
    EXPECT_EQ(stored("Editor"), "/e/old");
    EXPECT_EQ(stored("VIEWPS"), "(none)");
}

TEST_F(Dialogs, EachButtonOfTheApplicationsAsksForItsOwn) {
    front_->answer = home_.silent_bundle("Any", "ANYA");
    const std::map<int, std::pair<std::string, std::string>> buttons = {
        {3, {"Find a text editor", "Editor"}},
        {4, {"Find DviView", "DVIPREVIEW"}},
        {5, {"Find PsGlance", "VIEWPS"}},
        {6, {"Find a PDF viewer", "PDFVIEW"}}};
    for (const auto &[button, asked] : buttons) {
        pressed_before = {button};
        SetTools();
        EXPECT_EQ(front_->prompt, asked.first);
        EXPECT_EQ(stored(asked.second.c_str()), home_.path("Any.app"));
        EXPECT_EQ(held[104 + button], home_.path("Any.app"));
    }
    EXPECT_EQ(ed_creator, four("ANYA"));
}

TEST_F(Dialogs, ACommandLineAndItsFolder) {
    BoundedString<256> folder;
    home_.preferences("TEXDIR=" + home_.path("work") + "\n");
    given = {{4, "pdftex x"}};
    ASSERT_EQ(GetCommandLine(nullptr, folder), 1);
    EXPECT_EQ(held[4], "");
    EXPECT_EQ(held[5], home_.mac("work") + ":");
    EXPECT_EQ(mycommand.view(), "pdftex x");
    EXPECT_EQ(folder.view(), home_.path("work"));
}

TEST_F(Dialogs, AProposedCommandBeginsInTheFolderOfFormats) {
    BoundedString<256> folder;
    format_folder.copy(home_.folder("formats"));
    ASSERT_EQ(GetCommandLine("proposed", folder), 1);
    EXPECT_EQ(held[4], "proposed");
    EXPECT_EQ(folder.view(), home_.path("formats"));
    EXPECT_EQ(mycommand.view(), "proposed");
}

TEST_F(Dialogs, ARemovedFolderMakesTheCommandLineBeginAtHome) {
    BoundedString<256> folder;
    home_.preferences("TEXDIR=" + home_.path("gone") + "\n");
    given = {{4, "x"}};
    ASSERT_EQ(GetCommandLine(nullptr, folder), 1);
    EXPECT_EQ(folder.view(), home_.path("home"));
}

TEST_F(Dialogs, AnotherFolderIsChosenForTheCommandLine) {
    BoundedString<256> folder;
    front_->answer = home_.folder("elsewhere");
    pressed_before = {3};
    ASSERT_EQ(GetCommandLine("x", folder), 1);
    EXPECT_EQ(folder.view(), home_.path("elsewhere"));
    EXPECT_EQ(held[105], home_.mac("elsewhere") + ":");
}

TEST_F(Dialogs, AnEmptyCommandLineIsRefused) {
    BoundedString<256> folder;
    mycommand.copy("before");
    EXPECT_EQ(GetCommandLine(nullptr, folder), 0);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(selected, 4);
    given = {{4, std::string(257, 'x')}};
    EXPECT_EQ(GetCommandLine(nullptr, folder), 0);
    EXPECT_EQ(mycommand.view(), "before");
    given = {{4, std::string(256, 'x')}};
    EXPECT_EQ(GetCommandLine(nullptr, folder), 1);
}

TEST_F(Dialogs, ACommandLineWithoutAFolderIsIgnoredWithoutABeep) {
    BoundedString<256> folder;
    const auto fill = front_->fills;
    front_->fills = [](DialogRef) { unix_dir.clear(); };
    EXPECT_EQ(GetCommandLine("x", folder), 0);
    EXPECT_EQ(beeps, 0);
    front_->fills = fill;
}

TEST_F(Dialogs, AFontSizeBeginsWithANumber) {
    static int shown_size;
    watching.text_font = [](const char *, int size) { shown_size = size; };
    given = {{3, "12pt"}};
    get_fontsize();
    EXPECT_EQ(stored("FONTSIZE"), "12pt");
    EXPECT_EQ(shown_size, 12);
    given = {{3, "pt"}};
    get_fontsize();
    EXPECT_EQ(held[3], "12pt");
    EXPECT_EQ(stored("FONTSIZE"), "12pt");
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(selected, 3);
}

TEST_F(Dialogs, TheCommandKeyIsTakenEitherWay) {
    given = {{3, "Key"}};
    GetCmdKey();
    EXPECT_EQ(command_key_str.view(), "Key");
    given = {{3, "Other"}};
    front_->pressed = 2;
    GetCmdKey();
    EXPECT_EQ(command_key_str.view(), "Other");
}

TEST_F(Dialogs, TheTextCursorIsShownOverTheTextFields) {
    static CursorShape shape;
    watching.set_cursor = [](CursorShape now) { shape = now; };
    watching.control_bounds = [](Dialog *, std::int16_t control, Rect *bounds) {
        *bounds = {static_cast<std::int16_t>(control * 10), 5, static_cast<std::int16_t>(control * 10 + 8),
                   50};
        return 1;
    };
    for (int i = 0; i < dialog_row_count; i++) {
        const DialogRef window = open_dialog(dialog_rows[i].number);
        for (std::int16_t control = 1; control <= 12; control++) {
            const bool text = kind_of_control(dialog_rows[i].window, control) == text_control;
            DialogEvent moved = {
                four("mous"), kEventMouseMoved, 0, {static_cast<std::int16_t>(control * 10 + 4), 20}};
            EXPECT_EQ(dialogEventHandler(window, &moved), 1);
            EXPECT_EQ(shape == iBeamCursor, text) << dialog_rows[i].window << " " << control;
        }
        DisposeWindow(window);
    }
}

TEST_F(Dialogs, EveryRowNamesAWindowAndItsTextFields) {
    for (int i = 0; i < dialog_row_count; i++) {
        const DialogRow &row = dialog_rows[i];
        ASSERT_TRUE(is_dialog(row.window)) << row.window;
        for (int j = 0; j < dialog_control_count; j++) {
            const DialogControl &control = dialog_controls[j];
            if (std::string(control.window) != row.window)
                continue;
            bool named = false;
            for (const TextField &field : row.fields)
                named = named || field.control == control.control;
            EXPECT_EQ(named, control.kind == text_control) << row.window << " " << control.control;
        }
    }
}

TEST_F(Dialogs, MessageWindowsAnswerOkAndCancel) {
    aboutApp();
    longName();
    EXPECT_EQ(front_->windows, (std::vector<std::string>{"about box", "LongName"}));
    EXPECT_EQ(run_message("no such window"), 0);
}

TEST_F(Dialogs, TheWaitSheetComesAndGoes) {
    static int shown;
    watching.show_sheet = [](Dialog *, int show) { shown = show; };
    WaitForScript();
    EXPECT_EQ(shown, 1);
    EndWait();
    EXPECT_EQ(shown, 0);
    EndWait();
}

} // namespace
} // namespace quillon
