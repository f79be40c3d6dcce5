#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "toolhost/transcript.h"

static std::string converted(const std::string &text, std::size_t block) {
    toolhost::LineEnds ends;
    std::string out;
    for (std::size_t i = 0; i < text.size(); i += block)
        ends.convert(std::string_view(text).substr(i, block), out);
    return out;
}

TEST(LineEnds, EveryFormBecomesOneReturnWhereverBlocksPart) {
    const std::string text = "a\r\nb\nc\rd\r\r\n\n\r\n";
    for (std::size_t block = 1; block <= text.size(); block++)
        EXPECT_EQ(converted(text, block), "a\rb\rc\rd\r\r\r\r") << block;
}

TEST(LineEnds, OtherBytesStay) {
    const std::string text("\0\x01\xc3\xff\t", 5);
    for (std::size_t block = 1; block <= text.size(); block++)
        EXPECT_EQ(converted(text, block), text);
}

class TranscriptTest : public testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/quillon-transcript-XXXXXX";
        folder_ = mkdtemp(pattern);
        setenv("XDG_CACHE_HOME", folder_.c_str(), 1);
    }
    void TearDown() override { ASSERT_EQ(std::system(("rm -r " + folder_).c_str()), 0); }
    std::string folder_;
};

TEST_F(TranscriptTest, NothingPrintedMakesNoFile) {
    toolhost::Transcript transcript;
    EXPECT_EQ(transcript.finish(), "");
    EXPECT_NE(access((folder_ + "/quillon").c_str(), F_OK), 0);
}

TEST_F(TranscriptTest, HoldsWhatWasPrinted) {
    toolhost::Transcript transcript;
    const std::string piece(10000, 'x');
    for (int i = 0; i < 20; i++)
        transcript.write(piece);
    transcript.write("\r");
    transcript.write("\nend\n");
    std::ifstream file(transcript.finish(), std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(text.size(), 200005u);
    EXPECT_EQ(text.substr(199999), "x\rend\r");
}

TEST_F(TranscriptTest, AFolderOfSomebodyElsesMakingIsRefused) {
    ASSERT_EQ(symlink("/tmp", (folder_ + "/quillon").c_str()), 0);
    toolhost::Transcript transcript;
    transcript.write("x");
    EXPECT_EQ(transcript.finish(), "");
}

TEST_F(TranscriptTest, ACancelledRunHasAFileWhateverWasPrinted) {
    toolhost::Transcript transcript;
    const std::string path = transcript.finish(true);
    EXPECT_EQ(path.rfind(folder_ + "/quillon/transcript-", 0), 0u);
    EXPECT_EQ(access(path.c_str(), F_OK), 0);
}

// A limit of the file size stands for a disk that is full.
TEST_F(TranscriptTest, AFullDiskIsSaidInPlaceOfTheLastBytes) {
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit = before;
    limit.rlim_cur = 1000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    toolhost::Transcript transcript;
    transcript.write(std::string(1500, 'x'));
    const std::string path = transcript.finish();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::size_t end = text.find('\r');
    ASSERT_NE(end, std::string::npos);
    EXPECT_LE(text.size(), 1000u);
    EXPECT_GT(end, 900u - 100u);
    EXPECT_EQ(text.find_first_not_of('x'), end);
    EXPECT_EQ(text.substr(end, text.find(" bytes)") - end),
              "\rThe rest of the output was lost (" + std::to_string(1500 - end));
}
