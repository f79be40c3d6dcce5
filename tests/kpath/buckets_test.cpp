#include <gtest/gtest.h>

#include "kpath/font_map.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

// "BBBB" sums to 264, which is 65, the sum of "A", and 199.
TEST(FontMapBuckets, SumsThatDifferBy199ShareABucketAndNoOthersDo) {
    const test::TemporaryHome home;
    const test::RecordingFront recorded;
    std::string folder = home.path("work/");
    char *list[] = {folder.data(), nullptr};
    home.file("work/texfonts.map", "one A\ntwo BBBB\n");
    static FontMap *shared, *apart; // live as long as the process
    shared = map_create(list);
    EXPECT_EQ(test::taken(map_lookup(shared, "A")), "(null)");
    EXPECT_EQ(test::taken(map_lookup(shared, "BBBB")), "two");
    home.file("work/texfonts.map", "one A\ntwo BBBA\nthree BBBC\n");
    apart = map_create(list);
    EXPECT_EQ(test::taken(map_lookup(apart, "A")), "one");
    EXPECT_EQ(test::taken(map_lookup(apart, "BBBA")), "two");
    EXPECT_EQ(test::taken(map_lookup(apart, "BBBC")), "three");
}

} // namespace
} // namespace quillon
