#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

#include <string>

#include "desktop/console_view.h"
#include "desktop/console_window.h"
#include "state/job_state.h"
#include "toolbox/events.h"

namespace quillon::desktop {

namespace {

constexpr Qt::KeyboardModifiers none = Qt::NoModifier, shift = Qt::ShiftModifier,
                                both = Qt::ShiftModifier | Qt::ControlModifier;

class Selecting : public testing::Test {
  protected:
    void SetUp() override {
        space_char = 31;
        drain();
        view_.set_text_font(fixed_width_font(QFontDatabase::systemFont(QFontDatabase::FixedFont)));
        view_.attach(&store_);
        view_.set_select_text(true);
        view_.show();
        resize(40, 10);
    }

    void resize(int columns, int rows) { size_text(view_, columns, rows); }

    void write(const std::string &text) {
        store_.append(text.data(), text.size());
        view_.appended();
        view_.settle();
    }
    void write_lines(int from, int to) {
        for (int i = from; i < to; ++i)
            write("line " + std::to_string(i) + "\r");
    }

    // The point of the viewport between two characters of a visible row.
    QPoint point(int row, int column) const {
        const TextMetrics &metrics = view_.metrics();
        return {view_.margin() + static_cast<int>(column * metrics.cell),
                view_.margin() + static_cast<int>((row + 0.5) * metrics.row_height)};
    }
    // A point within the character of that column.
    QPoint inside(int row, int column) const {
        return point(row, column) + QPoint(static_cast<int>(view_.metrics().cell / 2), 0);
    }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(view_.viewport(), Qt::LeftButton, none, from);
        move(to);
        QTest::mouseRelease(view_.viewport(), Qt::LeftButton, none, to);
    }
    void move(QPoint to) {
        QMouseEvent event(QEvent::MouseMove, to, view_.viewport()->mapToGlobal(to), Qt::NoButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view_.viewport(), &event);
    }
    void send(QEvent::Type type, QPoint at, std::uint64_t time) {
        QMouseEvent event(type, at, view_.viewport()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, none);
        event.setTimestamp(time);
        QApplication::sendEvent(view_.viewport(), &event);
    }
    // Presses the button for the third time and keeps it down.
    void press_thrice(QPoint at) {
        send(QEvent::MouseButtonPress, at, 1000);
        send(QEvent::MouseButtonRelease, at, 1010);
        send(QEvent::MouseButtonDblClick, at, 1020);
        send(QEvent::MouseButtonRelease, at, 1030);
        send(QEvent::MouseButtonPress, at, 1040);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = shift) {
        QTest::keyClick(&view_, key, modifiers);
    }

    std::string selected() {
        const ByteRange range = view_.selection();
        return range.empty() ? "" : view_.text_of(range).toStdString();
    }
    std::string row(int index) { return view_.row_text(index).toStdString(); }

    static void drain() {
        EventRecord event;
        while (GetNextEvent(everyEvent, &event))
            ;
    }

    TextStore store_;
    ConsoleView view_;
};

} // namespace

TEST_F(Selecting, DraggingSelectsWhatItPasses) {
    write("first line\rsecond line\r");
    drag(point(0, 6), point(1, 6));
    EXPECT_EQ(selected(), "line\nsecond");
    drag(point(1, 6), point(0, 6));
    EXPECT_EQ(selected(), "line\nsecond");
    drag(point(1, 3), point(1, 3));
    EXPECT_EQ(selected(), "");
}

TEST_F(Selecting, DoubleClickTakesTheWordAndDraggingGoesOnByWords) {
    write("some words (of text) here\r");
    QTest::mouseDClick(view_.viewport(), Qt::LeftButton, none, inside(0, 7));
    EXPECT_EQ(selected(), "words");
    move(inside(0, 12));
    EXPECT_EQ(selected(), "words (of");
    move(inside(0, 1));
    EXPECT_EQ(selected(), "some words");
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, none, inside(0, 1));
}

TEST_F(Selecting, ThirdClickTakesTheLineHoweverManyRowsItHas) {
    write("before\r" + std::string(60, 'a') + " end\rafter\r");
    const QPoint at = inside(1, 4);
    press_thrice(at);
    EXPECT_EQ(selected(), std::string(60, 'a') + " end\n");
    move(inside(3, 2));
    EXPECT_EQ(selected(), std::string(60, 'a') + " end\nafter\n");
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, none, at);
}

