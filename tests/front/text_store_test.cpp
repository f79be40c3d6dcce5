#include "front/text_store.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using quillon::TextStore;

namespace {

std::string whole(const TextStore &store) {
    std::string text(store.size(), '\0');
    EXPECT_EQ(store.copy(0, store.size(), text.data(), text.size()), text.size());
    return text;
}

// The rule for segments, the slow way.
std::vector<TextStore::Segment> naive_segments(const std::string &text) {
    std::vector<TextStore::Segment> segments;
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = text.find('\r', start);
        if (found != std::string::npos && found <= start + TextStore::segment_limit) {
            segments.push_back({start, found, true});
            start = found + 1;
        } else if (text.size() > start + TextStore::segment_limit) {
            std::size_t cut = start + TextStore::segment_limit;
            while (cut + 4 > start + TextStore::segment_limit && (text[cut] & 0xC0) == 0x80)
                --cut;
            if ((text[cut] & 0xC0) == 0x80)
                cut = start + TextStore::segment_limit;
            segments.push_back({start, cut, false});
            start = cut;
        } else {
            segments.push_back({start, text.size(), false});
            return segments;
        }
    }
}

void expect_same(const TextStore &store, const std::string &text) {
    ASSERT_EQ(store.size(), text.size());
    ASSERT_EQ(whole(store), text);
    const auto expected = naive_segments(text);
    ASSERT_EQ(store.segments(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const TextStore::Segment segment = store.segment(i);
        ASSERT_EQ(segment.start, expected[i].start) << "segment " << i;
        ASSERT_EQ(segment.end, expected[i].end) << "segment " << i;
        ASSERT_EQ(segment.ends_line, expected[i].ends_line) << "segment " << i;
        ASSERT_EQ(store.segment_at(segment.start), i);
        if (segment.end < text.size() && segment.ends_line) {
            ASSERT_EQ(store.segment_at(segment.end), i);
        }
    }
    const auto ends = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\r'));
    ASSERT_EQ(store.line_ends(), ends);
}

void append(TextStore &store, std::string &model, const std::string &text) {
    store.append(text.data(), text.size());
    model += text;
}

} // namespace

// COUNT bytes, and TAIL behind them.
static std::string filled(std::size_t count, char byte, const char *tail) {
    std::string text(count, byte);
    text += tail;
    return text;
}

TEST(TextStore, EmptyTextIsOneEmptySegmentAndNoLine) {
    const TextStore store;
    EXPECT_EQ(store.segments(), 1u);
    EXPECT_EQ(store.line_ends(), 0u);
    EXPECT_EQ(store.segment(0).end, 0u);
    EXPECT_EQ(store.segment_at(0), 0u);
}

TEST(TextStore, LineEndAtTheEdgeOfABlock) {
    for (const std::size_t before : {65534u, 65535u, 65536u, 65537u}) {
        TextStore store;
        std::string model;
        for (std::size_t i = 0; i < before; ++i)
            append(store, model, i % 61 == 60 ? "\r" : "x");
        append(store, model, "\r");
        append(store, model, "after\r\r");
        expect_same(store, model);
    }
}

TEST(TextStore, LineEndRightAfterAFullSegmentClosesIt) {
    TextStore store;
    std::string model;
    append(store, model, std::string(TextStore::segment_limit, 'x'));
    EXPECT_EQ(store.segments(), 1u);
    append(store, model, "\r");
    EXPECT_EQ(store.segments(), 2u);
    EXPECT_TRUE(store.segment(0).ends_line);
    append(store, model, std::string(TextStore::segment_limit, 'y'));
    append(store, model, "z");
    EXPECT_EQ(store.segments(), 3u);
    EXPECT_FALSE(store.segment(1).ends_line);
    expect_same(store, model);
}

TEST(TextStore, LongLineIsNeverCutInsideACharacter) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
        TextStore store;
        std::string model;
        append(store, model, std::string(shift, 'a'));
        for (int i = 0; i < 40000; ++i)
            append(store, model, "\xF0\x9D\x94\xB8");
        expect_same(store, model);
        for (std::size_t i = 1; i < store.segments(); ++i)
            ASSERT_EQ(store.byte(store.segment(i).start), 0xF0);
    }
}

TEST(TextStore, LongRunOfContinuationBytesIsStillCut) {
    TextStore store;
    std::string model;
    append(store, model, std::string(3 * TextStore::segment_limit + 5, '\x80'));
    EXPECT_EQ(store.segments(), 4u);
    expect_same(store, model);
}

TEST(TextStore, HundredMegabytesOfNulsWithoutALineEnd) {
    TextStore store;
    const std::string nuls(1 << 20, '\0');
    for (int i = 0; i < 100; ++i)
        store.append(nuls.data(), nuls.size());
    EXPECT_EQ(store.size(), 100u << 20);
    EXPECT_EQ(store.segments(), (100u << 20) / TextStore::segment_limit);
    const TextStore::Segment middle = store.segment(store.segments() / 2);
    EXPECT_EQ(middle.end - middle.start, TextStore::segment_limit);
    EXPECT_EQ(store.segment_at(middle.start + 7), store.segments() / 2);
}

