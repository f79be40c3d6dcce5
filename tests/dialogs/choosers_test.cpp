#include "dialogs/choosers.h"

#include "console/window.h"
#include "dialogs/message_windows.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Choosers : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;
    BoundedString<1024> name_;
    std::int16_t vref_ = 0;
    std::int32_t dir_id_ = 0;
    using List = std::vector<std::string>;

    Choosers() { CreateNavUPP(); }
    FSSpec spec(const std::string &below) {
        FSSpec made;
        EXPECT_EQ(FSPathMakeSpec(home_.path(below).c_str(), &made), noErr);
        return made;
    }
    int shown(const std::string &below) {
        const FSSpec location = spec(below);
        return myFilterProc(&location);
    }
    int app_shown(const std::string &below) {
        const FSSpec location = spec(below);
        return myAppFilterProc(&location);
    }
    std::string folder() {
        BoundedString<1024> path;
        get_unixpath_by_dirid(vref_, dir_id_, path);
        return path.c_str();
    }
};

} // namespace

TEST_F(Choosers, ExtensionFilterShowsItsFilesAndFolders) {
    home_.file("work/a.aux");
    home_.file("work/a.tex");
    home_.folder("work/folder");
    EXPECT_EQ(nav_get_file(name_, &vref_, &dir_id_, ".aux", nullptr, 0, "Select an aux file"), 0);
    EXPECT_EQ(front_->prompt, "Select an aux file");
    EXPECT_EQ(front_->filters, (List{"All files with .aux extension", "All files"}));
    EXPECT_EQ(front_->initial_filter, 0);
    EXPECT_EQ(selector, 1);
    EXPECT_EQ(shown("work/a.aux"), 1);
    EXPECT_EQ(shown("work/a.tex"), 0);
    EXPECT_EQ(shown("work/folder"), 1);
    EXPECT_EQ(myFilterProc(nullptr), 1);
    NavMenuItem all;
    all.creator = four("4000");
    myEventProc(&all, nullptr);
    EXPECT_EQ(selector, 4);
    EXPECT_EQ(shown("work/a.tex"), 1);
}

TEST_F(Choosers, FilterPickedInTheChooserTakesEffectAtOnce) {
    home_.file("work/a.aux");
    home_.file("work/b.tex");
    front_->meanwhile = [](const NavRequest &request) {
        request.filter_picked(&request.filters[request.filter_count - 1]);
    };
    nav_get_file(name_, &vref_, &dir_id_, ".aux", ".idx", 1, "p");
    EXPECT_EQ(front_->filters, (List{"All files with .aux extension", "All files with .idx extension",
                                     "All text files", "All files"}));
    EXPECT_EQ(shown("work/b.tex"), 1);
}

TEST_F(Choosers, SecondExtensionAndTextFilters) {
    home_.file("work/a.glo", std::string("\0\1", 2));
    home_.file("work/t", "text");
    nav_get_file(name_, &vref_, &dir_id_, nullptr, ".glo", 1, "p");
    EXPECT_EQ(selector, 2);
    EXPECT_EQ(front_->initial_filter, 0);
    EXPECT_EQ(shown("work/a.glo"), 1);
    EXPECT_EQ(shown("work/t"), 0);
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 1, "p");
    EXPECT_EQ(selector, 3);
    EXPECT_EQ(shown("work/a.glo"), 0);
    EXPECT_EQ(shown("work/t"), 1);
    // Without a wish the filter stays as it was, but here that filter is not offered.
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p");
    EXPECT_EQ(selector, 3);
    EXPECT_EQ(front_->filters, List{"All files"});
    EXPECT_EQ(front_->initial_filter, 0);
}

TEST_F(Choosers, WithoutANameAndTexdirTheChooserOpensAtTheDefaultPlace) {
    home_.preferences("");
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p");
    EXPECT_EQ(front_->start_folder, "(null)");
    EXPECT_EQ(front_->start_name, "(null)");
    home_.preferences("TEXDIR=/no/such/folder\n");
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p");
    EXPECT_EQ(front_->start_folder, "(null)");
    home_.preferences("TEXDIR=" + home_.path("data") + "\n");
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p");
    EXPECT_EQ(front_->start_folder, home_.path("data"));
}

