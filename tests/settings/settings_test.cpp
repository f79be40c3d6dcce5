#include "settings/settings.h"

#include <set>
#include <string>

#include "settings/setting_table.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Settings : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;

    static std::string shown(const char *value) { return value ? value : "(null)"; }
};

} // namespace

TEST_F(Settings, EmptyValueReadsBackAsNotSet) {
    home_.preferences("A=1\n");
    EXPECT_EQ(set_str_resource("A", ""), 1);
    EXPECT_EQ(home_.read("config/Quillon Preferences"), "A=\n");
    EXPECT_EQ(get_str_resource("A"), nullptr);
    EXPECT_EQ(taken(myget_string("A")), "(null)");
}

TEST_F(Settings, LongValueIsNotSetForTheShortReadOnly) {
    home_.preferences("");
    const std::string value(300, 'v');
    EXPECT_EQ(set_str_resource("LASTCOMMAND", value.c_str()), 1);
    EXPECT_EQ(get_str_resource("LASTCOMMAND"), nullptr);
    EXPECT_EQ(taken(myget_string("LASTCOMMAND")), value);
}

TEST_F(Settings, ShortReadEndsBefore256BytesWithTheTerminator) {
    home_.preferences("");
    const std::string fits(254, 'v'), too_long(255, 'v');
    set_str_resource("A", fits.c_str());
    EXPECT_EQ(shown(get_str_resource("A")), fits);
    set_str_resource("A", too_long.c_str());
    EXPECT_EQ(get_str_resource("A"), nullptr);
}

TEST_F(Settings, NewKeyIsAddedAndResizedInPlace) {
    home_.preferences("B=2\n");
    EXPECT_EQ(set_str_resource("A", "1"), 1);
    EXPECT_EQ(set_str_resource("C", "3"), 1);
    EXPECT_EQ(set_str_resource("A", "a much longer value"), 1);
    EXPECT_EQ(home_.read("config/Quillon Preferences"), "B=2\nA=a much longer value\nC=3\n");
}

TEST_F(Settings, AppPathsReplaceALeadingTildeByTheBinariesFolder) {
    home_.preferences("X=~/Tools/x.app\nY=~\nZ=/Vol/z\n");
    home = "/TeX/bin";
    EXPECT_EQ(taken(GetApp("X")), "/TeX/bin/Tools/x.app");
    EXPECT_EQ(taken(GetApp("Y")), "/TeX/bin");
    EXPECT_EQ(taken(GetApp("Z")), "/Vol/z");
    home = nullptr;
    EXPECT_EQ(taken(GetApp("Y")), "~");
}

TEST_F(Settings, AppPathsAreTracedWhileDebugging) {
    home_.preferences("X=/Vol/x\n");
    doDebug = 1;
    EXPECT_EQ(taken(GetApp("None")), "(null)");
    EXPECT_EQ(front_->printed, "Application None has not been set.\n");
    front_->printed.clear();
    EXPECT_EQ(taken(GetApp("X")), "/Vol/x");
    EXPECT_EQ(front_->printed, "\nX path\n</Vol/x>\n");
    front_->printed.clear();
    doDebug = 0;
    EXPECT_EQ(taken(GetApp("None")), "(null)");
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Settings, AppPathThatDoesNotFitIsRefusedByName) {
    home_.preferences("X=~/" + std::string(200, 'x') + "\n");
    const std::string long_home = "/" + std::string(100, 'h');
    home = long_home.c_str();
    EXPECT_EQ(taken(GetApp("X")), "(null)");
    EXPECT_NE(front_->printed.find("X"), std::string::npos);
    home = nullptr;
}

TEST_F(Settings, TwoReadsShareOneBuffer) {
    home_.preferences("A=first\nB=second\n");
    const char *const a = get_str_resource("A");
    const char *const b = get_str_resource("B");
    EXPECT_EQ(a, b);
    EXPECT_STREQ(a, "second");
}

TEST_F(Settings, WithoutAPreferencesFileNothingIsReadOrWritten) {
    check_config();
    EXPECT_EQ(havePrefs, 0);
    EXPECT_EQ(get_str_resource("A"), nullptr);
    EXPECT_EQ(set_str_resource("A", "1"), 0);
    EXPECT_FALSE(std::filesystem::exists(home_.preferences()));
}

TEST_F(Settings, FileThatGoesDuringTheRunReadsAsNotSet) {
    home_.preferences("A=1\n");
    std::filesystem::remove(home_.preferences());
    EXPECT_EQ(get_str_resource("A"), nullptr);
    EXPECT_EQ(set_str_resource("A", "1"), 0);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Settings, ConfigurationIsFoundInThePreferencesFolder) {
    home_.preferences("A=1\n");
    EXPECT_EQ(havePrefs, 1);
    EXPECT_EQ(name.view(), home_.mac("config/Quillon Preferences"));
    EXPECT_STREQ(NoPrefFile(), home_.path("config/QuillonDataBases").c_str());
    EXPECT_EQ(supportFolder.view(), home_.path("data/Quillon"));
}

