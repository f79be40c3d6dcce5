#include "desktop/console_view.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

#include <string>

#include "desktop/console_window.h"
#include "state/job_state.h"
#include "toolbox/events.h"

namespace quillon::desktop {

namespace {

class View : public testing::Test {
  protected:
    void SetUp() override {
        space_char = 31;
        drain();
        view_.set_text_font(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        view_.attach(&store_);
        view_.show();
        resize(80, 20);
    }

    void resize(int columns, int rows) { size_text(view_, columns, rows); }

    void write(const std::string &text) {
        store_.append(text.data(), text.size());
        view_.appended();
    }
    void write_lines(int from, int to) {
        for (int i = from; i < to; ++i)
            write("line " + std::to_string(i) + "\r");
    }
    std::string row(int index) { return view_.row_text(index).toStdString(); }
    std::string last_row() { return row(view_.visible_rows() - 1); }

    static void drain() {
        EventRecord event;
        while (GetNextEvent(everyEvent, &event))
            ;
    }

    TextStore store_;
    ConsoleView view_;
};

} // namespace

TEST_F(View, ShowsTheTextFromTheTopWhileItFits) {
    write("one\rtwo\r");
    EXPECT_EQ(row(0), "one");
    EXPECT_EQ(row(1), "two");
    EXPECT_TRUE(view_.at_end());
}

TEST_F(View, StaysAtTheEndAsTextIsAppended) {
    write_lines(0, 500);
    EXPECT_EQ(last_row(), "line 499");
    write_lines(500, 1000);
    EXPECT_EQ(last_row(), "line 999");
    EXPECT_EQ(view_.verticalScrollBar()->value(), view_.verticalScrollBar()->maximum());
}

TEST_F(View, StaysWhereThePersonScrolledTo) {
    write_lines(0, 500);
    view_.settle();
    QTest::keyClick(&view_, Qt::Key_PageUp);
    const std::string first = row(0);
    EXPECT_FALSE(view_.at_end());
    write_lines(500, 1000);
    EXPECT_EQ(row(0), first);
    QTest::keyClick(&view_, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(last_row(), "line 999");
    write_lines(1000, 1001);
    EXPECT_EQ(last_row(), "line 1000");
}

TEST_F(View, ScrollingBackDownFollowsTheEndAgain) {
    write_lines(0, 100);
    view_.scroll_rows(-3);
    EXPECT_FALSE(view_.at_end());
    view_.scroll_rows(2);
    EXPECT_FALSE(view_.at_end());
    view_.scroll_rows(9);
    EXPECT_TRUE(view_.at_end());
    EXPECT_EQ(last_row(), "line 99");
}

TEST_F(View, KeysScrollByRowPageAndWhole) {
    write_lines(0, 500);
    view_.settle();
    QTest::keyClick(&view_, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(row(0), "line 0");
    QTest::keyClick(&view_, Qt::Key_Down);
    EXPECT_EQ(row(0), "line 1");
    QTest::keyClick(&view_, Qt::Key_PageDown);
    EXPECT_EQ(row(0), "line " + std::to_string(view_.visible_rows()));
    QTest::keyClick(&view_, Qt::Key_Up);
    EXPECT_EQ(row(0), "line " + std::to_string(view_.visible_rows() - 1));
}

TEST_F(View, DraggingTheScrollBarGoesThere) {
    write_lines(0, 1000);
    view_.settle();
    QScrollBar *const bar = view_.verticalScrollBar();
    bar->setValue(0);
    EXPECT_EQ(row(0), "line 0");
    bar->setValue(bar->maximum() / 2);
    EXPECT_FALSE(view_.at_end());
    bar->setValue(bar->maximum());
    EXPECT_TRUE(view_.at_end());
    EXPECT_EQ(last_row(), "line 999");
}

TEST_F(View, BothScrollBarsAreShownAndTheLowerOneIsEmpty) {
    write(std::string(5000, 'x'));
    view_.settle();
    EXPECT_TRUE(view_.horizontalScrollBar()->isVisible());
    EXPECT_TRUE(view_.verticalScrollBar()->isVisible());
    EXPECT_EQ(view_.horizontalScrollBar()->maximum(), 0);
}

TEST_F(View, WrapsAtWordsAndOtherwiseAtTheEdge) {
    resize(20, 10);
    write("a line of words that wraps\r");
    write(std::string(45, 'w') + "\r");
    EXPECT_EQ(row(0), "a line of words that ");
    EXPECT_EQ(row(1), "wraps");
    EXPECT_EQ(row(2), std::string(20, 'w'));
    EXPECT_EQ(row(4), std::string(5, 'w'));
}

TEST_F(View, WrapsAgainWhenTheWindowIsResized) {
    write(std::string(100, 'w') + "\r");
    EXPECT_EQ(row(0), std::string(80, 'w'));
    resize(50, 20);
    EXPECT_EQ(row(0), std::string(50, 'w'));
    EXPECT_EQ(row(1), std::string(50, 'w'));
}

TEST_F(View, ExactlyFullRowTakesOneRow) {
    write(std::string(80, 'w') + "\rnext\r");
    EXPECT_EQ(row(0), std::string(80, 'w'));
    EXPECT_EQ(row(1), "next");
}

TEST_F(View, CharacterSplitOverTwoWritesShowsWhole) {
    write("price \xE2\x82");
    EXPECT_EQ(row(0), "price \xEF\xBF\xBD\xEF\xBF\xBD");
    write("\xAC\r");
    EXPECT_EQ(row(0), "price \xE2\x82\xAC");
}

TEST_F(View, CharacterSplitOverTwoBlocksShowsWhole) {
    std::string text;
    while (text.size() < TextStore::block_size - 60)
        text += "0123456789012345678901234567890123456789\r";
    text.resize(TextStore::block_size - 1 - 2, 'x');
    text[text.size() - 1] = '\r';
    write(text + "\xF0\x9D\x94\xB8 whole\r");
    EXPECT_EQ(last_row(), "\xF0\x9D\x94\xB8 whole");
}

TEST_F(View, BytesThatAreNotTextShowAsMarks) {
    write(std::string("a\xFF\xFE\0b\x1B[0m\x7F\n", 11) + "\r");
    EXPECT_EQ(row(0), "a\xEF\xBF\xBD\xEF\xBF\xBD\xE2\x90\x80"
                      "b\xE2\x90\x9B[0m\xE2\x90\xA1\xE2\x90\x8A");
}

TEST_F(View, OverlongAndSurrogateSequencesAreNotUtf8) {
    write("\xC0\xAF|\xED\xA0\x80|\xF5\x80\x80\x80\r");
    for (const QChar c : view_.row_text(0))
        EXPECT_TRUE(c == u'|' || c == QChar(0xFFFD)) << int{c.unicode()};
}

TEST_F(View, LineSeparatorsInsideTheTextDoNotBreakTheLayout) {
    write("a\xE2\x80\xA8"
          "b\xE2\x80\xA9"
          "c\xC2\x85"
          "d\rnext\r");
    EXPECT_EQ(row(1), "next");
}

TEST_F(View, SpaceSubstituteShowsAsANoBreakSpace) {
    write("my\x1F"
          "file.tex\r");
    EXPECT_EQ(row(0), "my\xC2\xA0"
                      "file.tex");
    space_char = 202;
    write("your\xCA"
          "file \xCA\xB0\r");
    EXPECT_EQ(row(1), "your\xC2\xA0"
                      "file \xCA\xB0");
}

TEST_F(View, LineOfHundredMegabytesIsShownAtOnce) {
    const std::string part(1 << 20, 'w');
    for (int i = 0; i < 100; ++i)
        store_.append(part.data(), part.size());
    view_.appended();
    view_.refresh(true);
    EXPECT_EQ(row(0).size(), 80u);
    view_.scroll_to_start();
    EXPECT_EQ(row(0), std::string(80, 'w'));
}

// Counts the paints of the view.
class PaintCounter : public QObject {
  public:
    explicit PaintCounter(const ConsoleView &view) { view.viewport()->installEventFilter(this); }
    int paints = 0;

  protected:
    bool eventFilter(QObject *, QEvent *event) override {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

TEST_F(View, OnePaintServesManyWrites) {
    const PaintCounter counter(view_);
    write("first\r");
    view_.refresh(true);
    const int before = counter.paints;
    EXPECT_GT(before, 0);
    for (int i = 0; i < 2000; ++i) {
        write("x\r");
        view_.refresh(false);
    }
    EXPECT_LT(counter.paints - before, 200);
    QApplication::processEvents();
    EXPECT_EQ(last_row(), "x");
}

TEST_F(View, RefreshWithNothingNewPaintsNothing) {
    const PaintCounter counter(view_);
    write("a\r");
    view_.refresh(true);
    QApplication::processEvents();
    const int before = counter.paints;
    EXPECT_GT(before, 0);
    for (int i = 0; i < 100; ++i)
        view_.refresh(false);
    QApplication::processEvents();
    EXPECT_EQ(counter.paints, before);
}

TEST_F(View, ClearedTextShowsNothing) {
    write_lines(0, 300);
    view_.settle();
    store_.clear();
    view_.refresh(true);
    view_.appended();
    EXPECT_EQ(row(0), "");
    write("new\r");
    EXPECT_EQ(row(0), "new");
}

TEST_F(View, ClickOnlyPostsAnEvent) {
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(30, 40));
    EventRecord event;
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.what, mouseDown);
    EXPECT_EQ(event.message, 0u);
    const QPoint at = view_.viewport()->mapTo(&view_, QPoint(30, 40));
    EXPECT_EQ(event.where.h, at.x());
    EXPECT_EQ(event.where.v, at.y());
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
}

TEST_F(View, KeysBecomeEvents) {
    QTest::keyClick(&view_, Qt::Key_T, Qt::ControlModifier);
    QTest::keyClick(&view_, Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(&view_, Qt::Key_Period, Qt::ControlModifier);
    QTest::keyClick(&view_, Qt::Key_Escape);
    QTest::keyClick(&view_, Qt::Key_Return);
    QTest::keyClick(&view_, Qt::Key_Backspace);
    const struct {
        std::uint32_t message;
        int modifiers;
    } expected[] = {{'t', cmdKey}, {'t', cmdKey | shiftKey}, {'.', cmdKey}, {27, 0}, {13, 0}, {8, 0}};
    for (const auto &one : expected) {
        EventRecord event;
        ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
        EXPECT_EQ(event.what, keyDown);
        EXPECT_EQ(event.message, one.message);
        EXPECT_EQ(event.modifiers, one.modifiers);
    }
}

TEST_F(View, TypedCharacterIsOneEventAByte) {
    QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QStringLiteral("\u00e9"));
    QApplication::sendEvent(&view_, &press);
    EventRecord event;
    for (const std::uint32_t byte : {0xC3u, 0xA9u}) {
        ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
        EXPECT_EQ(event.message, byte);
    }
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
}

TEST_F(View, RepeatedKeyIsAnAutoKey) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_T, Qt::ControlModifier, {}, true);
    QApplication::sendEvent(&view_, &press);
    EventRecord event;
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.what, autoKey);
}

TEST_F(View, CopyIsTheViewsOwnWhileCommandsAreHeldBack) {
    write("one\rtwo\x1Fthree\r");
    view_.set_commands_admitted(false);
    QTest::keyClick(&view_, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "one\ntwo three\n");
    EventRecord event;
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
}

TEST_F(View, AssistiveTechnologyReadsTheText) {
    write("first \xC3\xA9\rsecond\r");
    QAccessibleInterface *const access = QAccessible::queryAccessibleInterface(&view_);
    ASSERT_NE(access, nullptr);
    EXPECT_EQ(access->role(), QAccessible::Terminal);
    EXPECT_EQ(access->text(QAccessible::Name), QStringLiteral("Console"));
    EXPECT_TRUE(access->state().readOnly);
    QAccessibleTextInterface *const text = access->textInterface();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->characterCount(), 15);
    EXPECT_EQ(text->text(0, 7), QStringLiteral("first \u00e9"));
    int start = 0, end = 0;
    EXPECT_EQ(text->textAtOffset(9, QAccessible::LineBoundary, &start, &end), QStringLiteral("second\n"));
    EXPECT_EQ(start, 8);
    EXPECT_EQ(text->textAtOffset(9, QAccessible::WordBoundary, &start, &end), QStringLiteral("second"));
    write("third");
    EXPECT_EQ(text->text(15, 20), QStringLiteral("third"));
    const QRect rect = text->characterRect(8);
    EXPECT_EQ(text->offsetAtPoint(rect.center()), 8);
    EXPECT_EQ(text->cursorPosition(), 20);
}

} // namespace quillon::desktop
