#include <gtest/gtest.h>

#include "common/bundle.h"
#include "support/temporary_home.h"
#include "toolhost/environment.h"

using quillon::test::in_child;
using quillon::test::TemporaryHome;

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

TEST(Environment, ElementsInTreesAreThoseBelowThem) {
    const auto own = [](const char *value) {
        return toolhost::own_elements(value, {"/a/tree", ""}, "/q", 31);
    };
    EXPECT_EQ(own("/a/tree"), "");
    EXPECT_EQ(own("/a/tree/x"), "");
    EXPECT_EQ(own("/a/trees:/a"), "/a/trees:/a:");
    EXPECT_EQ(own("/x::/y"), "/x:/y:");
    EXPECT_EQ(own(":./:/x"), ":./:/x");
    EXPECT_EQ(own("./:."), "");
}

TEST(Environment, CommentsOfBothKindsAndNames) {
    toolhost::Variables variables;
    toolhost::read_cnf("a=1# c\n# b=2\nc-d=3\n_e f = 4\n", variables);
    EXPECT_EQ(variables, (toolhost::Variables{{"a", "1"}, {"_ef", "4"}}));
}

TEST(Environment, WhatAProgramIsTold) {
    const TemporaryHome home;
    home.file(
        "config/Quillon Preferences",
        "SPACECHAR=31\nTEXMFTREES=/tree/\nTEXINPUTS=/tree/tex//:/own//\nTEXPSHEADERS=/no\nDVIPSHEADERS=:/h\n"
        "PDFTEXMODE=ljfour\nPDFMAKEFONT=1\nMPTEXFORMAT=2\nTEXBIN=~/bin\n");
    home.file("data/Quillon/formats/tex.cnf", "pool_size=1\nmain_memory=2\n");
    home.file("data/Quillon/formats/pdftex.cnf", "pool_size=3\n");
    EXPECT_EQ(in_child([] {
                  ::setenv("QUILLON_FRONT", "x", 1);
                  ::setenv("DVIPSHEADERS", "/mine:", 1);
                  ::setenv("PATH", "/usr/bin", 1);
                  ::unsetenv("TEXINPUTS");
                  const auto variables = [](const char *signature) {
                      common::Bundle bundle;
                      bundle.home = "/q";
                      bundle.path = "/q/x.app";
                      bundle.signature = signature;
                      return toolhost::run_environment(bundle, {"x"}, 31, "end");
                  };
                  auto pdf = variables("PXET"), tex = variables("*Xet"), dvips = variables("DVPS"),
                       metapost = variables("MPST");
                  EXPECT_EQ(pdf.count("QUILLON_FRONT"), 0u);
                  EXPECT_EQ(pdf["TEXINPUTS"], "/own//:");
                  EXPECT_EQ(pdf["DVIPSHEADERS"], "/mine::/h");
                  EXPECT_EQ(pdf["PATH"], "/q/bin:/usr/bin");
                  EXPECT_EQ(pdf["pool_size"] + pdf["main_memory"], "32");
                  EXPECT_EQ(tex["pool_size"] + tex["main_memory"], "12");
                  EXPECT_EQ(dvips.count("pool_size"), 0u);
                  for (auto *const one : {&pdf, &tex, &dvips})
                      EXPECT_EQ((*one)["MODE"] + (*one)["MKTEXPK"], "ljfour1");
                  EXPECT_EQ(metapost.count("MODE"), 0u);
                  EXPECT_EQ(metapost["TEX"], "latex");
                  EXPECT_EQ(tex.count("TEX"), 0u);
                  EXPECT_EQ(metapost["MPEDIT"], toolhost::edit_command("end"));
                  return ::testing::Test::HasFailure() ? 1 : 0;
              }),
              0);
}

TEST(Environment, TheEditCommandWritesTheLineAndTheName) {
    EXPECT_EQ(toolhost::edit_command("end"), "{ echo %d; cat; } >&9 <<'end'\n%s\nend\n");
}