TEST_F(Choosers, NameSaysWhereToStart) {
    home_.file("work/a b/f.tex");
    name_.copy(home_.path("work/a\xca"
                          "b/f.tex"));
    nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p");
    EXPECT_EQ(front_->start_folder, home_.path("work/a b"));
    EXPECT_EQ(front_->start_name, "f.tex");
}

TEST_F(Choosers, ChosenFileComesBackWithItsBlanksReplaced) {
    front_->answer = home_.file("work/a b.tex");
    ASSERT_EQ(nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p"), 1);
    EXPECT_EQ(name_.view(), "a\xca"
                            "b.tex");
    EXPECT_EQ(folder(), home_.path("work"));
}

TEST_F(Choosers, FileThatCannotBeUsedIsRefusedByName) {
    front_->answer = "/no-such-file-in-the-root-folder";
    EXPECT_EQ(nav_get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p"), 0);
    EXPECT_EQ(front_->printed, "I can't use /no-such-file-in-the-root-folder.\n");
}

TEST_F(Choosers, NameOfThirtyCharactersIsRefusedWithTheLongNameWindow) {
    front_->answer = home_.file("work/" + std::string(29, 'n'));
    EXPECT_EQ(get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p"), 1);
    // Characters count, of however many bytes.
    std::string accents;
    for (int i = 0; i < 29; i++)
        accents += "\xC3\xA9";
    front_->answer = home_.file("work/" + accents);
    EXPECT_EQ(get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p"), 1);
    EXPECT_TRUE(front_->windows.empty());
    front_->answer = home_.file("work/" + std::string(30, 'n'));
    name_.clear();
    EXPECT_EQ(get_file(name_, &vref_, &dir_id_, nullptr, nullptr, 0, "p"), 0);
    EXPECT_EQ(front_->windows, List{"LongName"});
    name_.clear();
    EXPECT_EQ(get_input_file(name_, nullptr, nullptr, 0, "p"), 0);
    EXPECT_TRUE(name_.empty());
    EXPECT_EQ(front_->windows.size(), 2u);
}

TEST_F(Choosers, InputFileIsAUnixPath) {
    front_->answer = home_.file("work/in put.tex");
    EXPECT_EQ(get_input_file(name_, ".tex", nullptr, 0, "p"), 1);
    EXPECT_EQ(name_.view(), home_.path("work/in\xca"
                                       "put.tex"));
    front_->answer.clear();
    EXPECT_EQ(get_input_file(name_, ".tex", nullptr, 0, "p"), 0);
    EXPECT_TRUE(name_.empty());
    BoundedString<8> small;
    front_->answer = home_.path("work/in put.tex");
    EXPECT_EQ(get_input_file(small, ".tex", nullptr, 0, "p"), 0);
    EXPECT_EQ(front_->printed, "IO Error on file in\xca"
                               "put.tex\n");
}

TEST_F(Choosers, OutputFileNeedNotExist) {
    home_.preferences("TEXDIR=" + home_.path("work") + "\n");
    front_->answer = home_.path("work/new.txt");
    EXPECT_EQ(put_output_file(name_, "Save as"), 1);
    EXPECT_EQ(name_.view(), home_.path("work/new.txt"));
    EXPECT_EQ(front_->start_folder, home_.path("work"));
    EXPECT_EQ(front_->kind, navPutFile);
    front_->answer.clear();
    EXPECT_EQ(put_output_file(name_, "Save as"), 0);
    EXPECT_TRUE(name_.empty());
}

TEST_F(Choosers, WorkingFolderIsAUnixPath) {
    front_->answer = home_.folder("work/a b");
    EXPECT_EQ(get_working_folder(name_, "p"), 1);
    EXPECT_EQ(name_.view(), home_.path("work/a\xca"
                                       "b"));
    EXPECT_EQ(front_->kind, navChooseFolder);
    front_->answer = "/tmp";
    EXPECT_EQ(get_working_folder(name_, "p"), 1);
    EXPECT_EQ(name_.view(), "/tmp");
}

TEST_F(Choosers, AnySignatureAcceptsApplicationsAndNoOtherFile) {
    home_.file("work/app", "#!/bin/sh\n");
    ::chmod(home_.path("work/app").c_str(), 0755);
    home_.file("work/text", "text");
    home_.folder("work/x.app");
    front_->answer = home_.path("work/app");
    EXPECT_STREQ(GetAppByDialog("Find it", four("****"), 0), home_.path("work/app").c_str());
    EXPECT_EQ(gSig, four("****"));
    EXPECT_EQ(front_->kind, navChooseApplication);
    EXPECT_EQ(app_shown("work/app"), 1);
    EXPECT_EQ(app_shown("work/text"), 0);
    EXPECT_EQ(app_shown("work/x.app"), 1);
    EXPECT_EQ(myAppFilterProc(nullptr), 1);
    front_->answer = home_.path("work/x.app/");
    EXPECT_STREQ(GetAppByDialog("Find it", four("****"), 0), home_.path("work/x.app").c_str());
    front_->answer.clear();
    EXPECT_EQ(GetAppByDialog("Find it", four("****"), 0), nullptr);
}

TEST_F(Choosers, SignaturesAreComparedWithTheCreator) {
    home_.file("work/app", "#!/bin/sh\n");
    ::chmod(home_.path("work/app").c_str(), 0755);
    GetAppByDialog("p", four("ABCD"), 0);
    EXPECT_EQ(app_shown("work/app"), 0);
    GetAppByDialog("p", four("ABCD"), four("????"));
    EXPECT_EQ(app_shown("work/app"), 1);
    GetAppByDialog("p", four("????"), 0);
    EXPECT_EQ(app_shown("work/app"), 1);
}

TEST_F(Choosers, SignatureOfFourNulsIsOneToo) {
    home_.file("work/x.app/Contents/PkgInfo", std::string("APPL\0\0\0\0", 8));
    home_.file("work/short.app/Contents/PkgInfo", "APPL123");
    EXPECT_EQ(IsApp(home_.path("work/x.app").c_str()), 1);
    EXPECT_EQ(IsApp(home_.path("work/short.app").c_str()), 0);
    EXPECT_EQ(IsApp(""), 0);
    EXPECT_EQ(IsApp(nullptr), 0);
}

TEST_F(Choosers, WhileTheChooserIsOpenOnlyRedrawingAndActivatingAreServed) {
    static int activated, updated;
    static Front counting;
    counting = *front;
    counting.text_focus = [](int, int active) { activated += active == 1; };
    front = &counting;
    counting.text_update = [](int) { updated++; };
    activated = updated = 0;
    EventRecord event = {};
    theConsole = reinterpret_cast<WindowRef>(&event); // the console has a window
    event.what = activateEvt;
    event.modifiers = activeFlag;
    myEventProc(nullptr, &event);
    EXPECT_EQ(activated, 1);
    event.what = updateEvt;
    myEventProc(nullptr, &event);
    EXPECT_EQ(updated, 1);
    event.what = keyDown;
    event.message = 'x';
    const std::string before = front_->printed;
    myEventProc(nullptr, &event);
    EXPECT_EQ(front_->printed, before);
    EXPECT_EQ(activated, 1);
    theConsole = nullptr;
}

TEST_F(Choosers, AnswerOfTheDeleteWindowIsHandedOn) {
    EXPECT_EQ(ConfirmDelete(), 1);
    front_->pressed = 2;
    EXPECT_EQ(ConfirmDelete(), 0);
    EXPECT_EQ(front_->windows, (std::vector<std::string>{"ConfirmDelete", "ConfirmDelete"}));
}