TEST_F(Selecting, ShiftClickExtends) {
    write("0123456789\r");
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, point(0, 3));
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, shift, point(0, 7));
    EXPECT_EQ(selected(), "3456");
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, shift, point(0, 1));
    EXPECT_EQ(selected(), "12");
}

TEST_F(Selecting, DraggingPastTheEdgeScrolls) {
    write_lines(0, 200);
    const QPoint bottom(30, view_.viewport()->height() + 5), top(30, -5);
    view_.scroll_to_start();
    QTest::mousePress(view_.viewport(), Qt::LeftButton, none, point(2, 0));
    move(bottom);
    EXPECT_TRUE(QTest::qWaitFor([this] { return view_.top().segment > 20; }));
    EXPECT_EQ(selected().substr(0, 14), "line 2\nline 3\n");
    EXPECT_GT(selected().size(), 150u);
    move(top);
    EXPECT_TRUE(QTest::qWaitFor([this] { return view_.top() == ConsoleView::Place{}; }));
    EXPECT_LT(selected().size(), 20u);
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, none, top);
}

TEST_F(Selecting, KeysExtendFromTheEndOfTheText) {
    write("one two\rthree four");
    key(Qt::Key_Left);
    key(Qt::Key_Left);
    EXPECT_EQ(selected(), "ur");
    key(Qt::Key_Right);
    EXPECT_EQ(selected(), "r");
    key(Qt::Key_Left, both);
    EXPECT_EQ(selected(), "four");
    key(Qt::Key_Home);
    EXPECT_EQ(selected(), "three four");
    key(Qt::Key_Up);
    EXPECT_EQ(selected(), "one two\nthree four");
    key(Qt::Key_End);
    EXPECT_EQ(selected(), "\nthree four");
    key(Qt::Key_Home, both);
    EXPECT_EQ(selected(), "one two\nthree four");
    key(Qt::Key_End, both);
    EXPECT_EQ(selected(), "");
}

TEST_F(Selecting, KeysExtendFromAClick) {
    write("one two three\rfour\rfive six seven\r");
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, point(0, 8));
    key(Qt::Key_Down);
    EXPECT_EQ(selected(), "three\nfour");
    // The column is kept over a shorter line.
    key(Qt::Key_Down);
    EXPECT_EQ(selected(), "three\nfour\nfive six");
    key(Qt::Key_Right, both);
    EXPECT_EQ(selected(), "three\nfour\nfive six seven");
}

TEST_F(Selecting, EndOfAWrappedRowStaysInItsRow) {
    write(std::string(100, 'x') + "\r");
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, point(0, 10));
    key(Qt::Key_End);
    EXPECT_EQ(selected(), std::string(30, 'x'));
    key(Qt::Key_End);
    EXPECT_EQ(selected(), std::string(30, 'x'));
    key(Qt::Key_Down);
    EXPECT_EQ(selected(), std::string(70, 'x'));
    key(Qt::Key_Home);
    EXPECT_EQ(selected(), std::string(30, 'x'));
}

TEST_F(Selecting, PageKeysScrollAlong) {
    write_lines(0, 200);
    view_.scroll_to_start();
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, point(0, 0));
    const int page = view_.visible_rows() - 1;
    key(Qt::Key_PageDown);
    key(Qt::Key_PageDown);
    EXPECT_EQ(view_.selection(), (ByteRange{0, store_.segment(static_cast<std::size_t>(2 * page)).start}));
    EXPECT_GT(view_.top().segment, 0u);
    key(Qt::Key_PageUp);
    key(Qt::Key_PageUp);
    EXPECT_TRUE(view_.selection().empty());
    EXPECT_EQ(view_.top().segment, 0u);
}

