#include "toolhost/window/run_window.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollBar>
#include <gtest/gtest.h>

#include <set>
#include <string>

using toolhost::RunWindow;

namespace {

struct FakeHost {
    ToolWindowState state = {1, 0, 0, 0, 0, ""};
    std::string text, answers;
    int cancels = 0;
};

FakeHost &fake(void *context) {
    return *static_cast<FakeHost *>(context);
}

class RunWindowTest : public testing::Test {
  protected:
    RunWindowTest() {
        host_ = {&fake_, "pdftex", "pdftex x.tex", 1, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
        host_.step = [](void *) {};
        host_.state = [](void *context, ToolWindowState *state) { *state = fake(context).state; };
        host_.take_text = [](void *context, char *text, std::size_t room) {
            std::string &all = fake(context).text;
            const std::size_t size = all.copy(text, room);
            all.erase(0, size);
            return size;
        };
        host_.answer = [](void *context, const char *bytes, std::size_t size) {
            fake(context).answers.append(bytes, size);
        };
        host_.cancel = [](void *context) { fake(context).cancels++; };
    }
    void print(RunWindow &window, const std::string &text) {
        fake_.text += text;
        EXPECT_TRUE(window.refresh());
        QApplication::processEvents();
    }
    QPlainTextEdit &text(RunWindow &window) { return *window.findChild<QPlainTextEdit *>(); }
    QScrollBar &bar(RunWindow &window) { return *text(window).verticalScrollBar(); }
    bool says(RunWindow &window, const QString &words) {
        for (const QLabel *const label : window.findChildren<QLabel *>())
            if (label->text() == words && !label->isHidden())
                return true;
        return false;
    }
    void press(QWidget *widget, int key, const QString &typed = {}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, typed);
        QApplication::sendEvent(widget, &event);
    }

    FakeHost fake_;
    ToolWindowHost host_;
};

} // namespace

TEST_F(RunWindowTest, OneEndlessLineStaysAtItsEnd) {
    RunWindow window(host_);
    std::string pages;
    print(window, "(./x.tex [1] ");
    window.show();
    QApplication::processEvents();
    for (int i = 2; i < 5000; i++) {
        pages += "[" + std::to_string(i) + "] ";
        if (i % 100 == 0) {
            print(window, pages);
            pages.clear();
            ASSERT_EQ(bar(window).value(), bar(window).maximum()) << i;
        }
    }
    EXPECT_GT(bar(window).maximum(), 100);
    EXPECT_GT(text(window).document()->blockCount(), 4); // no line is laid out whole again and again
    window.resize(500, 400);
    QApplication::processEvents();
    EXPECT_EQ(bar(window).value(), bar(window).maximum());
}

TEST_F(RunWindowTest, WhoScrollsUpStaysThereAndFollowsAgainAtTheEnd) {
    RunWindow window(host_);
    window.show();
    for (int i = 0; i < 300; i++)
        print(window, "line\n");
    bar(window).triggerAction(QScrollBar::SliderPageStepSub);
    const int there = bar(window).value();
    ASSERT_LT(there, bar(window).maximum());
    print(window, "more\nmore\n");
    EXPECT_EQ(bar(window).value(), there);
    bar(window).triggerAction(QScrollBar::SliderToMaximum);
    print(window, "more\nmore\n");
    EXPECT_EQ(bar(window).value(), bar(window).maximum());
}

TEST_F(RunWindowTest, LineEndsHalfCharactersAndBytesThatAreNoText) {
    RunWindow window(host_);
    print(window, "a\r");
    print(window, "\nb\rc\xC3");
    print(window, std::string("\xA9\xFF|\0|", 5));
    EXPECT_EQ(text(window).toPlainText(), QString::fromUtf8("a\nb\nc\xC3\xA9\xEF\xBF\xBD|\xE2\x90\x80|"));
}

