#include <csignal>
#include <fcntl.h>

#include "common/argument_list.h"
#include "common/bundle.h"
#include "common/descriptors.h"
#include "common/editors_table.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/session_bus.h"
#include "common/viewers_table.h"
#include "support/temporary_home.h"

using namespace common;
using quillon::test::as_ordinary_user;
using quillon::test::in_child;
using quillon::test::TemporaryHome;

namespace {

bool is_open(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace

TEST(ArgumentList, EndsWithANullPointer) {
    std::vector<std::string> words = {"a", ""};
    const std::vector<char *> list = argument_list(words);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_STREQ(list[0], "a");
    EXPECT_EQ(list[1], words[1].data());
    EXPECT_EQ(list[2], nullptr);
}

TEST(Bundles, TheFormOfTheirPaths) {
    EXPECT_TRUE(is_bundle_path("x.app"));
    EXPECT_FALSE(is_bundle_path(".app"));
    EXPECT_FALSE(is_bundle_path("/a/x.apps"));
    EXPECT_EQ(program_of_bundle("/a/x.app"), "/a/x.app/Contents/Linux/x");
}

TEST(Bundles, TheSignatureIsInPkgInfo) {
    const TemporaryHome home;
    home.file("x.app/Contents/PkgInfo", "APPLABCD");
    home.file("y.app/Contents/PkgInfo", "APPLABC");
    EXPECT_EQ(signature_of_bundle(home.path("x.app")), "ABCD");
    EXPECT_EQ(signature_of_bundle(home.path("y.app")), "");
    EXPECT_EQ(signature_of_bundle(home.path("z.app")), "");
}

TEST(Bundles, AProgramFindsItsBundleByTheNameItWasStartedUnder) {
    const TemporaryHome home;
    home.file("lib/x.app/Contents/PkgInfo", "APPLABCD");
    home.file("lib/x.app/Contents/Info", "# a=1\n#b=2\n c = d e \r\nf=\nno\n");
    home.folder("lib/x.app/Contents/Linux");
    Bundle bundle;
    ASSERT_TRUE(find_bundle(home.path("lib/x.app/Contents/Linux/x").c_str(), bundle));
    EXPECT_EQ(bundle.path, home.path("lib/x.app"));
    EXPECT_EQ(bundle.home, home.path("lib"));
    EXPECT_EQ(bundle.tool, "x");
    EXPECT_EQ(bundle.signature, "ABCD");
    EXPECT_EQ(bundle.info.size(), 2u);
    EXPECT_EQ(bundle.info_or("c", "z"), "d e");
    EXPECT_EQ(bundle.info_or("f", "z"), "z");
    EXPECT_EQ(bundle.info_or("b", "z"), "z");
    EXPECT_FALSE(find_bundle("x", bundle));
    EXPECT_FALSE(find_bundle(home.path("lib/x").c_str(), bundle));
}

TEST(Descriptors, OnlyThoseKeptStayOpen) {
    EXPECT_EQ(in_child([] {
                  for (int descriptor = 3; descriptor < 12; descriptor++)
                      ::dup2(0, descriptor);
                  close_others({8, -1, 3, 4, 0});
                  for (int descriptor = 0; descriptor < 12; descriptor++)
                      if (is_open(descriptor) != (descriptor < 5 || descriptor == 8))
                          return 1 + descriptor;
                  return 0;
              }),
              0);
}

TEST(EditorsTable, ThePersonsOwnTableIsInTheSupportFolder) {
    const TemporaryHome home;
    home.file("data/Quillon/editors.table", "mine | | +%l %f\n");
    EXPECT_EQ(in_child([] { return IsTableEditor("/x/mine") && !IsTableEditor("/x/yours") ? 0 : 1; }), 0);
}

TEST(EditorsTable, RowsNeedArgumentsAtALine) {
    EXPECT_TRUE(ParseEditorRows("a | | \nb | | | %f").empty());
    const auto rows = ParseEditorRows("a | | %l\nb | | %l | | x11 terminal");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].plain, std::vector<std::string>{"%f"});
    EXPECT_TRUE(rows[1].terminal && rows[1].x11_only);
}

