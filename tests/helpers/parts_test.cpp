#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "helpers/application.h"
#include "helpers/editor.h"
#include "helpers/hand_over.h"
#include "helpers/launch.h"
#include "helpers/source_place.h"
#include "helpers/terminal.h"
#include "support/temporary_home.h"

using namespace helpers;
using namespace common;
using quillon::test::in_child;
using quillon::test::TemporaryHome;

namespace {

using Words = std::vector<std::string>;

std::string program(const TemporaryHome &home, const std::string &below, const std::string &lines = "") {
    const std::string path = home.file(below, "#!/bin/sh\n" + lines);
    EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
    return path;
}

class Helpers : public testing::Test {
  protected:
    void SetUp() override {
        path_ = std::getenv("PATH");
        ::setenv("PATH", home_.folder("bin").c_str(), 1);
        ::setenv("XDG_DATA_DIRS", home_.folder("shared").c_str(), 1);
        ::unsetenv("TERMINAL");
    }
    void TearDown() override {
        ::setenv("PATH", path_.c_str(), 1);
        ::unsetenv("XDG_DATA_DIRS");
        ::unsetenv("TERMINAL");
    }
    TemporaryHome home_;
    std::string path_;
};

using ApplicationsOfAPerson = Helpers;
using DesktopEntries = Helpers;
using EditorCommand = Helpers;
using HandOver = Helpers;
using SourcePlaces = Helpers;
using StartDetached = Helpers;
using Terminals = Helpers;

} // namespace

TEST_F(ApplicationsOfAPerson, AreBundlesEntriesAndPrograms) {
    const std::string path = program(home_, "bin/view");
    home_.folder("x.app/Contents/Linux");
    const std::string entry =
        home_.file("shared/applications/v.desktop", "[Desktop Entry]\nType=Application\nExec=view\n");
    EXPECT_EQ(find_application("view").kind, Kind::program);
    EXPECT_EQ(find_application("view").path, path);
    EXPECT_EQ(find_application(home_.path("x.app//")).kind, Kind::bundle);
    EXPECT_EQ(find_application(home_.path("x.app//")).path, home_.path("x.app"));
    EXPECT_EQ(find_application("v").kind, Kind::entry);
    EXPECT_EQ(find_application(entry).path, entry);
    for (const std::string &none :
         {std::string("none"), home_.path("bin"), home_.file("text"), std::string()})
        EXPECT_EQ(find_application(none).kind, Kind::none) << none;
}

TEST_F(DesktopEntries, AreFoundInTheFirstFolderThatHasThem) {
    home_.file("shared/applications/org.x.desktop");
    home_.file("shared/applications/kde/sub/a-b.desktop");
    EXPECT_EQ(find_desktop_entry("org.x"), home_.path("shared/applications/org.x.desktop"));
    EXPECT_EQ(find_desktop_entry("org.x.desktop"), home_.path("shared/applications/org.x.desktop"));
    EXPECT_EQ(find_desktop_entry("kde-sub-a-b"), home_.path("shared/applications/kde/sub/a-b.desktop"));
    EXPECT_EQ(find_desktop_entry("none"), "");
    home_.file("data/applications/org.x.desktop");
    EXPECT_EQ(find_desktop_entry("org.x"), home_.path("data/applications/org.x.desktop"));
}

TEST_F(DesktopEntries, CommentsEscapesAndEntriesOfTheBus) {
    DesktopEntry entry;
    ASSERT_TRUE(read_desktop_entry(
        home_.file("a.desktop",
                   "[Desktop Entry]\n#Exec=no\nType=Application\nName=a\\tb\\\\c\\q\\n\nExec=x\nExec=y\n"),
        entry));
    EXPECT_EQ(entry.name, "a\tb\\c\\q\n");
    EXPECT_EQ(entry.exec, "x");
    EXPECT_FALSE(entry.bus_activatable);
    ASSERT_TRUE(read_desktop_entry(
        home_.file("b.desktop", "[Desktop Entry]\nType=Application\nDBusActivatable=true\n"), entry));
    EXPECT_TRUE(entry.bus_activatable);
    EXPECT_FALSE(read_desktop_entry(home_.file("c.desktop", "[Desktop Entry]\nType=Application\n"), entry));
}

TEST_F(EditorCommand, TheLineOrNone) {
    const auto rows = common::ParseEditorRows("ed | ed | +%l 100%% %q %f | -n %f\n");
    Application editor;
    editor.kind = Kind::program;
    editor.path = "/x/ed";
    std::string problem;
    EXPECT_EQ(editor_command(editor, rows[0], "/a b", 7, problem),
              (Words{"/x/ed", "+7", "100%", "%q", "/a b"}));
    EXPECT_EQ(editor_command(editor, rows[0], "/a b", 0, problem), (Words{"/x/ed", "-n", "/a b"}));
    EXPECT_EQ(problem, "");
}

