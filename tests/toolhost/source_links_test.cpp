// The SyncTeX file of a run with a snapshot becomes what it is without one.
#include <gtest/gtest.h>

#include "support/temporary_home.h"
#include "toolhost/gzip.h"
#include "toolhost/source_links.h"

namespace toolhost {
namespace {

using quillon::test::TemporaryHome;

const std::string tail = "Postamble:\nCount:3\n";

// Returns TEXT with the right number behind each "!#", and with the end that each such text has.
std::string counted(const std::string &text) {
    std::string result;
    std::size_t since = 0;
    const std::string whole = text + "!#\nPost scriptum:\n";
    for (std::size_t at = 0; at < whole.size();) {
        const std::size_t end = whole.find('\n', at) + 1;
        std::string line = whole.substr(at, end - at);
        if (line == "!#\n") {
            line = "!" + std::to_string(result.size() - since) + "\n";
            since = result.size();
        }
        result += line;
        at = end;
    }
    return result;
}

// The preamble opens two files; the start passes over four numbers.
class SourceLinks : public ::testing::Test {
  protected:
    SourceLinks() {
        texts_.passed_files = 4;
        texts_.preamble_files = {"/t/article.cls", "/w/./own.sty"};
    }
    // Returns the completed text, "-" when there is none.
    std::string completed(const std::string &text) {
        std::string whole;
        return complete_link_text(text, texts_, &whole) ? whole : "-";
    }
    std::string places(const std::string &lines) { return completed(counted(head_ + "!#\n" + lines + tail)); }
    std::string places_without(const std::string &lines) { return counted(wanted_ + "!#\n" + lines + tail); }

