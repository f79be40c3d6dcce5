// Paths that a fixed buffer cannot hold are refused with their name.
#include <gtest/gtest.h>

#include <cstdio>

#include "console/output.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "files/search.h"
#include "jobs/after_run.h"
#include "kpath/search_paths.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class LongPaths : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        check_config();
        doDebug = doAlias = 0;
        space_char = 31;
        deep_ = "work";
        while (home_.path(deep_).size() < 260)
            deep_ += "/" + std::string(40, 'd');
        home_.folder(deep_);
    }
    void TearDown() override { curr_dir.clear(); }

    // A TeX input whose path is too long; its path.
    std::string make_input() const {
        home_.preferences("SPACECHAR=31\nDEBUG=0\nTEXINPUTS=" + home_.path(deep_) + "\n");
        setpaths(1u << slot_texinputs);
        return home_.file(deep_ + "/found.tex", "x");
    }

    test::TemporaryHome home_;
    test::RecordingFront recorded_;
    std::string deep_;
};

TEST_F(LongPaths, AFindWhosePathDoesNotFitIsRefusedByName) {
    const std::string file = make_input();
    BoundedString<256> name;
    name.copy("found");
    DoFindFile(name);
    EXPECT_EQ(recorded_->printed,
              "\nLooking for file <found>.\nThe path \"" + file + "\" is too long for Quillon.\n");
}

TEST_F(LongPaths, ALocateWhosePathDoesNotFitIsRefusedByName) {
    const std::string file = make_input();
    BoundedString<256> name;
    name.copy("found");
    EXPECT_EQ(DoSearchFile(name), 0);
    EXPECT_TRUE(name.empty());
    EXPECT_EQ(recorded_->printed, "The path \"" + file + "\" is too long for Quillon.\n");
}

TEST_F(LongPaths, AnErrorFileThatDoesNotFitIsNamedAndNoEditorStarts) {
    const std::string file = home_.path(deep_) + "/error.tex";
    home_.preferences("SPACECHAR=31\nDEBUG=0\nFILENAME=" + file + "\nLINENUMBER=3\n");
    editfile.clear();
    calleditor = 1;
    CallTheEditor();
    EXPECT_EQ(recorded_->printed, "The path \"" + file + "\" is too long for Quillon.\n");
    EXPECT_EQ(calleditor, 0);
    EXPECT_FALSE(recorded_->asked);
}

TEST_F(LongPaths, ADatabaseEntryThatDoesNotFitIsNamed) {
    const std::string folder = home_.path(deep_) + "/";
    haveosx = 1;
    NoPrefFile();
    home_.file("data/Quillon/TEXINPUTS", folder + "\nfar.tex\n");
    dataBaseSearch = 1;
    read_hash_table("TEXINPUTS", &texinputsTable);
    EXPECT_EQ(searchDatabase(1, "far.tex"), nullptr);
    EXPECT_EQ(recorded_->printed, "The path of file <" + folder + "far.tex> is too long.\n");
    dataBaseSearch = 0;
}

TEST_F(LongPaths, OnlyAChosenInputFileIsAnInputError) {
    recorded_->answer = home_.path(deep_) + "/new.txt";
    BoundedString<256> path;
    EXPECT_EQ(put_output_file(path, "Save"), 0);
    EXPECT_TRUE(path.empty());
    EXPECT_EQ(recorded_->printed, "");
    recorded_->answer = home_.file(deep_ + "/in.txt", "x");
    EXPECT_EQ(get_input_file(path, nullptr, nullptr, 0, "Open"), 0);
    EXPECT_EQ(recorded_->printed, "IO Error on file in.txt\n");
}

TEST_F(LongPaths, AMessageToAFileSaysWhatItCuts) {
    std::FILE *const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    const std::string text(30000, 'x');
    EXPECT_EQ(ml_fprintf(file, "%s", text.c_str()), 30000);
    std::string whole(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    EXPECT_EQ(std::fread(whole.data(), 1, whole.size(), file), whole.size());
    std::string wanted;
    wanted.append(20479, 'x');
    wanted += "\n[The rest of this message does not fit.]\n";
    EXPECT_EQ(whole, wanted);
    std::fclose(file);
}

} // namespace
} // namespace quillon