TEST_F(Settings, EarlierSystemHasNoSupportFolder) {
    haveosx = 0;
    home_.preferences("A=1\n");
    NoPrefFile();
    EXPECT_TRUE(supportFolder.empty());
    EXPECT_EQ(prefsFolder.view(), home_.path("config/QuillonDataBases"));
}

TEST_F(Settings, NoPreferencesFileShowsTheQuitWindowAndExitsWithStatusZero) {
    check_config();
    EXPECT_EQ(in_child([&] {
                  std::atexit([] {
                      const bool shown = RecordingFront::record().windows == std::vector<std::string>{"Quit"};
                      ::_exit(shown ? 42 : 43);
                  });
                  NoPrefFile();
                  return 1;
              }),
              42);
    EXPECT_EXIT(NoPrefFile(), testing::ExitedWithCode(0), "");
}

TEST_F(Settings, UnreadableFileCountsAsMissing) {
    home_.file("config/Quillon Preferences", "A=1\n");
    ASSERT_EQ(::chmod(home_.preferences().c_str(), 0), 0);
    EXPECT_EQ(as_ordinary_user([] {
                  check_config();
                  return havePrefs;
              }),
              0);
}

TEST_F(Settings, ErrorLineFileIsInTheTemporaryFolder) {
    BoundedString<1024> path;
    GetTmpSrcFile(path);
    EXPECT_EQ(path.view(), home_.mac("run/quillon") + ":tmpsrclinenumber");
}

TEST_F(Settings, ErrorLineFileWithoutATemporaryFolderIsOnlyItsName) {
    ::setenv("XDG_RUNTIME_DIR", "", 1);
    ::setenv("TMPDIR", "/proc/none", 1);
    BoundedString<1024> path;
    path.copy("rest of an earlier use");
    GetTmpSrcFile(path);
    EXPECT_EQ(path.view(), ":tmpsrclinenumber");
    ::unsetenv("TMPDIR");
}

TEST_F(Settings, ASettingThatIsNotKeptIsSaidOnce) {
    home_.preferences("DEBUG=0\n");
    check_config();
    // No lock can be had where its file is a folder.
    home_.folder("config/.Quillon Preferences.lock");
    EXPECT_EQ(set_str_resource("TEXDIR", "/a"), 0);
    EXPECT_EQ(set_str_resource("TEXDIR", "/b"), 0);
    EXPECT_EQ(front_->printed,
              "I can't write " + home_.path("config/Quillon Preferences") + ". Settings are not kept.\n");
    ASSERT_EQ(::rmdir(home_.path("config/.Quillon Preferences.lock").c_str()), 0);
    EXPECT_EQ(set_str_resource("TEXDIR", "/c"), 1);
}

TEST_F(Settings, FlagsLookAtTheFirstCharacterOnly) {
    for (int i = 0; i < setting_count; i++) {
        const Setting &row = setting_table[i];
        if (row.kind != setting_flag || !row.preset)
            continue;
        const std::string key = row.key;
        const int preset = row.preset[0] == '1';
        const auto with = [&](const std::string &text) {
            home_.preferences(text);
            return read_setting(row);
        };
        EXPECT_EQ(with(""), preset) << key;
        EXPECT_EQ(with(key + "=1\n"), 1) << key;
        EXPECT_EQ(with(key + "=10\n"), 1) << key;
        EXPECT_EQ(with(key + "=0\n"), 0) << key;
        EXPECT_EQ(with(key + "=no\n"), preset) << key;
    }
}

TEST_F(Settings, DebugIsOnUnlessTheValueBeginsWithZero) {
    home_.preferences("DEBUG=no\n");
    EXPECT_EQ(read_setting(*find_setting("DEBUG")), 1);
    home_.preferences("DEBUG=0\n");
    EXPECT_EQ(read_setting(*find_setting("DEBUG")), 0);
    home_.preferences("");
    EXPECT_EQ(read_setting(*find_setting("DEBUG")), 1);
}

TEST_F(Settings, RowsAreCompleteAndFoundByTheirKeys) {
    std::set<std::string> keys;
    for (int i = 0; i < setting_count; i++) {
        const Setting &row = setting_table[i];
        EXPECT_TRUE(keys.insert(row.key).second) << row.key;
        EXPECT_TRUE(row.help && *row.help) << row.key;
        const std::string key = row.kind == setting_numbered ? row.key + std::to_string(row.most) : row.key;
        EXPECT_EQ(find_setting(key.c_str()), &row) << key;
    }
    EXPECT_EQ(find_setting("RECENTFILE0"), nullptr);
    EXPECT_EQ(find_setting("RECENTFILE13"), nullptr);
    EXPECT_EQ(find_setting("TEXMENU01"), nullptr);
    EXPECT_EQ(find_setting("nothing"), nullptr);
}