TEST_F(RunWindowTest, OnlyLongLinesAreCutBeforeABlankWhereThereIsOne) {
    RunWindow window(host_);
    print(window, "a b c\n");
    EXPECT_EQ(text(window).toPlainText(), "a b c\n");
    print(window, std::string(4096, 'x').append(" y").append(8192, 'z').append("!"));
    const QStringList lines = text(window).toPlainText().split(u'\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[1].size(), 4096);
    EXPECT_EQ(lines[2].left(3), " yz");
    EXPECT_EQ(lines[2].size(), 8192);
    EXPECT_EQ(lines[3], "zz!");
}

TEST_F(RunWindowTest, PagesAndTimeAreSaid) {
    RunWindow window(host_);
    fake_.state = {1, 0, 0, 1, 61500, ""};
    window.refresh();
    EXPECT_TRUE(says(window, "Running") && says(window, "1 page") && says(window, "1:01"));
    fake_.state.pages = 12;
    window.refresh();
    EXPECT_TRUE(says(window, "12 pages"));
    fake_.state.cancelling = 1;
    window.refresh();
    EXPECT_TRUE(says(window, QString::fromUtf8("Stopping\xE2\x80\xA6")));
    fake_.state.running = 0;
    EXPECT_FALSE(window.refresh());
}

TEST_F(RunWindowTest, TheAnswerLineIsThereWhenTheProgramAsks) {
    RunWindow window(host_);
    window.show();
    window.refresh();
    auto *const line = window.findChild<QLineEdit *>();
    EXPECT_FALSE(line->isVisible());
    press(line, Qt::Key_Return);
    EXPECT_EQ(fake_.answers, ""); // nobody asked
    fake_.state.waiting = 1;
    window.refresh();
    EXPECT_TRUE(line->isVisible());
    EXPECT_EQ(window.focusWidget(), line);
    line->setText(QString::fromUtf8("i\\\xC3\xA9"));
    press(line, Qt::Key_Return);
    press(line, Qt::Key_Return);
    EXPECT_EQ(fake_.answers, "i\\\xC3\xA9\n\n");
}

TEST_F(RunWindowTest, TheButtonsFitTheQuestion) {
    host_.answers_are_tex = 1;
    RunWindow window(host_);
    window.show();
    const auto shows = [&window](const QString &title) {
        for (const QPushButton *const button : window.findChildren<QPushButton *>())
            if (button->text() == title)
                return button->isVisible();
        return false;
    };
    const auto asks = [&](const std::string &question) {
        fake_.state.waiting = 0;
        print(window, question);
        fake_.state.waiting = 1;
        window.refresh();
    };
    asks("! LaTeX Error: File `x.sty' not found.\n\nPlease type another input file name: ");
    EXPECT_TRUE(shows(QStringLiteral("Choose &File...")));
    EXPECT_FALSE(shows(QStringLiteral("&Scroll")));
    EXPECT_TRUE(shows(QStringLiteral("&Cancel")));
    asks("\n! Undefined control sequence.\nl.1 \\x\n      \n\n? ");
    EXPECT_FALSE(shows(QStringLiteral("Choose &File...")));
    EXPECT_TRUE(shows(QStringLiteral("&Scroll")));
}

TEST_F(RunWindowTest, EveryControlHasALetterOfItsOwn) {
    host_.answers_are_tex = 1;
    RunWindow window(host_);
    std::set<QString> letters;
    QStringList texts;
    for (const QPushButton *const button : window.findChildren<QPushButton *>())
        texts.append(button->text());
    for (const QLabel *const label : window.findChildren<QLabel *>())
        texts.append(label->buddy() ? QStringList(label->text()) : QStringList());
    for (const QString &text : texts)
        EXPECT_TRUE(letters.insert(QKeySequence::mnemonic(text).toString()).second) << text.toStdString();
    EXPECT_EQ(letters.size(), 11U);
    EXPECT_FALSE(letters.contains(QString()));
}

TEST_F(RunWindowTest, ClosingCancelsAndTheWindowStaysUntilTheRunHasGone) {
    RunWindow window(host_);
    window.show();
    window.close();
    EXPECT_EQ(fake_.cancels, 1);
    EXPECT_TRUE(window.isVisible());
    fake_.state.running = 0;
    window.close();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(RunWindowTest, TheWindowFitsOnTheScreen) {
    RunWindow window(host_);
    const QRect room = window.screen()->availableGeometry();
    EXPECT_LE(window.width(), room.width());
    EXPECT_LE(window.height(), room.height());
}