    SnapshotTexts texts_;
    const std::string head_ =
        "SyncTeX Version:1\nInput:1:/w/./doc.tex\nInput:2:/dev/null\nInput:3:/dev/null\n"
        "Input:4:/dev/null\nInput:5:/dev/null\nInput:6:/w/./doc.aux\nOutput:pdf\nContent:\n";
    const std::string wanted_ = "SyncTeX Version:1\nInput:1:/w/./doc.tex\nInput:2:/t/article.cls\n"
                                "Input:3:/w/./own.sty\nInput:4:/w/./doc.aux\nOutput:pdf\nContent:\n";
};

TEST_F(SourceLinks, FilesAndCountsBecomeThoseOfARunWithoutASnapshot) {
    EXPECT_EQ(places("{1\n[1,9:0,0:1,2,3\n]\n!#\n}1\nInput:7:/w/./b.tex\n"),
              places_without("{1\n[1,9:0,0:1,2,3\n]\n!#\n}1\nInput:5:/w/./b.tex\n"));
}

TEST_F(SourceLinks, EachKindOfPlaceHasItsFileAndOthersStay) {
    std::string given, wanted;
    for (const char kind : std::string("[(hvkgx$r")) {
        const std::string mark(1, kind);
        for (const auto &[old_number, number] :
             {std::pair{"0", "0"}, {"1", "1"}, {"2", "1"}, {"3", "2"}, {"4", "3"}, {"6", "4"}}) {
            given += mark + old_number + ",7:1,2:3\n";
            wanted += mark + number + ",7:1,2:3\n";
        }
    }
    const std::string others = "]\n)\n{6\n}6\n<6\n>\nf6:1,2\nc6,7\n\n";
    EXPECT_EQ(places(given + others), places_without(wanted + others));
}

TEST_F(SourceLinks, NumbersThatNoFileHasAreRefused) {
    for (const char *const number : {"5", "7", "65536", "4294967295", "4294967296", "18446744073709551615",
                                     "18446744073709551616", "99999999999999999999999999"})
        EXPECT_EQ(places(std::string("x") + number + ",7:1,2\n"), "-") << number;
    EXPECT_NE(places("x6,99999999999:1,2\n"), "-");
    // A file is named before it has a place.
    EXPECT_EQ(places("x7,1:1,2\nInput:7:/w/./b.tex\n"), "-");
    EXPECT_NE(places("Input:7:/w/./b.tex\nx7,1:1,2\n"), "-");
}

TEST_F(SourceLinks, LinesThatAreNoneOfTheEngineAreRefused) {
    for (const char *const line : {"x\n", "x,\n", "x 1,2:3\n", "x-1,2:3\n", "x+1,2:3\n", "h1\n", "[one,2\n",
                                   "Input:\n", "Input:7\n", "Input:x:/a\n", "Input:8:/a\n", "Input:6:/a\n",
                                   "!\n", "!0\n", "!x\n", "!12 \n", "!99999999999999999999999\n"})
        EXPECT_EQ(places(line), "-") << line;
}

TEST_F(SourceLinks, OnlyATextOfThisSnapshotIsCompleted) {
    const std::string text = counted(head_ + "!#\n" + tail);
    ASSERT_NE(completed(text), "-");
    EXPECT_EQ(completed(completed(text)), "-");
    for (const std::size_t passed : {0U, 1U, 2U, 5U}) {
        texts_.passed_files = passed;
        EXPECT_EQ(completed(text), "-") << passed;
    }
    texts_.passed_files = 4;
    texts_.preamble_files.resize(4);
    EXPECT_EQ(completed(text), "-");
}

TEST_F(SourceLinks, ATextThatIsCutShortAnywhereIsNone) {
    const std::string text = counted(head_ + "!#\n{1\nx6,1:2,3\n}1\n" + tail);
    ASSERT_NE(completed(text), "-");
    for (std::size_t length = 0; length < text.size(); length++)
        EXPECT_EQ(completed(text.substr(0, length)), "-") << length;
    EXPECT_EQ(completed(text.substr(1)), "-");
}

TEST_F(SourceLinks, ThePreambleMayOpenNoFileAndTheBodyNone) {
    texts_.passed_files = 1;
    texts_.preamble_files.clear();
    EXPECT_EQ(completed(counted("SyncTeX Version:1\nInput:1:a\nInput:2:/dev/null\n!#\nx2,3:1,1\n")),
              counted("SyncTeX Version:1\nInput:1:a\n!#\nx1,3:1,1\n"));
}

TEST_F(SourceLinks, FilesAreNumberedFromOneOn) {
    EXPECT_EQ(linked_files("X\nInput:1:a\nInput:2:b:c\n!3\nInput:3:\n"),
              (std::vector<std::string>{"a", "b:c", ""}));
    for (const char *const text : {"", "X\n", "Input:2:a\n", "Input:1:a\nInput:3:b\n",
                                   "Input:1:a\nInput:1:b\n", "Input:0:a\n", "Input:1:a", "Input:1a\n"})
        EXPECT_TRUE(linked_files(text).empty()) << text;
}

TEST_F(SourceLinks, OnlyTheWordOfAddSourceLinksCounts) {
    EXPECT_TRUE(writes_links({"pdftex", "-synctex=1", "doc"}));
    EXPECT_TRUE(writes_links({"pdftex", "--synctex=1", "doc"}));
    EXPECT_FALSE(writes_links({"pdftex", "-synctex=2", "doc"}));
    EXPECT_FALSE(writes_links({"pdftex", "doc"}));
}

class LinksFile : public SourceLinks {
  protected:
    bool complete(const std::string &content) {
        path_ = home_.file("work/doc.synctex.gz", content);
        return complete_links(path_, texts_);
    }
    TemporaryHome home_;
    std::string path_;
};

TEST_F(LinksFile, AFileIsCompletedInItsPlace) {
    const std::string text = counted(head_ + "!#\nx3,1:2,3\n" + tail);
    EXPECT_TRUE(complete(gzip_of(text)));
    std::string found;
    EXPECT_TRUE(read_gzip(path_, largest_links, &found));
    EXPECT_EQ(found, counted(wanted_ + "!#\nx2,1:2,3\n" + tail));
    EXPECT_FALSE(complete_links(home_.path("none"), texts_));
    EXPECT_FALSE(std::filesystem::exists(home_.path("none")));
}

TEST_F(LinksFile, ADamagedFileStaysAsItIs) {
    const std::string packed = gzip_of(counted(head_ + "!#\n" + tail));
    std::string bent = packed;
    bent[bent.size() / 2] = static_cast<char>(bent[bent.size() / 2] ^ 0x55);
    for (const std::string &content :
         {std::string(), std::string("no such file"), packed.substr(0, packed.size() - 1),
          packed.substr(0, 12), packed + "x", bent}) {
        EXPECT_FALSE(complete(content));
        EXPECT_EQ(home_.read("work/doc.synctex.gz"), content);
    }
}

TEST_F(LinksFile, ALongFileIsReadInPiecesAndATooLongOneNot) {
    std::string text;
    for (int i = 0; text.size() < 3'000'000; i++)
        text += "x" + std::to_string(i) + "\n";
    const std::string path = home_.file("work/long.gz", gzip_of(text));
    std::string found;
    EXPECT_TRUE(read_gzip(path, text.size(), &found));
    EXPECT_EQ(found, text);
    EXPECT_FALSE(read_gzip(path, text.size() - 1, &found));
    EXPECT_EQ(found, "");
    EXPECT_FALSE(read_gzip(path, 1000, &found));
}

} // namespace
} // namespace toolhost
