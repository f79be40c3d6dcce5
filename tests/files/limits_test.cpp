// Each limit of the look-ups and of the line reader is tried at its last good value and at the next.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "files/paths.h"
#include "files/search.h"
#include "files/streams.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class Limits : public ::testing::Test {
  protected:
    void SetUp() override { space_char = 31; }

    std::FILE *lines(const std::string &bytes) const {
        return std::fopen(home_.file("work/lines", bytes).c_str(), "r");
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Limits, AccessTakes511BytesOfPathAndCurrentFolder) {
    const std::string path = home_.file("work/" + std::string(200, 'd') + "/" + std::string(100, 'f'));
    curr_dir.copy(std::string(511 - path.size(), 'c'));
    EXPECT_EQ(access(path.c_str(), 4), 0);
    curr_dir.append("c");
    errno = 0;
    EXPECT_EQ(access(path.c_str(), 4), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(Limits, TheCurrentFolderIsSearchedFor250Bytes) {
    const std::size_t room = 250 - curr_dir.length();
    const std::string name(room, 'n'), longer(room + 1, 'n');
    home_.file("work/" + name);
    home_.file("work/" + longer);
    EXPECT_EQ(test::taken(searchCurrentDirectory(name.c_str())), home_.path("work/" + name));
    EXPECT_EQ(test::taken(searchCurrentDirectory(longer.c_str())), "(null)");
}

TEST_F(Limits, TheCacheHoldsAHundredEntriesOf255Bytes) {
    const std::string path = home_.file("work/x"), name(255, 'n');
    addToCache((name + "n").c_str(), path.c_str());
    EXPECT_EQ(numberOfEntries, 0);
    addToCache(name.c_str(), path.c_str());
    EXPECT_EQ(numberOfEntries, 1);
    EXPECT_EQ(test::taken(searchCache(name.c_str())), path);
    for (int i = 0; i < 200; i++)
        addToCache(std::to_string(i).c_str(), path.c_str());
    EXPECT_EQ(numberOfEntries, 100);
    EXPECT_EQ(test::taken(searchCache("98")), path);
    EXPECT_EQ(test::taken(searchCache("99")), "(null)");
}

TEST_F(Limits, ABufferOfOneByteGetsAnEmptyLineAndOneOfNoneGetsNothing) {
    std::FILE *const file = lines("ab\n");
    char buffer[8] = "kept";
    EXPECT_EQ(mfgets(buffer, 1, file), buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(mfgets(buffer, 4, file), buffer);
    EXPECT_STREQ(buffer, "ab");
    EXPECT_EQ(mfgets(buffer, 4, file), buffer);
    EXPECT_STREQ(buffer, "\n");
    EXPECT_EQ(mfgets(buffer, 4, file), nullptr);
    std::fclose(file);
    std::FILE *const other = lines("ab\n");
    buffer[0] = 'k';
    EXPECT_EQ(mfgets(buffer, 0, other), nullptr);
    EXPECT_EQ(buffer[0], 'k');
    std::fclose(other);
}

} // namespace
} // namespace quillon
