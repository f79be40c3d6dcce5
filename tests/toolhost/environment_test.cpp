#include <gtest/gtest.h>

#include "toolhost/environment.h"

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
