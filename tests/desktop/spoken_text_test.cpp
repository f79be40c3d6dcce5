#include "desktop/spoken_text.h"

#include <gtest/gtest.h>

#include <string>

namespace quillon::desktop {

namespace {

void write(TextStore &store, const std::string &text) {
    store.append(text.data(), text.size());
}

// Applies the change to what a reader had.
QString applied(const QString &before, const SpokenText::Change &change, const QString &now) {
    if (change.replaced)
        return now;
    QString result = before.mid(change.front_removed);
    EXPECT_EQ(result.mid(change.changed_from, change.removed.size()), change.removed);
    EXPECT_EQ(result.size(), change.changed_from + change.removed.size());
    return result.left(change.changed_from) + now.mid(change.changed_from);
}

} // namespace

TEST(SpokenText, WholeOfAShortText) {
    TextStore store;
    write(store, "a\rb\r");
    SpokenText spoken;
    EXPECT_TRUE(spoken.refresh(&store, 0, true, 31).replaced);
    EXPECT_EQ(spoken.text(), QStringLiteral("a\nb\n"));
}

TEST(SpokenText, AppendedTextIsTheOnlyChange) {
    TextStore store;
    write(store, "a\rb");
    SpokenText spoken;
    spoken.refresh(&store, 0, true, 31);
    write(store, "c\rd");
    const SpokenText::Change change = spoken.refresh(&store, 0, true, 31);
    EXPECT_FALSE(change.replaced);
    EXPECT_EQ(change.changed_from, 3);
    EXPECT_TRUE(change.removed.isEmpty());
    EXPECT_EQ(spoken.text(), QStringLiteral("a\nbc\nd"));
}

TEST(SpokenText, CompletedCharacterReplacesItsMarks) {
    TextStore store;
    write(store, "x\xE2\x82");
    SpokenText spoken;
    spoken.refresh(&store, 0, true, 31);
    const QString before = spoken.text();
    write(store, "\xAC");
    const SpokenText::Change change = spoken.refresh(&store, 0, true, 31);
    EXPECT_EQ(spoken.text(), QStringLiteral("x\u20ac"));
    EXPECT_EQ(applied(before, change, spoken.text()), spoken.text());
}

TEST(SpokenText, ReaderThatFollowsTheChangesHasTheRecentText) {
    TextStore store;
    SpokenText spoken;
    spoken.refresh(&store, 0, true, 31);
    QString reader;
    std::size_t front_drops = 0;
    for (int i = 0; i < 40000; ++i) {
        write(store, "line " + std::to_string(i) + " of a long log, \xC3\xA9\r");
        if (i % 7)
            continue;
        const SpokenText::Change change = spoken.refresh(&store, 0, true, 31);
        front_drops += change.front_removed > 0;
        reader = applied(reader, change, spoken.text());
        ASSERT_EQ(reader, spoken.text());
        ASSERT_LE(static_cast<std::size_t>(spoken.text().size()), SpokenText::largest + 4096);
    }
    EXPECT_TRUE(reader.endsWith(QStringLiteral("line 39998 of a long log, \u00e9\n")) ||
                reader.contains(QStringLiteral("line 39990 ")));
    EXPECT_GT(front_drops, 2u);
    EXPECT_LT(front_drops, 20u); // offsets move seldom
}

TEST(SpokenText, FloodBetweenTwoLooksStaysWithinTheLimit) {
    TextStore store;
    write(store, "start\r");
    SpokenText spoken;
    spoken.refresh(&store, 0, true, 31);
    for (int i = 0; i < 100000; ++i)
        write(store, "sixty bytes of a line that a tool prints while it runs on...\r");
    spoken.refresh(&store, 0, true, 31);
    EXPECT_LE(static_cast<std::size_t>(spoken.text().size()), SpokenText::largest);
    EXPECT_GT(spoken.text().size(), 1000);
}

TEST(SpokenText, ScrolledUpOffersWhatIsSeen) {
    TextStore store;
    for (int i = 0; i < 50000; ++i)
        write(store, "line " + std::to_string(i) + "\r");
    SpokenText spoken;
    spoken.refresh(&store, 49980, true, 31);
    spoken.refresh(&store, 20000, false, 31);
    EXPECT_TRUE(spoken.text().contains(QStringLiteral("line 20000\n")));
    EXPECT_EQ(spoken.text().mid(spoken.start_of(20000), 10), QStringLiteral("line 20000"));
    EXPECT_EQ(spoken.segment_of(spoken.start_of(20000) + 4), 20000u);
    EXPECT_FALSE(spoken.refresh(&store, 20010, false, 31).replaced);
}

TEST(SpokenText, ClearedTextIsReplaced) {
    TextStore store;
    write(store, "old\r");
    SpokenText spoken;
    spoken.refresh(&store, 0, true, 31);
    store.clear();
    const SpokenText::Change change = spoken.refresh(&store, 0, true, 31);
    EXPECT_TRUE(change.replaced);
    EXPECT_EQ(change.removed, QStringLiteral("old\n"));
    EXPECT_EQ(spoken.text(), QString());
}

} // namespace quillon::desktop