TEST(ApplicationTable, FieldsAndWordsAndQuotes) {
    using Row = std::vector<Words>;
    EXPECT_EQ(ParseTable("  # no | row\n\n \t\na b|\t\"c | d\" e\"f\" \"\" |\r\nlast"),
              (std::vector<Row>{{{"a", "b"}, {"c | d", "ef", ""}, {}}, {{"last"}}}));
    EXPECT_EQ(ParseTable("open \"to the | end\nnext"),
              (std::vector<Row>{{{"open", "to the | end"}}, {{"next"}}}));
    EXPECT_TRUE(ParseTable("").empty());
}

TEST(ApplicationTable, CodesInArguments) {
    const Codes codes = {{'f', "/a %l"}, {'l', "7"}};
    EXPECT_EQ(FilledArguments({"%f:%l", "100%%", "%%f", "%q", "%{f}", "%", ""}, codes),
              (Words{"/a %l:7", "100%", "%f", "%q", "%{f}", "%", ""}));
    EXPECT_TRUE(HoldsCode({"x", "a%fb"}, 'f'));
    EXPECT_FALSE(HoldsCode({"%%f", "%", "%l"}, 'f'));
}

TEST(ViewersTable, RowsAndFlags) {
    const auto rows = ParseViewerRows("a | a.b | ?-q %d | at %d %l | -x %e | single usr1 presents zathura\n"
                                      "b | | --watch | | | hup evince=org.a evince=org.b\nc | |\nd |");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].single && rows[0].presents && rows[0].zathura);
    EXPECT_EQ(rows[0].reread_signal, SIGUSR1);
    EXPECT_EQ(rows[0].at_source, (Words{"at", "%d", "%l"}));
    EXPECT_EQ(rows[0].links, (Words{"-x", "%e"}));
    EXPECT_FALSE(rows[1].single);
    EXPECT_EQ(rows[1].show, (Words{"--watch", "%d"}));
    EXPECT_EQ(rows[1].reread_signal, SIGHUP);
    EXPECT_EQ(rows[1].evince, (Words{"org.a", "org.b"}));
    EXPECT_EQ(rows[2].show, Words{"%d"});
}

TEST(ViewersTable, TheTableOfTheBuildNamesEachViewerOnce) {
    const TemporaryHome home;
    const auto rows = ParseViewerRows(read_file(QUILLON_SOURCE_FOLDER "/resources/viewers.table", 1 << 20));
    ASSERT_GE(rows.size(), 10u);
    std::vector<std::string> seen;
    for (const ViewerRow &row : rows)
        for (const std::string &program : row.programs) {
            EXPECT_FALSE(Contains(seen, program)) << program;
            seen.push_back(program);
            EXPECT_TRUE(HoldsCode(row.show, 'd') || HoldsCode(row.show, 'u')) << program;
            EXPECT_TRUE(row.at_source.empty() || HoldsCode(row.at_source, 'l')) << program;
        }
}

TEST(OwnBus, WhatOutlivesAShellWithABusOfItsOwnIsOnTheBusBefore) {
    const auto address_after = [](const char *own_bus) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/own", 1);
        own_bus ? ::setenv("QUILLON_OWN_BUS", own_bus, 1) : ::unsetenv("QUILLON_OWN_BUS");
        leave_own_bus();
        const char *const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        return std::string(address ? address : "none");
    };
    EXPECT_EQ(in_child([&] { return address_after(nullptr) == "unix:path=/own" ? 0 : 1; }), 0);
    EXPECT_EQ(in_child([&] { return address_after("unix:path=/theirs") == "unix:path=/theirs" ? 0 : 1; }), 0);
    EXPECT_EQ(in_child([&] { return address_after("none") == "none" ? 0 : 1; }), 0);
}