static std::size_t allocated_bytes() {
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(TextStore, KeepsAtMostOneAndAHalfBytesAByte) {
    for (const char *const line :
         {"\r", "x\r", "sixty bytes of a line that a tool prints while it runs on....\r"}) {
        const std::size_t before = allocated_bytes();
        TextStore store;
        const std::size_t length = std::char_traits<char>::length(line);
        while (store.size() < 4u << 20)
            store.append(line, length);
        const std::size_t used = allocated_bytes() - before;
        EXPECT_LT(static_cast<double>(used), 1.5 * static_cast<double>(store.size())) << length;
    }
}

TEST(TextStore, EraseTakesBackLineEndsSplitsAndBlocks) {
    TextStore store;
    std::string model;
    append(store, model, filled(TextStore::block_size - 2, 'x', "\r\ry"));
    append(store, model, std::string(TextStore::segment_limit + 1, 'z'));
    const std::size_t generation = store.generation();
    for (int i = 0; i < 9000; ++i) {
        ASSERT_EQ(store.erase_last(), 1);
        model.pop_back();
        if (i % 97 == 0 || model.size() > TextStore::block_size - 4)
            expect_same(store, model);
        if (HasFatalFailure())
            return;
    }
    EXPECT_NE(store.generation(), generation);
    append(store, model, "more\r");
    expect_same(store, model);
}

TEST(TextStore, EraseOfEmptyTextFails) {
    TextStore store;
    EXPECT_EQ(store.erase_last(), 0);
    store.append("a", 1);
    EXPECT_EQ(store.erase_last(), 1);
    EXPECT_EQ(store.erase_last(), 0);
    expect_same(store, "");
}

TEST(TextStore, CopyKeepsToItsRoomAndToTheText) {
    TextStore store;
    const std::string text = filled(TextStore::block_size - 3, 'a', "bcdefg");
    store.append(text.data(), text.size());
    char room[8] = {};
    EXPECT_EQ(store.copy(TextStore::block_size - 4, store.size() + 9, room, 5), 5u);
    EXPECT_EQ(std::string(room, 5), "abcde");
    EXPECT_EQ(store.copy(store.size() - 1, store.size() + 9, room, 8), 1u);
    EXPECT_EQ(store.copy(store.size(), store.size() + 9, room, 8), 0u);
    EXPECT_EQ(store.copy(5, 2, room, 8), 0u);
}

TEST(TextStore, ClearForgetsEverything) {
    TextStore store;
    std::string model;
    append(store, model, filled(200000, 'x', "\r"));
    store.segment(3);
    store.clear();
    expect_same(store, "");
    model.clear();
    append(store, model, "a\rb");
    expect_same(store, model);
}

TEST(TextStore, AgreesWithTheSlowRuleOnRandomText) {
    std::mt19937 random(20240611);
    const std::string pieces[] = {
        "\r",   "x",    "\xC3\xA9",           "\xE2\x82\xAC",        "\xF0\x9F\x96\x8B",
        "\x80", "\xFF", std::string(1, '\0'), std::string(700, 'w'), std::string(5000, 'l')};
    for (int round = 0; round < 12; ++round) {
        TextStore store;
        std::string model, batch;
        std::discrete_distribution<std::size_t> piece(
            round % 2 ? std::initializer_list<double>{9, 50, 5, 5, 5, 2, 2, 2, 1, 1}
                      : std::initializer_list<double>{1, 50, 30, 30, 30, 9, 9, 9, 1, 1});
        while (model.size() < 300000) {
            batch.clear();
            for (auto count = random() % 40; count > 0; --count)
                batch += pieces[piece(random)];
            append(store, model, batch);
            for (auto count = random() % 50 == 0 ? random() % 30 : 0; count > 0 && !model.empty(); --count) {
                store.erase_last();
                model.pop_back();
            }
        }
        expect_same(store, model);
        if (HasFatalFailure())
            return;
        // Again in a random order, without the help of a walk forward.
        const auto expected = naive_segments(model);
        for (int i = 0; i < 300; ++i) {
            const std::size_t number = random() % expected.size();
            ASSERT_EQ(store.segment(number).start, expected[number].start);
            ASSERT_EQ(store.segment_at(expected[number].start), number);
        }
    }
}

TEST(TextStore, KeepsItsLastLines) {
    TextStore store;
    std::string text;
    for (int line = 0; line < 20000; line++)
        text += "line " + std::to_string(line) + "\r";
    store.append(text.data(), text.size());
    const std::size_t generation = store.generation();
    store.keep_last(text.size());
    EXPECT_EQ(store.size(), text.size());
    store.keep_last(100000);
    const std::string expected = text.substr(text.find('\r', text.size() - 100000) + 1);
    std::string kept(store.size(), ' ');
    store.copy(0, store.size(), kept.data(), kept.size());
    EXPECT_EQ(kept, expected);
    EXPECT_EQ(store.line_ends(),
              static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '\r')));
    EXPECT_EQ(store.segments(), store.line_ends() + 1);
    EXPECT_NE(store.generation(), generation);
    store.append("x", 1);
    EXPECT_EQ(store.byte(store.size() - 1), 'x');
    store.keep_last(0);
    EXPECT_EQ(store.size(), 0u);
}

TEST(TextStore, ALineLongerThanWhatIsKeptIsCut) {
    TextStore store;
    const std::string text(300000, 'a');
    store.append(text.data(), text.size());
    store.keep_last(100000);
    EXPECT_EQ(store.size(), 100000u);
    EXPECT_EQ(store.line_ends(), 0u);
}
