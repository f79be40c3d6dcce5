#include "desktop/console_search.h"

#include <QString>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "desktop/segment_layout.h"

namespace quillon::desktop {

namespace {

constexpr int space_substitute = 31;

void append(TextStore &store, const std::string &text) {
    store.append(text.data(), text.size());
}

// The offsets of the hits, found one after the other.
std::vector<std::size_t> hits_of(const ConsoleSearch &search, const TextStore &store) {
    std::vector<std::size_t> starts;
    for (auto hit = search.first_from(store, 0); hit; hit = search.first_from(store, hit->end))
        starts.push_back(hit->start);
    return starts;
}

ConsoleSearch search_for(const std::string &text, const TextStore &store, bool match_case = false) {
    ConsoleSearch search;
    search.set_pattern(SearchPattern(text, match_case, space_substitute));
    search.update(store);
    EXPECT_EQ(hits_of(search, store).size(), search.hits());
    return search;
}

std::size_t count(const std::string &text, const std::string &wanted, bool match_case = false) {
    TextStore store;
    append(store, text);
    return search_for(wanted, store, match_case).hits();
}

} // namespace

TEST(ConsoleSearch, FindsEveryHitInOrder) {
    TextStore store;
    append(store, "one two one\rtwo one\r");
    const ConsoleSearch search = search_for("one", store);
    EXPECT_EQ(hits_of(search, store), (std::vector<std::size_t>{0, 8, 16}));
    EXPECT_EQ(search.first_from(store, 1), (ByteRange{8, 11}));
    EXPECT_EQ(search.last_before(store, 16), (ByteRange{8, 11}));
    EXPECT_EQ(search.last_before(store, 17), (ByteRange{16, 19}));
    EXPECT_EQ(search.last_before(store, 0), std::nullopt);
    EXPECT_EQ(search.first_from(store, 17), std::nullopt);
    EXPECT_EQ(search.number_of(store, 16), 2u);
    EXPECT_EQ(search.hits_in(store, {1, 16}), (std::vector<ByteRange>{{8, 11}}));
}

TEST(ConsoleSearch, CaseCountsOnlyOnRequest) {
    EXPECT_EQ(count("Error error ERROR", "error"), 3u);
    EXPECT_EQ(count("Error error ERROR", "ERROR"), 3u);
    EXPECT_EQ(count("Error error ERROR", "Error", true), 1u);
}

TEST(ConsoleSearch, CaseOfLettersBeyondAscii) {
    EXPECT_EQ(count("\xC3\x89t\xC3\xA9 \xC3\xA9T\xC3\x89", "\xC3\xA9t\xC3\xA9"), 2u);
    EXPECT_EQ(count("\xD0\xA0 \xD1\x80", "\xD1\x80"), 2u);
    // The bytes of two other letters, mixed, are no hit.
    EXPECT_EQ(count("\xD0\x80 \xD1\xA0", "\xD1\x80"), 0u);
    EXPECT_EQ(count("\xC3\x89 \xC3\xA9", "\xC3\xA9", true), 1u);
}

TEST(ConsoleSearch, BlankFindsTheShellsSubstitute) {
    EXPECT_EQ(count("my\x1F"
                    "file my file",
                    "my file", true),
              2u);
}

TEST(ConsoleSearch, HitsDoNotOverlap) {
    EXPECT_EQ(count("aaaaaaa", "aaa"), 2u);
    EXPECT_EQ(count("abababab", "abab"), 2u);
}

TEST(ConsoleSearch, NothingIsFoundInNothing) {
    EXPECT_EQ(count("", "x"), 0u);
    EXPECT_EQ(count("xxx", ""), 0u);
    EXPECT_EQ(count("xx", "xxx"), 0u);
}

TEST(ConsoleSearch, HitsAcrossTheBorderOfBlocks) {
    const std::string word = "needle";
    for (std::size_t before = 0; before <= word.size(); ++before) {
        TextStore store;
        append(store, std::string(TextStore::block_size - before, '.') + word + "......needle");
        const ConsoleSearch search = search_for("Needle", store);
        ASSERT_EQ(search.hits(), 2u) << before;
        const std::size_t start = TextStore::block_size - before;
        EXPECT_EQ(search.first_from(store, 0), (ByteRange{start, start + 6}));
        EXPECT_EQ(search.number_of(store, start + 1), 1u);
        EXPECT_EQ(search.last_before(store, store.size()), (ByteRange{start + 12, start + 18}));
    }
}

TEST(ConsoleSearch, HitLongerThanABlock) {
    std::string word(TextStore::block_size + 100, 'a');
    word.back() = 'b';
    TextStore store;
    append(store, "xx" + word + "yy" + word);
    EXPECT_EQ(hits_of(search_for(word, store), store), (std::vector<std::size_t>{2, word.size() + 4}));
}

TEST(ConsoleSearch, TextThatComesLaterIsCounted) {
    TextStore store;
    append(store, "hit hi");
    ConsoleSearch search = search_for("hit", store);
    EXPECT_EQ(search.hits(), 1u);
    append(store, "t and hi");
    EXPECT_TRUE(search.update(store));
    EXPECT_EQ(search.hits(), 2u);
    EXPECT_FALSE(search.update(store));
    append(store, ".");
    EXPECT_FALSE(search.update(store));
    EXPECT_EQ(hits_of(search, store), (std::vector<std::size_t>{0, 4}));
}

TEST(ConsoleSearch, TextThatIsClearedIsCountedAnew) {
    TextStore store;
    append(store, "hit hit hit");
    ConsoleSearch search = search_for("hit", store);
    store.clear();
    EXPECT_EQ(search.first_from(store, 0), std::nullopt);
    append(store, "a longer text with one hit in it");
    EXPECT_TRUE(search.update(store));
    EXPECT_EQ(search.hits(), 1u);
    store.erase_last();
    search.update(store);
    EXPECT_EQ(search.hits(), 1u);
}

// What the search finds in pieces, appended piece by piece, is what a plain search of the whole finds.
TEST(ConsoleSearch, AgreesWithAPlainSearch) {
    std::mt19937 random(7);
    const auto below = [&random](unsigned limit) { return static_cast<std::size_t>(random() % limit); };
    for (int round = 0; round < 60; ++round) {
        std::string whole, wanted;
        TextStore store;
        for (std::size_t i = 0, length = 1 + below(5); i < length; ++i)
            wanted += static_cast<char>('a' + below(2));
        ConsoleSearch search;
        search.set_pattern(SearchPattern(wanted, true, space_substitute));
        while (whole.size() < 200000) {
            std::string part(1 + below(50000), ' ');
            for (char &byte : part)
                byte = static_cast<char>('a' + below(2));
            whole += part;
            append(store, part);
            search.update(store);
        }
        std::vector<std::size_t> expected;
        for (std::size_t at = whole.find(wanted); at != std::string::npos;
             at = whole.find(wanted, at + wanted.size()))
            expected.push_back(at);
        ASSERT_EQ(search.hits(), expected.size()) << wanted;
        const std::size_t middle = below(static_cast<unsigned>(expected.size()));
        EXPECT_EQ(search.number_of(store, expected[middle]), middle);
        EXPECT_EQ(search.first_from(store, expected[middle])->start, expected[middle]);
        EXPECT_EQ(search.last_before(store, expected[middle] + 1)->start, expected[middle]);
    }
}

// A character of the search and the selection is what the layout shows as one.
TEST(ConsoleSelection, CharactersAreThoseThatAreShown) {
    std::mt19937 random(11);
    const std::string alphabet = "a\r\x80\xA0\xBF\xC2\xC3\xE0\xED\xE2\xF0\xF4\x90\x9F\x8F\xFF";
    for (int round = 0; round < 20000; ++round) {
        std::string bytes;
        for (int i = 0; i < 6; ++i)
            bytes += alphabet[random() % alphabet.size()];
        ASSERT_EQ(shown_size(bytes.data(), bytes.size()),
                  static_cast<std::size_t>(shown_text(bytes.data(), bytes.size(), 0).size()));
        TextStore store;
        append(store, bytes);
        std::vector<std::size_t> forward{0}, backward{bytes.size()};
        while (forward.back() < bytes.size())
            forward.push_back(next_character(store, forward.back()));
        while (backward.back() > 0)
            backward.push_back(previous_character(store, backward.back()));
        ASSERT_EQ(forward, std::vector<std::size_t>(backward.rbegin(), backward.rend()));
    }
}

TEST(ConsoleSelection, WordsAndLines) {
    TextStore store;
    append(store, "a word_1 (caf\xC3\xA9)  x\rnext");
    EXPECT_EQ(word_at(store, 4), (ByteRange{2, 8}));
    EXPECT_EQ(word_at(store, 9), (ByteRange{9, 10}));
    EXPECT_EQ(word_at(store, 12), (ByteRange{10, 15}));
    EXPECT_EQ(word_at(store, 16), (ByteRange{16, 18}));
    EXPECT_EQ(word_at(store, 19), (ByteRange{19, 19}));
    EXPECT_EQ(line_at(store, 5), (ByteRange{0, 20}));
    EXPECT_EQ(line_at(store, 19), (ByteRange{0, 20}));
    EXPECT_EQ(line_at(store, 20), (ByteRange{20, 24}));
    EXPECT_EQ(next_word(store, 2), 8u);
    EXPECT_EQ(previous_word(store, 24), 20u);
    EXPECT_EQ(previous_word(store, 20), 18u);
}

TEST(ConsoleSelection, GrowsByItsUnitInBothDirections) {
    TextStore store;
    append(store, "one two three\rfour");
    ConsoleSelection selection;
    selection.begin(store, 5, SelectionUnit::word);
    EXPECT_EQ(selection.range(store), (ByteRange{4, 7}));
    selection.extend(store, 9);
    EXPECT_EQ(selection.range(store), (ByteRange{4, 13}));
    selection.extend(store, 1);
    EXPECT_EQ(selection.range(store), (ByteRange{0, 7}));
    selection.begin(store, 15, SelectionUnit::line);
    EXPECT_EQ(selection.range(store), (ByteRange{14, 18}));
    append(store, " five\rsix");
    selection.extend(store, 16);
    EXPECT_EQ(selection.range(store), (ByteRange{14, 24}));
    selection.extend(store, 2);
    EXPECT_EQ(selection.range(store), (ByteRange{0, 24}));
    selection.extend_by_characters(store, 4);
    EXPECT_EQ(selection.range(store), (ByteRange{4, 24}));
}

TEST(ConsoleSelection, TakesTheWholeCharacterThatGrewAtItsEnd) {
    TextStore store;
    append(store, "ab\xE2\x82");
    ConsoleSelection selection;
    selection.set(store, {1, 3});
    append(store, "\xAC!");
    EXPECT_EQ(selection.range(store), (ByteRange{1, 5}));
}

TEST(ConsoleSelection, IsGoneOnceTheTextIsCleared) {
    TextStore store;
    append(store, "some text");
    ConsoleSelection selection;
    selection.set(store, {0, 4});
    store.clear();
    append(store, "some other text");
    EXPECT_TRUE(selection.range(store).empty());
    EXPECT_TRUE(selection.clear_if_outdated(store));
    EXPECT_FALSE(selection.begun());
}

} // namespace quillon::desktop
