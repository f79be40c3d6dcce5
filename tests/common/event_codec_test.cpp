#include "common/event_codec.h"

#include <gtest/gtest.h>

#include "common/path_forms.h"

namespace common {
namespace {

TEST(EventCodec, CodesAsNumbers) {
    EXPECT_EQ(code_number("PXET"), 0x50584554);
    EXPECT_EQ(code_number("PX"), 0x50580000);
}

TEST(EventCodec, TheFirstParameterOfAKeywordIsFound) {
    const Parameters parameters = {text_parameter("----", "a"), number_parameter("edit", 1),
                                   path_parameter("----", "/b")};
    EXPECT_EQ(find_parameter(parameters, "----")->bytes, "a");
    EXPECT_EQ(find_parameter(parameters, "edit")->number, 1);
    EXPECT_EQ(find_parameter(parameters, "logf"), nullptr);
}

TEST(PathForms, BlanksAndColonsStandForBytes) {
    EXPECT_EQ(to_unix_path("/a b:c", 31), "/a\x1f"
                                          "b\x1e"
                                          "c");
    EXPECT_EQ(to_posix_path("/a\x1f"
                            "b\x1e"
                            "c",
                            31),
              "/a b:c");
    EXPECT_EQ(to_posix_path("/a\xCA"
                            "b",
                            202),
              "/a b");
}

TEST(PathForms, TheTildeIsTheBinariesFolder) {
    EXPECT_EQ(expand_setting_path("~", "/q/lib", 31), "/q/lib");
    EXPECT_EQ(expand_setting_path("~/x", "/q/lib", 31), "/q/lib/x");
    EXPECT_EQ(expand_setting_path("~/../x", "/q/lib", 31), "/q/x");
    EXPECT_EQ(expand_setting_path("~x", "/q/lib", 31), "~x");
}

TEST(PathForms, RelativePathsAreTakenInAFolder) {
    EXPECT_EQ(absolute_path("/a", "b"), "/a/b");
    EXPECT_EQ(absolute_path("/a/", ".//./b"), "/a/b");
    EXPECT_EQ(absolute_path("/a", "/b"), "/b");
}

TEST(PathForms, PartsOfPaths) {
    EXPECT_EQ(leaf_of("/a/b"), "b");
    EXPECT_EQ(leaf_of("b"), "b");
    EXPECT_EQ(folder_above("/a/b/c"), "/a/b");
    EXPECT_EQ(folder_above("/a/b/c", 2), "/a");
    EXPECT_EQ(folder_above("/a", 3), "");
    EXPECT_EQ(split_list("a::b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(split_list(""), std::vector<std::string>{""});
}

TEST(PathForms, UrisOfFiles) {
    EXPECT_EQ(file_uri("/a b/%\xC3\xA9"), "file:///a%20b/%25%C3%A9");
    EXPECT_EQ(path_of_uri("file:///a%20b/%25%C3%A9"), "/a b/%\xC3\xA9");
    EXPECT_EQ(path_of_uri("file://host/a%2"), "/a%2");
    EXPECT_EQ(path_of_uri("http:///a"), "");
    EXPECT_EQ(path_of_uri("file://"), "");
}

} // namespace
} // namespace common
