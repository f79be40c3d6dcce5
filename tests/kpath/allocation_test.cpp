// These tests count the blocks that the allocators ask the library for. Under a sanitizer, which has its own
// allocator, they count nothing.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "kpath/font_map.h"
#include "kpath/utilities.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

#ifndef __SANITIZE_ADDRESS__

static std::atomic<std::size_t> counted_size = SIZE_MAX;
static std::atomic<int> requests = 0;

extern "C" void *__libc_malloc(std::size_t size);

extern "C" void *malloc(std::size_t size) {
    if (size == counted_size)
        requests++;
    return __libc_malloc(size);
}

namespace quillon {
namespace {

// How many blocks of exactly that size BODY asks for.
template <typename Body> int requests_of(std::size_t size, Body body) {
    requests = 0;
    counted_size = size;
    body();
    counted_size = SIZE_MAX;
    return requests;
}

TEST(Allocation, OfNothingAsksForOneByte) {
    EXPECT_EQ(requests_of(1, [] { std::free(xmalloc(0)); }), 1);
    EXPECT_EQ(requests_of(0, [] { std::free(xmalloc(0)); }), 0);
    EXPECT_EQ(requests_of(5, [] { std::free(xmalloc(5)); }), 1);
}

TEST(Allocation, AnEntryOfTheFontMapHasItsOldSize) {
    const test::TemporaryHome home;
    const test::RecordingFront recorded;
    home.file("work/texfonts.map", "one a\ntwo b\nthree c\nagain c\n");
    std::string folder = home.path("work/");
    char *list[] = {folder.data(), nullptr};
    static FontMap *map; // lives as long as the process
    EXPECT_EQ(requests_of(2388, [&] { map = map_create(list); }), 3);
    EXPECT_EQ(test::taken(map_lookup(map, "b")), "two");
}

} // namespace
} // namespace quillon

#endif
