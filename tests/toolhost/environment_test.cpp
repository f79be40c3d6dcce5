#include <gtest/gtest.h>

#include "../../src/toolhost/environment.h"
#include "../../src/toolhost/wire.h"

TEST(Environment, OwnElements) {
    const std::vector<std::string> trees = {"/usr/share/texmf"};
    const auto own = [&](const char *value) { return toolhost::own_elements(value, trees, "/q/lib", 31); };
    EXPECT_EQ(own(""), "");
    EXPECT_EQ(own(".:/usr/share/texmf/tex//"), "");
    EXPECT_EQ(own(".:/own//:/usr/share/texmf/tex//"), ".:/own//:");
    EXPECT_EQ(own(":/own"), ":/own");
    EXPECT_EQ(own("/usr/share/texmf-mine"), "/usr/share/texmf-mine:");
    EXPECT_EQ(own("~/a:~/../b:~"), "/q/lib/a:/q/b:/q/lib:");
    EXPECT_EQ(own("/a\x1f"
                  "b"),
              "/a b:");
    EXPECT_EQ(own("/has$HOME"), "");
}

TEST(Environment, CnfLines) {
    toolhost::Variables variables;
    toolhost::read_cnf("% x = 1\na = 1 % c\n b=two words \r\nc\n=3\n9d=4\ne.pdftex=5", variables);
    EXPECT_EQ(variables, (toolhost::Variables{{"a", "1"}, {"b", "two words"}, {"e.pdftex", "5"}}));
}

TEST(Wire, Utf8) {
    EXPECT_TRUE(toolhost::is_utf8(""));
    EXPECT_TRUE(toolhost::is_utf8("a é € 𝄞"));
    for (const std::string &text :
         {std::string("\0", 1), std::string("\xc3"), std::string("\xc0\x80"), std::string("\xed\xa0\x80"),
          std::string("\xf4\x90\x80\x80"), std::string("a\xff"), std::string("\xe2\x82")})
        EXPECT_FALSE(toolhost::is_utf8(text));
}

TEST(Wire, Codes) {
    EXPECT_EQ(toolhost::code_number("PXET"), 0x50584554);
}