TEST_F(EditorCommand, TheDisplay) {
    const auto rows = common::ParseEditorRows("ed | ed | -d %x +%l %f\n");
    Application editor;
    editor.kind = Kind::program;
    editor.path = "/x/ed";
    std::string problem;
    const char *const display = std::getenv("DISPLAY");
    const std::string before = display ? display : "";
    ::setenv("DISPLAY", ":7", 1);
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 3, problem), (Words{"/x/ed", "-d", ":7", "+3", "/a"}));
    ::unsetenv("DISPLAY");
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 3, problem), (Words{"/x/ed", "-d", "", "+3", "/a"}));
    if (display)
        ::setenv("DISPLAY", before.c_str(), 1);
}

TEST_F(EditorCommand, AnOlderEditorIsSentToNoLine) {
    const auto rows = common::ParseEditorRows("ed | ed | +%l %f | -n %f | from=44\n");
    Application editor;
    editor.kind = Kind::program;
    std::string problem;
    const auto words_of = [&](const std::string &answer) {
        editor.path = program(home_, "bin/ed", "[ \"$1\" = --version ] && " + answer + "\n");
        std::vector<std::string> words = editor_command(editor, rows[0], "/a", 3, problem);
        words.erase(words.begin());
        return words;
    };
    const Words line = {"+3", "/a"}, none = {"-n", "/a"};
    EXPECT_EQ(words_of("echo Editor 44"), none); // the command that limits its time is missing
    ASSERT_EQ(::symlink("/usr/bin/timeout", home_.path("bin/timeout").c_str()), 0);
    EXPECT_EQ(words_of("echo Editor 44"), line);
    EXPECT_EQ(words_of("echo 'Editor 143.2 (43.2)'"), line);
    EXPECT_EQ(words_of("echo 'Editor 43.9 (43.9)'"), none);
    EXPECT_EQ(words_of("echo no number"), none);
    EXPECT_EQ(words_of("exit 1"), none);
}

TEST_F(EditorCommand, TheProgramOfADesktopEntry) {
    const auto rows = common::ParseEditorRows("ed ed2 | e | %l %f\n");
    Application editor;
    editor.kind = Kind::entry;
    editor.path = "/x/e.desktop";
    std::string problem;
    editor.entry.exec = "ed %f";
    EXPECT_TRUE(editor_command(editor, rows[0], "/a", 1, problem).empty());
    EXPECT_NE(problem.find("/x/e.desktop"), std::string::npos);
    const std::string second = program(home_, "bin/ed2");
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 1, problem)[0], second);
    const std::string first = program(home_, "bin/ed");
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 1, problem)[0], first);
    editor.entry.exec = "flatpak run ed";
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 1, problem)[0], first);
    const std::string opt = program(home_, "opt/ed2");
    editor.entry.exec = opt + " %f";
    EXPECT_EQ(editor_command(editor, rows[0], "/a", 1, problem)[0], opt);
}

TEST_F(EditorCommand, AFileWithoutAPlaceGoesLast) {
    const auto rows = common::ParseEditorRows("ed | | --line=%l\ned2 | | --there\n");
    Application editor;
    editor.kind = Kind::program;
    editor.path = "/x/ed";
    std::string problem;
    EXPECT_EQ(editor_command(editor, rows[0], "/a b", 2000000000, problem),
              (Words{"/x/ed", "--line=2000000000", "/a b"}));
    EXPECT_EQ(editor_command(editor, rows[1], "/a b", 7, problem), (Words{"/x/ed", "--there", "/a b"}));
}

TEST_F(SourcePlaces, AreNamedInTheLinksOfAPdf) {
    const std::string pdf = home_.file("work/x.pdf"), source = home_.file("work/a b.tex"),
                      chapter = home_.file("work/sub/c.tex"), other = home_.file("other/c.tex");
    EXPECT_FALSE(is_made_from(pdf, source));
    home_.file("work/x.synctex", "SyncTeX Version:1\nInput:1:" + home_.path("work") + "/./a b.tex\nx" +
                                     std::string(20000, 'y') + "Input:3:" + other +
                                     "\nInput:2:./sub/c.tex\n");
    EXPECT_TRUE(is_made_from(pdf, source));
    EXPECT_TRUE(is_made_from(pdf, chapter));
    EXPECT_FALSE(is_made_from(pdf, other));
    EXPECT_FALSE(is_made_from(pdf, home_.path("work/gone.tex")));
}

TEST_F(SourcePlaces, AreNamedInTheSpecialsOfADviFile) {
    const std::string source = home_.file("work/a b.tex"), other = home_.file("other/a b.tex");
    const auto special = [](const std::string &text) {
        return std::string("\xEF") + static_cast<char>(text.size()) + text;
    };
    const std::string dvi = home_.file("work/x.dvi", "....src:9a b.tex" + special("src:12 a b.tex") + "....");
    EXPECT_TRUE(is_made_from(dvi, source));
    EXPECT_FALSE(is_made_from(dvi, other));
    const std::string cut = home_.file("work/y.dvi", special("src:12 a b.tex").substr(0, 12));
    EXPECT_FALSE(is_made_from(cut, source));
    EXPECT_FALSE(is_made_from(home_.file("work/z.dvi", "src:1a b.tex"), source));
    EXPECT_TRUE(is_made_from(home_.file("work/z.dvi", special("src:1" + source)), source));
}