TEST(HostFiles, ReadingStopsAtTheBlockThatReachesTheLimit) {
    const TemporaryHome home;
    const std::string path = home.file("x", std::string(20000, 'x'));
    EXPECT_EQ(read_file(path, 8192).size(), 8192u);
    EXPECT_EQ(read_file(path, 8193).size(), 16384u);
    EXPECT_EQ(read_file(path, 100000).size(), 20000u);
    EXPECT_EQ(read_file(home.path("none"), 10), "");
}

TEST(HostFiles, OnlyARegularFileCanRun) {
    const TemporaryHome home;
    const std::string path = home.file("bin/x");
    EXPECT_FALSE(can_run(path));
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    EXPECT_TRUE(can_run(path));
    EXPECT_FALSE(can_run(home.path("bin")));
}

TEST(HostFiles, MissingFoldersAreMadeAndAFileIsNone) {
    const TemporaryHome home;
    EXPECT_TRUE(make_folders(home.path("a/b/c"), 0755));
    EXPECT_TRUE(is_folder(home.path("a/b/c")));
    EXPECT_TRUE(make_folders(home.path("a/b/c"), 0755));
    home.file("file");
    EXPECT_FALSE(make_folders(home.path("file"), 0755));
    EXPECT_FALSE(make_folders(home.path("file/x"), 0755));
}

TEST(HostFiles, WhoeverHasAFileOpenIsSeen) {
    const TemporaryHome home;
    const std::string path = home.file("x", "text");
    EXPECT_FALSE(file_is_open(path));
    EXPECT_FALSE(file_is_written(path));
    for (const int mode : {O_RDONLY, O_WRONLY}) {
        const int file = open(path.c_str(), mode | O_CLOEXEC);
        EXPECT_TRUE(file_is_open(path));
        EXPECT_EQ(file_is_written(path), mode == O_WRONLY);
        close(file);
    }
    EXPECT_FALSE(file_is_open(path));
    EXPECT_FALSE(file_is_open(home.path("none")));
}

TEST(HostFiles, ProgramsAreFoundAlongAbsoluteFolders) {
    const TemporaryHome home;
    const std::string path = home.file("bin/x");
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    EXPECT_EQ(find_program("x", home.path("none") + "::" + home.path("bin"), "/"), path);
    EXPECT_EQ(find_program("x", home.path("none"), "/"), "");
    EXPECT_EQ(find_program("bin/x", "", home.root()), path);
    EXPECT_EQ(find_program("./x", "", home.root()), "");
    EXPECT_EQ(in_child([&] {
                  return ::chdir(home.root().c_str()) == 0 && find_program("x", "bin:", "/").empty() ? 0 : 1;
              }),
              0);
}

