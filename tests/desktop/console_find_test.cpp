#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFontDatabase>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include <string>

#include "desktop/main_window.h"
#include "state/job_state.h"
#include "toolbox/events.h"

namespace quillon::desktop {

namespace {

class Finding : public testing::Test {
  protected:
    void SetUp() override {
        space_char = 31;
        QFont font = fixed_width_font(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        font.setPointSize(10);
        console_->set_text_font(font);
        console_->attach(&store_);
        window_.place_content({100, 100, 400, 700});
        window_.show();
        window_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        drain();
    }
    void TearDown() override { console_->attach(nullptr); }

    void write(const std::string &text) {
        store_.append(text.data(), text.size());
        console_->appended();
        console_->settle();
    }
    void write_lines(int from, int to) {
        for (int i = from; i < to; ++i)
            write("line " + std::to_string(i) + "\r");
    }
    void look_for(const char *text) {
        bar_->open();
        line_->clear();
        QTest::keyClicks(line_, QString::fromUtf8(text));
    }
    std::string count() const { return bar_->count().toStdString(); }
    std::string marked() { return console_->text_of(console_->selection()).toStdString(); }
    bool sees(std::size_t offset) {
        const int y = console_->y_of(store_.segment_at(offset));
        return y >= 0 && y < console_->viewport()->height();
    }
    static void drain() {
        EventRecord event;
        while (GetNextEvent(everyEvent, &event))
            ;
    }

    TextStore store_;
    MainWindow window_{QStringLiteral("Finding")};
    ConsoleView *const console_ = window_.console();
    FindBar *const bar_ = window_.find_bar();
    QLineEdit *const line_ = bar_->findChild<QLineEdit *>();
};

} // namespace

TEST_F(Finding, BarTakesTheKeyboardAndEscapeGivesItBack) {
    EXPECT_FALSE(bar_->isVisible());
    const Rect before = window_.content();
    bar_->open();
    EXPECT_TRUE(bar_->isVisible());
    EXPECT_TRUE(line_->hasFocus());
    EXPECT_TRUE(window_.finds());
    QApplication::processEvents();
    EXPECT_EQ(window_.content().bottom, before.bottom);
    EXPECT_LT(console_->height(), window_.centralWidget()->height());
    QTest::keyClick(line_, Qt::Key_Escape);
    EXPECT_FALSE(bar_->isVisible());
    EXPECT_TRUE(console_->hasFocus());
    EventRecord event;
    while (GetNextEvent(everyEvent, &event))
        EXPECT_NE(event.what, keyDown);
}

TEST_F(Finding, CountsAndMarksWhileTheTextIsTyped) {
    write("alpha beta\ralphabet\r");
    look_for("al");
    EXPECT_EQ(count(), "1 of 2");
    EXPECT_EQ(console_->selection(), (ByteRange{0, 2}));
    QTest::keyClicks(line_, QStringLiteral("phab"));
    EXPECT_EQ(count(), "1 of 1");
    EXPECT_EQ(console_->selection(), (ByteRange{11, 17}));
    QTest::keyClicks(line_, QStringLiteral("x"));
    EXPECT_EQ(count(), "No hits");
    EXPECT_TRUE(console_->selection().empty());
    line_->clear();
    EXPECT_EQ(count(), "");
}

TEST_F(Finding, KeysGoRoundTheHits) {
    write("hit 1 hit 2 hit 3");
    look_for("hit");
    EXPECT_EQ(count(), "1 of 3");
    QTest::keyClick(line_, Qt::Key_Return);
    EXPECT_EQ(count(), "2 of 3");
    QTest::keyClick(line_, Qt::Key_F3);
    EXPECT_EQ(count(), "3 of 3");
    QTest::keyClick(line_, Qt::Key_Return);
    EXPECT_EQ(count(), "1 of 3");
    QTest::keyClick(line_, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(count(), "3 of 3");
    QTest::keyClick(line_, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(count(), "2 of 3");
    console_->setFocus();
    QTest::keyClick(console_, Qt::Key_F3);
    EXPECT_EQ(count(), "3 of 3");
    const auto buttons = bar_->findChildren<QToolButton *>(Qt::FindDirectChildrenOnly);
    for (const QToolButton *const button : buttons)
        EXPECT_FALSE(button->accessibleName().isEmpty());
}

TEST_F(Finding, BeginsAtTheVisiblePlaceAndScrollsToTheHit) {
    write_lines(0, 1000);
    console_->scroll_to_start();
    console_->scroll_rows(500);
    look_for("7");
    EXPECT_EQ(console_->selection().start, store_.segment(507).start + 7);
    EXPECT_EQ(console_->top().segment, 500u);
    line_->setText(QStringLiteral("line 99"));
    EXPECT_EQ(console_->selection().start, store_.segment(990).start);
    EXPECT_TRUE(sees(console_->selection().start));
    QTest::keyClick(line_, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(console_->selection().start, store_.segment(99).start);
    EXPECT_TRUE(sees(console_->selection().start));
    EXPECT_EQ(count(), "1 of 11");
}

TEST_F(Finding, MatchCaseChangesTheCount) {
    write("Error error ERROR");
    look_for("error");
    EXPECT_EQ(count(), "1 of 3");
    bar_->findChild<QCheckBox *>()->setChecked(true);
    EXPECT_EQ(count(), "1 of 1");
    EXPECT_EQ(console_->selection().start, 6u);
}

TEST_F(Finding, LaterTextIsCountedAsItComes) {
    write("one hit\r");
    look_for("hit");
    EXPECT_EQ(count(), "1 of 1");
    write("and a second hit\r");
    EXPECT_EQ(count(), "1 of 2");
    write("and a hi");
    EXPECT_EQ(count(), "1 of 2");
    write("t\r");
    EXPECT_EQ(count(), "1 of 3");
    EXPECT_EQ(console_->selection(), (ByteRange{4, 7}));
    store_.clear();
    write("only a hit\r");
    EXPECT_EQ(count(), "1 hit");
    EXPECT_TRUE(console_->selection().empty());
}

TEST_F(Finding, MarkIsNoSelectionToCopyWhereThePersonMaySelectNothing) {
    write("one two\r");
    look_for("two");
    console_->copy_all();
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "one two\n");
    bar_->shut();
    EXPECT_TRUE(console_->selection().empty());
    console_->set_select_text(true);
    look_for("two");
    console_->copy_all();
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "two");
    bar_->shut();
    EXPECT_EQ(marked(), "two");
}

TEST_F(Finding, SelectedTextIsLookedFor) {
    console_->set_select_text(true);
    write("one two one\r");
    console_->select({8, 11});
    bar_->open();
    EXPECT_EQ(line_->text(), QStringLiteral("one"));
    EXPECT_EQ(count(), "2 of 2");
}

TEST_F(Finding, CommandKeysAndScrollingReachTheConsole) {
    write_lines(0, 500);
    look_for("zebra");
    drain();
    QTest::keyClick(line_, Qt::Key_Period, Qt::ControlModifier);
    EventRecord event;
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>('.'));
    EXPECT_EQ(event.modifiers, cmdKey);
    QTest::keyClick(line_, Qt::Key_C, Qt::ControlModifier);
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>('c'));
    line_->selectAll();
    QTest::keyClick(line_, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("zebra"));
    QTest::keyClick(line_, Qt::Key_PageUp);
    EXPECT_FALSE(console_->at_end());
}

TEST_F(Finding, HitsAreTintedWhileTheBarIsOpen) {
    write("one\rhit\rtwo\rhit\r");
    look_for("hit");
    const auto colour = [this] {
        const TextMetrics &metrics = console_->metrics();
        const QImage image = console_->viewport()->grab().toImage();
        return image.pixelColor(console_->margin() + 1,
                                console_->margin() + static_cast<int>(3 * metrics.row_height) + 1);
    };
    const QColor base = console_->palette().color(QPalette::Base);
    EXPECT_NE(colour(), base);
    bar_->shut();
    EXPECT_EQ(colour(), base);
}

TEST_F(Finding, SizeKeysWorkWhileCommandsAreHeldBack) {
    for (const bool admitted : {true, false}) {
        console_->set_commands_admitted(admitted);
        QTest::keyClick(console_, Qt::Key_Plus, Qt::ControlModifier);
        QTest::keyClick(console_, Qt::Key_Equal, Qt::ControlModifier);
        EXPECT_EQ(console_->metrics().font.pointSize(), 12);
        QTest::keyClick(console_, Qt::Key_Minus, Qt::ControlModifier);
        EXPECT_EQ(console_->metrics().font.pointSize(), 11);
        QTest::keyClick(console_, Qt::Key_0, Qt::ControlModifier);
        EXPECT_EQ(console_->metrics().font.pointSize(), 10);
    }
    EventRecord event;
    while (GetNextEvent(everyEvent, &event))
        EXPECT_NE(event.what, keyDown);
}

} // namespace quillon::desktop