TEST_F(Selecting, NeverSplitsACharacter) {
    write("a\xE2\x82\xAC\xF0\x9D\x94\xB8\xFF\xE2\x82z");
    const std::size_t borders[] = {1, 4, 8, 9, 10, 11, 12};
    view_.scroll_to_start();
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, point(0, 0));
    for (const std::size_t border : borders) {
        key(Qt::Key_Right);
        EXPECT_EQ(view_.selection().end, border);
    }
    for (int x = 0; x < view_.viewport()->width(); ++x) {
        drag(QPoint(x, point(0, 0).y()), point(0, 0));
        const std::size_t end = view_.selection().end;
        EXPECT_TRUE(end == 0 || std::count(std::begin(borders), std::end(borders), end) == 1) << end;
    }
}

TEST_F(Selecting, SelectAllAndCopy) {
    write("one\rtwo\x1Fthree\r");
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), "one\ntwo three\n");
    EventRecord event;
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
    drag(point(1, 0), point(1, 9));
    view_.copy_all();
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "two three");
    view_.clear_selection();
    view_.copy_all();
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "one\ntwo three\n");
}

TEST_F(Selecting, StaysWhileTextIsAppended) {
    write_lines(0, 30);
    drag(point(1, 0), point(1, 4));
    const ByteRange before = view_.selection();
    write_lines(30, 5000);
    EXPECT_EQ(view_.selection(), before);
    EXPECT_EQ(selected(), "line");
    EXPECT_TRUE(view_.at_end());
}

TEST_F(Selecting, IsGoneWhenTheTextIsCleared) {
    write_lines(0, 5);
    key(Qt::Key_A, Qt::ControlModifier);
    store_.clear();
    EXPECT_TRUE(view_.selection().empty());
    write("other text that is longer than what was there before\r");
    EXPECT_TRUE(view_.selection().empty());
    key(Qt::Key_Left);
    EXPECT_EQ(selected(), "\n");
}

TEST_F(Selecting, TypingRemovesItAndGoesToTheShell) {
    write("some text\r");
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Shift, none);
    EXPECT_FALSE(view_.selection().empty());
    drain();
    key(Qt::Key_X, none);
    EXPECT_TRUE(view_.selection().empty());
    EventRecord event;
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>('x'));
    EXPECT_EQ(store_.size(), 10u);
}

TEST_F(Selecting, ScrollingAndCommandKeysKeepIt) {
    write_lines(0, 100);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_PageUp, none);
    key(Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(view_.selection(), (ByteRange{0, store_.size()}));
    EXPECT_FALSE(view_.at_end());
}

TEST_F(Selecting, NothingIsSelectedWhileItIsSwitchedOff) {
    view_.set_select_text(false);
    write_lines(0, 100);
    drain();
    drag(point(1, 0), point(3, 4));
    QTest::mouseDClick(view_.viewport(), Qt::LeftButton, none, point(1, 1));
    key(Qt::Key_Left);
    EXPECT_TRUE(view_.selection().empty());
    key(Qt::Key_Up); // scrolls
    EXPECT_FALSE(view_.at_end());
    EXPECT_TRUE(view_.selection().empty());
    drain();
    key(Qt::Key_A, Qt::ControlModifier);
    EventRecord event;
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>('a'));
    EXPECT_TRUE(view_.selection().empty());
}

TEST_F(Selecting, SwitchingOffTakesItAway) {
    write("text\r");
    key(Qt::Key_A, Qt::ControlModifier);
    view_.set_select_text(false);
    EXPECT_TRUE(view_.selection().empty());
}

TEST_F(Selecting, IsDrawnInTheHighlightColours) {
    write("first\rsecond\rthird\r");
    drag(point(0, 2), point(2, 2));
    const QImage image = view_.viewport()->grab().toImage();
    const QColor highlight = view_.palette().color(QPalette::Highlight);
    const auto row_top = [this](int row, int column) {
        return point(row, column) - QPoint(0, static_cast<int>(view_.metrics().row_height / 2) - 1);
    };
    EXPECT_NE(image.pixelColor(row_top(0, 1)), highlight);
    EXPECT_EQ(image.pixelColor(row_top(0, 3)), highlight);
    EXPECT_EQ(image.pixelColor(row_top(0, 30)), highlight);
    EXPECT_EQ(image.pixelColor(row_top(1, 0)), highlight);
    EXPECT_EQ(image.pixelColor(row_top(2, 1)), highlight);
    EXPECT_NE(image.pixelColor(row_top(2, 3)), highlight);
}