TEST(PathForms, TheWorkingFolderAndLowerCaseUris) {
    const TemporaryHome home;
    EXPECT_EQ(in_child([&] {
                  return ::chdir(home.path("work").c_str()) == 0 &&
                                 from_working_folder("x") == home.path("work/x") &&
                                 from_working_folder("/x") == "/x"
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(in_child([&] {
                  const std::string gone = home.folder("gone");
                  return ::chdir(gone.c_str()) == 0 && ::rmdir(gone.c_str()) == 0 &&
                                 from_working_folder("x") == "/x"
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(absolute_path("/", "x"), "/x");
    EXPECT_EQ(path_of_uri("file:///%6f%0A%ff%fg"), "/o\n\xFF%fg");
    EXPECT_EQ(expand_setting_path("~/..", "/q/lib", 31), "/q/lib/..");
}

TEST(PathForms, CanonicalPaths) {
    const TemporaryHome home;
    home.file("a");
    ASSERT_EQ(::symlink("a", home.path("b").c_str()), 0);
    EXPECT_EQ(canonical_path(home.path("b")), home.path("a"));
    EXPECT_EQ(canonical_path(home.path("c/./d")), home.path("c/./d"));
}

TEST(Places, OnlyAbsoluteVariablesCount) {
    const TemporaryHome home;
    EXPECT_EQ(in_child([&] {
                  ::setenv("XDG_CONFIG_HOME", "relative", 1);
                  ::setenv("XDG_DATA_HOME", "", 1);
                  ::unsetenv("XDG_CACHE_HOME");
                  return config_folder() == home.path("home/.config") &&
                                 formats_folder() == home.path("home/.local/share/Quillon/formats") &&
                                 transcripts_folder() == home.path("home/.cache/quillon")
                             ? 0
                             : 1;
              }),
              0);
}

TEST(Places, TheTemporaryFolder) {
    const TemporaryHome home;
    EXPECT_EQ(temporary_folder(), home.path("run/quillon"));
    EXPECT_EQ(in_child([&] {
                  const std::string own = "/quillon-" + std::to_string(::geteuid());
                  ::setenv("XDG_RUNTIME_DIR", home.path("none").c_str(), 1);
                  ::unsetenv("TMPDIR");
                  if (temporary_folder() != "/tmp" + own)
                      return 1;
                  ::setenv("TMPDIR", home.path("work").c_str(), 1);
                  return temporary_folder() == home.path("work") + own ? 0 : 2;
              }),
              0);
}

TEST(Places, APrivateFolderIsThisUsersOwnAndNobodyElseEntersIt) {
    const TemporaryHome home;
    const std::string open = home.folder("open"), fresh = home.path("fresh");
    ASSERT_EQ(::chmod(open.c_str(), 0750), 0);
    ASSERT_EQ(::symlink("work", home.path("link").c_str()), 0);
    for (const std::string &folder : {open, fresh}) {
        EXPECT_TRUE(make_private_folder(folder));
        struct stat status = {};
        ASSERT_EQ(::stat(folder.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700u);
    }
    EXPECT_FALSE(make_private_folder(home.path("link")));
    EXPECT_FALSE(make_private_folder(home.file("file")));
    // An ordinary user who runs the tests is the owner.
    EXPECT_EQ(as_ordinary_user([&] { return make_private_folder(open) ? 1 : 0; }), ::geteuid() == 0 ? 0 : 1);
}

TEST(Places, ThisProgram) {
    EXPECT_EQ(leaf_of(own_program()), "test_common");
    EXPECT_EQ(above_own_program(1), folder_above(own_program()));
    EXPECT_EQ(program_of_process(::getpid()), own_program());
    EXPECT_EQ(program_of_process(-1), "");
}

TEST(Preferences, SettingsAreReadAndWritten) {
    const TemporaryHome home;
    EXPECT_EQ(in_child([&] {
                  std::string value = "kept";
                  if (write_preferences({{"A", "1"}}) || read_setting("A", &value) || value != "kept")
                      return 1;
                  home.file("config/Quillon Preferences", "A=1\n");
                  if (!read_setting("A", &value) || value != "1" || setting("B") != "")
                      return 2;
                  return write_preferences({{"A", "2"}, {"B", "3"}}) && setting("A") == "2" &&
                                 setting("B") == "3"
                             ? 0
                             : 3;
              }),
              0);
}

TEST(Preferences, TheSpaceByte) {
    const TemporaryHome home;
    EXPECT_EQ(in_child([&] {
                  const auto with = [&](const char *text) {
                      home.file("config/Quillon Preferences", text);
                      return space_byte();
                  };
                  return with("") == 202 && with("SPACECHAR=31\n") == 31 && with("SPACECHAR=256\n") == 202 &&
                                 with("SPACECHAR=0\n") == 202 && with("SPACECHAR=1\n") == 1 &&
                                 with("SPACECHAR=255\n") == 255 && with("SPACECHAR=x\n") == 202
                             ? 0
                             : 1;
              }),
              0);
}
