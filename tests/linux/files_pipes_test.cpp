#include <gtest/gtest.h>

#include <cstdio>

#include "toolbox/pipes.h"

using namespace quillon;

TEST(Pipes, FunctionsAreFoundByNameAtRunTime) {
    ASSERT_EQ(SystemFrameworkLoad(), 1);
    for (const char *const function : {"popen", "pclose", "fgets", "fgetc", "fread", "chdir"})
        EXPECT_NE(SystemFunction(function), nullptr) << function;
    EXPECT_EQ(SystemFunction("no_such_function"), nullptr);
    const auto open_pipe =
        reinterpret_cast<std::FILE *(*)(const char *, const char *)>(SystemFunction("popen"));
    const auto close_pipe = reinterpret_cast<int (*)(std::FILE *)>(SystemFunction("pclose"));
    std::FILE *const pipe = open_pipe("printf x", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(std::fgetc(pipe), 'x');
    EXPECT_EQ(close_pipe(pipe), 0);
}