TEST_F(Terminals, TakeTheirCommandInTheirOwnWay) {
    EXPECT_TRUE(in_terminal({"vi"}).empty());
    const std::string any = program(home_, "bin/x-terminal-emulator");
    EXPECT_EQ(in_terminal({"vi", "a b"}), (Words{any, "-e", "vi", "a b"}));
    ::setenv("TERMINAL", "", 1);
    EXPECT_EQ(in_terminal({"vi"}), (Words{any, "-e", "vi"}));
    ::setenv("TERMINAL", "none", 1);
    EXPECT_EQ(in_terminal({"vi"}), (Words{any, "-e", "vi"}));
    for (const auto &[name, option] :
         {std::pair("xterm", "-e"), std::pair("gnome-terminal", "--"), std::pair("xfce4-terminal", "-x")}) {
        const std::string own = program(home_, std::string("bin/") + name);
        ::setenv("TERMINAL", name, 1);
        EXPECT_EQ(in_terminal({"vi"}), (Words{own, option, "vi"}));
    }
}

TEST_F(HandOver, OnlyThePlaceOfThatDocumentIsToldAndAllGo) {
    const WaitingPlace place = wait_for("/a"), other = wait_for("/b");
    ASSERT_GE(place.socket, 0);
    ASSERT_GE(other.socket, 0);
    take_over("/a");
    EXPECT_TRUE(is_taken_over(place, 10000));
    EXPECT_FALSE(is_taken_over(other, 1));
    EXPECT_NE(::access(place.path.c_str(), F_OK), 0);
    EXPECT_NE(::access(other.path.c_str(), F_OK), 0);
    ::close(place.socket);
    ::close(other.socket);
}

TEST_F(HandOver, APlaceThatNobodyHoldsIsRemoved) {
    const WaitingPlace place = wait_for("/a");
    ::close(place.socket);
    EXPECT_EQ(::access(place.path.c_str(), F_OK), 0);
    take_over("/a");
    EXPECT_NE(::access(place.path.c_str(), F_OK), 0);
}

TEST_F(StartDetached, SaysWhyNothingWasStarted) {
    const std::string text = home_.file("text");
    Launch launch;
    launch.words = {text};
    EXPECT_EQ(start_detached(launch), EACCES);
    launch.words = {home_.path("none")};
    EXPECT_EQ(start_detached(launch), ENOENT);
    launch.words = {program(home_, "bin/x")};
    launch.folder = home_.path("none");
    EXPECT_EQ(start_detached(launch), ENOENT);
}

TEST_F(StartDetached, WorkIsDoneInASessionOfItsOwn) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const auto work = [ends] {
        const pid_t session = ::getsid(0);
        EXPECT_EQ(::write(ends[1], &session, sizeof session), static_cast<ssize_t>(sizeof session));
    };
    EXPECT_EQ(work_detached(work, ends[1]), 0);
    ::close(ends[1]);
    pid_t session = ::getsid(0);
    EXPECT_EQ(::read(ends[0], &session, sizeof session), static_cast<ssize_t>(sizeof session));
    EXPECT_NE(session, ::getsid(0));
    // The end of the pipe: the process that holds it has ended.
    EXPECT_EQ(::read(ends[0], &session, 1), 0);
    ::close(ends[0]);
}

TEST_F(StartDetached, NoSignalStaysIgnoredOrBlocked) {
    const std::string mark = home_.path("mark");
    Launch launch;
    launch.words = {
        program(home_, "bin/x",
                "while read -r line; do case $line in Sig[BI][lg][kn]*) echo \"$line\";; esac; done "
                "< /proc/self/status > " +
                    mark + ".part\n/bin/mv " + mark + ".part " + mark + "\n")};
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR2);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    signal(SIGUSR1, SIG_IGN);
    EXPECT_EQ(start_detached(launch), 0);
    signal(SIGUSR1, SIG_DFL);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    while (::access(mark.c_str(), F_OK) != 0)
        sched_yield();
    EXPECT_EQ(home_.read("mark"), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(StartDetached, TheHelpersFolderIsNotSearched) {
    EXPECT_EQ(program_path(""), "");
    EXPECT_EQ(program_path("/usr"), "");
    const std::string own = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    ::setenv("PATH", (own + "::" + home_.path("bin")).c_str(), 1);
    EXPECT_EQ(program_path("test_helpers"), "");
    const std::string path = program(home_, "bin/x");
    EXPECT_EQ(program_path("x"), path);
    EXPECT_EQ(program_path(path), path);
}
