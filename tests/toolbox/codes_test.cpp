#include "toolbox/codes.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(Codes, FourCharactersAndNoOthers) {
    OSType code = 0;
    EXPECT_EQ(parse_code("QUIL", &code), 1);
    EXPECT_EQ(code, four("QUIL"));
    EXPECT_EQ(code_text(code), "QUIL");
    EXPECT_EQ(parse_code("abc", &code), 0);
    EXPECT_EQ(parse_code("abcde", &code), 0);
    EXPECT_EQ(code, four("QUIL"));
}

TEST(Codes, BytesOfTheUpperHalf) {
    const unsigned char bytes[] = {0xFF, 0x80, 0, 1};
    EXPECT_EQ(code_of_bytes(bytes), 0xFF800001u);
    EXPECT_EQ(code_text(0xFF800001u), std::string("\xFF\x80\0\1", 4));
}

} // namespace
} // namespace quillon