TEST_F(Selecting, LineOfHundredMegabytes) {
    const std::string part(1 << 20, 'w');
    for (int i = 0; i < 100; ++i)
        store_.append(part.data(), part.size());
    view_.appended();
    view_.settle();
    const QPoint at = inside(3, 4);
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, none, at);
    QTest::mouseDClick(view_.viewport(), Qt::LeftButton, none, at);
    EXPECT_GT(selected().size(), 4000u);
    EXPECT_LT(selected().size(), 9000u);
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, none, at);
    press_thrice(at);
    EXPECT_EQ(view_.selection(), (ByteRange{0, store_.size()}));
    // Only the first look for the line's ends reads it: ten thousand would take minutes.
    for (int i = 0; i < 10000; ++i)
        move(inside(1 + i % 5, i % 30));
    EXPECT_EQ(view_.selection(), (ByteRange{0, store_.size()}));
}

TEST_F(Selecting, ScreenReaderHearsOfIt) {
    write("caf\xC3\xA9 au lait\rsecond\r");
    QAccessibleInterface *const access = QAccessible::queryAccessibleInterface(&view_);
    ASSERT_NE(access, nullptr);
    QAccessibleTextInterface *const text = access->textInterface();
    EXPECT_TRUE(access->state().selectableText);
    EXPECT_EQ(text->selectionCount(), 0);
    drag(point(0, 5), point(0, 7));
    int start = 0, end = 0;
    EXPECT_EQ(text->selectionCount(), 1);
    text->selection(0, &start, &end);
    EXPECT_EQ(text->text(start, end), QStringLiteral("au"));
    text->setSelection(0, 3, 13);
    EXPECT_EQ(selected(), "\xC3\xA9 au lait\n");
    text->removeSelection(0);
    EXPECT_EQ(selected(), "");
}

TEST_F(Selecting, TextSizeChangesByPoints) {
    QFont font = fixed_width_font(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    font.setPointSize(10);
    view_.set_text_font(font);
    write_lines(0, 500);
    view_.scroll_rows(-100);
    const std::string first = row(0);
    view_.zoom(1);
    view_.zoom(1);
    EXPECT_EQ(view_.metrics().font.pointSize(), 12);
    EXPECT_EQ(row(0), first);
    for (int i = 0; i < 200; ++i)
        view_.zoom(-1);
    EXPECT_EQ(view_.metrics().font.pointSize(), 4);
    for (int i = 0; i < 200; ++i)
        view_.zoom(1);
    EXPECT_EQ(view_.metrics().font.pointSize(), 144);
    view_.zoom(0);
    EXPECT_EQ(view_.metrics().font.pointSize(), 10);
    EXPECT_EQ(row(0), first);
}

TEST_F(Selecting, HintStandsInTheEmptyView) {
    const QImage empty = view_.viewport()->grab().toImage();
    QAccessibleInterface *const access = QAccessible::queryAccessibleInterface(&view_);
    EXPECT_EQ(access->text(QAccessible::Description), ConsoleView::hint());
    EXPECT_EQ(access->text(QAccessible::Value), QString());
    write(" ");
    const QImage blank = view_.viewport()->grab().toImage();
    EXPECT_NE(empty, blank);
    EXPECT_EQ(access->text(QAccessible::Description), QString());
    store_.clear();
    view_.refresh(true);
    view_.appended();
    EXPECT_EQ(view_.viewport()->grab().toImage(), empty);
}

TEST(FixedWidthFont, TakesAnotherFamilyForAProportionalOne) {
    for (const QString &family : QFontDatabase::families(QFontDatabase::Latin)) {
        const QFont font = fixed_width_font(QFont(family));
        const QFontMetricsF measured(font);
        EXPECT_EQ(measured.horizontalAdvance(u'i'), measured.horizontalAdvance(u'W')) << family.toStdString();
        if (QFontInfo(QFont(family)).fixedPitch()) {
            EXPECT_EQ(font.family(), family);
            return;
        }
    }
    FAIL() << "no font of fixed width is installed";
}

} // namespace quillon::desktop
