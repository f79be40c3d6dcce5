#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QWindow>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "desktop/choosers.h"
#include "desktop/dialog_fixture.h"
#include "desktop/dialogs.h"
#include "desktop/main_window.h"
#include "dialogs/dialog.h"
#include "front/dialogs.h"
#include "front/front.h"
#include "toolbox/dialogs.h"
#include "ui_dialogs.h"

namespace quillon::desktop {

namespace {

using Controls = std::map<int, ControlKind>;

ControlKind kind_of(const QWidget *widget) {
    if (qobject_cast<const QCheckBox *>(widget))
        return check_control;
    if (qobject_cast<const QPushButton *>(widget))
        return button_control;
    if (qobject_cast<const QLineEdit *>(widget))
        return text_control;
    if (qobject_cast<const QTreeWidget *>(widget))
        return list_control;
    return qobject_cast<const QLabel *>(widget) ? display_control : no_control;
}

// The same for each window.
class EveryDialog : public Dialogs, public testing::WithParamInterface<const char *> {
  protected:
    void SetUp() override {
        Dialogs::SetUp();
        dialog_ = make(GetParam());
        ASSERT_NE(dialog_, nullptr);
        show(dialog_);
    }
    QDialog *dialog_ = nullptr;
};

std::vector<const char *> window_names() {
    std::vector<const char *> names;
    for (int i = 0; i < dialog_control_count; i++)
        if (names.empty() || std::string(names.back()) != dialog_controls[i].window)
            names.push_back(dialog_controls[i].window);
    return names;
}

std::string test_name(const testing::TestParamInfo<const char *> &info) {
    std::string name = info.param;
    std::erase_if(name, [](char c) { return c == ' '; });
    return name;
}

// The widgets that Tab goes to, in its order.
QList<QWidget *> tab_chain(QDialog *dialog) {
    QList<QWidget *> chain;
    for (QWidget *widget = dialog->nextInFocusChain(); widget != dialog; widget = widget->nextInFocusChain())
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isVisible())
            chain.append(widget);
    return chain;
}

QString accessible_name(QWidget *widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

bool is_display(const QWidget *widget) {
    return kind_of(widget) == display_control && widget->property("controlID").isValid();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(, EveryDialog, testing::ValuesIn(window_names()), test_name);

TEST(DialogForms, TheFormsAreThoseOfTheTable) {
    std::set<std::string> of_table, of_forms;
    for (const char *const name : window_names())
        EXPECT_TRUE(of_table.insert(name).second) << "the rows of a window stand together: " << name;
    for (const DialogForm &form : dialog_forms)
        EXPECT_TRUE(of_forms.insert(form.window).second) << "two forms name the same window: " << form.window;
    EXPECT_EQ(of_forms, of_table);
}

TEST_P(EveryDialog, HasTheControlsOfTheTable) {
    Controls of_table, of_form;
    for (int i = 0; i < dialog_control_count; i++)
        if (std::string(dialog_controls[i].window) == GetParam() && dialog_controls[i].kind != no_control)
            of_table[dialog_controls[i].control] = dialog_controls[i].kind;
    for (const QWidget *const widget : dialog_->findChildren<QWidget *>()) {
        const QVariant number = widget->property("controlID");
        if (number.isValid()) {
            EXPECT_TRUE(of_form.insert({number.toInt(), kind_of(widget)}).second) << number.toInt();
        } else {
            EXPECT_TRUE(kind_of(widget) == no_control || kind_of(widget) == display_control)
                << "a control without a number: " << widget->objectName().toStdString();
        }
    }
    EXPECT_EQ(of_form, of_table);
}

TEST_P(EveryDialog, HasATitleAndADefaultButton) {
    EXPECT_FALSE(dialog_->windowTitle().isEmpty());
    int defaults = 0;
    for (const QPushButton *const button : dialog_->findChildren<QPushButton *>())
        defaults += button->isDefault();
    const auto *const ok = control_of<QPushButton>(dialog_, control_ok);
    EXPECT_EQ(defaults, ok ? 1 : 0);
    EXPECT_TRUE(!ok || ok->isDefault());
}

TEST_P(EveryDialog, EveryMnemonicLeadsToOneControl) {
    std::set<QString> mnemonics;
    std::set<const QWidget *> reached;
    for (QLabel *const label : dialog_->findChildren<QLabel *>()) {
        if (!label->buddy())
            continue;
        reached.insert(label->buddy());
        const QString key = QKeySequence::mnemonic(label->text()).toString();
        EXPECT_FALSE(key.isEmpty()) << label->text().toStdString();
        EXPECT_TRUE(mnemonics.insert(key).second) << key.toStdString();
    }
    for (QAbstractButton *const button : dialog_->findChildren<QAbstractButton *>()) {
        const QString key = QKeySequence::mnemonic(button->text()).toString();
        if (key.isEmpty())
            continue;
        reached.insert(button);
        EXPECT_TRUE(mnemonics.insert(key).second) << key.toStdString();
    }
    for (QWidget *const widget : tab_chain(dialog_)) {
        const bool has_key = widget->property("controlID").toInt() <= control_cancel; // Return and Escape
        EXPECT_TRUE(has_key || reached.contains(widget)) << widget->objectName().toStdString();
    }
}

TEST_P(EveryDialog, TabGoesFromTheTopToTheBottom) {
    const QList<QWidget *> chain = tab_chain(dialog_);
    for (qsizetype i = 1; i < chain.size(); i++) {
        const QRect before(chain[i - 1]->mapTo(dialog_, QPoint(0, 0)), chain[i - 1]->size());
        const QRect next(chain[i]->mapTo(dialog_, QPoint(0, 0)), chain[i]->size());
        const bool below = next.center().y() > before.bottom();
        const bool beside = next.bottom() > before.center().y() && next.left() > before.right();
        EXPECT_TRUE(below || beside) << chain[i - 1]->objectName().toStdString() << " before "
                                     << chain[i]->objectName().toStdString();
    }
    if (chain.isEmpty())
        return;
    // The keyboard is with the first control; a window without any begins at its default button.
    const bool has_own = chain.first()->property("controlID").toInt() > control_cancel;
    EXPECT_EQ(dialog_->focusWidget(), has_own ? chain.first() : control_of(dialog_, control_ok));
    EXPECT_TRUE(dialog_->testAttribute(Qt::WA_KeyboardFocusChange)) << "a focused button does not show it";
}

TEST_P(EveryDialog, EveryControlHasANameOfItsOwn) {
    std::set<QString> names;
    for (QWidget *const widget : dialog_->findChildren<QWidget *>()) {
        if (!widget->property("controlID").isValid())
            continue;
        const QString name = accessible_name(widget);
        EXPECT_FALSE(name.isEmpty()) << widget->objectName().toStdString();
        EXPECT_TRUE(names.insert(name).second) << name.toStdString();
    }
}

TEST_P(EveryDialog, NoTextIsCut) {
    for (QWidget *const widget : dialog_->findChildren<QWidget *>()) {
        const QString name = widget->objectName();
        auto *const label = qobject_cast<QLabel *>(widget);
        if (qobject_cast<QLineEdit *>(widget)) {
            EXPECT_GE(widget->width(), 320) << name.toStdString();
            EXPECT_GE(widget->height(), widget->sizeHint().height()) << name.toStdString();
        } else if (label && label->wordWrap()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << name.toStdString();
        } else if (label || qobject_cast<QAbstractButton *>(widget)) {
            EXPECT_GE(widget->width(), widget->sizeHint().width()) << name.toStdString();
            EXPECT_GE(widget->height(), widget->sizeHint().height()) << name.toStdString();
        }
        EXPECT_TRUE(!is_display(widget) || widget->width() >= 320) << name.toStdString();
    }
    const QSize shown = dialog_->size();
    dialog_->resize(1, 1);
    EXPECT_EQ(dialog_->size(), shown) << "the window became so small that a text is cut";
}

TEST_P(EveryDialog, EscapeAndTheCloseButtonAreAHitOfCancel) {
    dialog_->hide();
    run(dialog_, {[this] { QTest::keyClick(dialog_, Qt::Key_Escape); }});
    EXPECT_TRUE(closed_by_itself_);
    run(dialog_, {[this] { dialog_->close(); }});
    EXPECT_TRUE(closed_by_itself_);
    EXPECT_EQ(seen().hits, (std::vector<int>{control_cancel, control_cancel}));
}

TEST_P(EveryDialog, EveryButtonIsAHitOfItsNumber) {
    dialog_->hide();
    std::vector<int> expected;
    for (QPushButton *const button : dialog_->findChildren<QPushButton *>()) {
        expected.push_back(button->property("controlID").toInt());
        run(dialog_, {[button] { QTest::mouseClick(button, Qt::LeftButton); }});
        EXPECT_TRUE(closed_by_itself_);
    }
    EXPECT_EQ(seen().hits, expected);
}

TEST_F(Dialogs, ThereIsNoWindowOfAnotherName) {
    EXPECT_EQ(CreateWindowFromNib("no such window"), nullptr);
    EXPECT_EQ(new_dialog("no such window"), nullptr);
}

TEST_F(Dialogs, ReturnInAFieldIsAHitOfOk) {
    QDialog *const dialog = make("font size");
    run(dialog, {[dialog] { QTest::keyClick(dialog->focusWidget(), Qt::Key_Return); }});
    EXPECT_EQ(seen().hits, std::vector<int>{control_ok});
    EXPECT_TRUE(closed_by_itself_);
}

TEST_F(Dialogs, ARefusedWindowStaysOpen) {
    close_unless({control_ok, control_cancel});
    QDialog *const dialog = make("command line");
    run(dialog, {[dialog] { control_of<QPushButton>(dialog, control_ok)->click(); },
                 [dialog] { QTest::keyClick(dialog, Qt::Key_Escape); }, [dialog] { dialog->close(); }});
    EXPECT_EQ(seen().hits, (std::vector<int>{control_ok, control_cancel, control_cancel}));
    EXPECT_FALSE(closed_by_itself_);
}

TEST_F(Dialogs, ATickIsNoHit) {
    QDialog *const dialog = make("pdftex options");
    EXPECT_EQ(GetControlValue(window_, 5), 0);
    SetControlValue(window_, 5, 1);
    EXPECT_EQ(GetControlValue(window_, 5), 1);
    run(dialog, {[dialog] { control_of<QCheckBox>(dialog, 5)->click(); }});
    EXPECT_EQ(GetControlValue(window_, 5), 0);
    EXPECT_TRUE(seen().hits.empty());
}

TEST_F(Dialogs, TextGoesInAndComesOut) {
    QDialog *const dialog = make("bibtex8 options");
    EXPECT_EQ(text(3), "");
    SetControlText(window_, 3, "--wolfgang \xC3\xA4");
    EXPECT_EQ(control_of<QLineEdit>(dialog, 3)->text(), QStringLiteral("--wolfgang ä"));
    EXPECT_EQ(text(3), "--wolfgang \xC3\xA4");
    run(dialog, {[dialog] {
            auto *const field = control_of<QLineEdit>(dialog, 3);
            field->selectAll();
            QTest::keyClicks(field, QStringLiteral("--huge"));
        }});
    EXPECT_EQ(text(3), "--huge");
}

TEST_F(Dialogs, BytesThatAreNotUtf8AreKeptWhileNobodyChangesThem) {
    QDialog *const dialog = make("dvips options");
    const std::string bytes = "-o caf\xE9\x80.ps \xC3\xA4";
    SetControlText(window_, 3, bytes.c_str());
    EXPECT_EQ(text(3), bytes);
    auto *const field = control_of<QLineEdit>(dialog, 3);
    const QString shown = field->text();
    field->setText(shown + QLatin1Char('x'));
    EXPECT_NE(text(3), bytes);
    EXPECT_TRUE(text(3).ends_with("\xC3\xA4x"));
    field->setText(shown);
    EXPECT_EQ(text(3), bytes);
    make("command line");
    SetShortenedText(window_, 5, "/tmp/caf\xE9");
    EXPECT_EQ(text(5), "/tmp/caf\xE9");
}

TEST_F(Dialogs, ATextThatDoesNotFitLeavesTheBufferEmpty) {
    QDialog *const dialog = make("cmdkey");
    BoundedString<8> little;
    little.copy("before");
    SetControlText(window_, 3, "1234567");
    EXPECT_EQ(GetControlText(window_, 3, little), 1);
    EXPECT_STREQ(little.c_str(), "1234567");
    QTest::keyClicks(control_of<QLineEdit>(dialog, 3), QStringLiteral("8"));
    EXPECT_EQ(GetControlText(window_, 3, little), 0);
    EXPECT_STREQ(little.c_str(), "");
}

TEST_F(Dialogs, ADisplayShortensItsTextInTheMiddleToItsWidth) {
    QDialog *const dialog = make("dvips run");
    const std::string path = "/home/person/" + std::string(90, 'a') + "/thesis.dvi";
    SetShortenedText(window_, 5, path.c_str());
    show(dialog);
    auto *const display = control_of<QLabel>(dialog, 5);
    const int two_blanks = 2 * display->fontMetrics().horizontalAdvance(QLatin1Char(' '));
    const auto room = [&] { return display->width() - two_blanks; };
    const auto width = [&] { return display->fontMetrics().horizontalAdvance(display->text()); };
    EXPECT_TRUE(display->text().startsWith(QStringLiteral("/home/person/")));
    EXPECT_TRUE(display->text().endsWith(QStringLiteral("/thesis.dvi")));
    EXPECT_LE(width(), room());
    EXPECT_EQ(text(5), path);
    EXPECT_EQ(display->toolTip().toStdString(), path);
    EXPECT_EQ(display->accessibleDescription().toStdString(), path);
    EXPECT_EQ(control_of(dialog, 3)->accessibleDescription().toStdString(), path);
    const qsizetype before = display->text().size();
    dialog->resize(dialog->width() + 200, dialog->height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return display->text().size() > before; }));
    EXPECT_LE(width(), room());
    dialog->resize(2000, dialog->height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return display->text().toStdString() == path; }));
}

TEST_F(Dialogs, ADisplayWithoutATextSaysSo) {
    QDialog *const dialog = make("Set apps");
    auto *const display = control_of<QLabel>(dialog, 7);
    EXPECT_EQ(text(7), "");
    EXPECT_EQ(display->text(), QStringLiteral("No application chosen"));
    EXPECT_LT(display->palette().color(QPalette::WindowText).alpha(), 255);
    SetShortenedText(window_, 7, "/x");
    EXPECT_EQ(display->text(), QStringLiteral("/x"));
    EXPECT_EQ(display->palette().color(QPalette::WindowText), dialog->palette().color(QPalette::WindowText));
    SetShortenedText(window_, 7, "");
    EXPECT_EQ(display->text(), QStringLiteral("No application chosen"));
    EXPECT_EQ(display->accessibleDescription(), QStringLiteral("No application chosen"));
    EXPECT_TRUE(display->toolTip().isEmpty());
    EXPECT_EQ(text(7), "");
}

TEST_F(Dialogs, MutedTextsFollowTheColoursOfTheDesktop) {
    QDialog *const dialog = make("Set apps");
    const QPalette before = QApplication::palette();
    const auto becomes = [dialog](QRgb colour) {
        return QTest::qWaitFor([=] {
            const QColor shown = control_of(dialog, 7)->palette().color(QPalette::WindowText);
            return shown.rgb() == colour && shown.alpha() < 255;
        });
    };
    QPalette dark = before;
    dark.setColor(QPalette::WindowText, QColor(0xF0, 0xF1, 0xF2));
    QApplication::setPalette(dark);
    EXPECT_TRUE(becomes(qRgb(0xF0, 0xF1, 0xF2)));
    QApplication::setPalette(before);
    EXPECT_TRUE(becomes(before.color(QPalette::WindowText).rgb()));
}

TEST_F(Dialogs, ADisplayTakesNothingForMarkup) {
    QDialog *const dialog = make("dvips run");
    SetShortenedText(window_, 5, "/a/<b>b</b>&c\n.dvi");
    auto *const display = control_of<QLabel>(dialog, 5);
    EXPECT_EQ(display->text(), QStringLiteral("/a/<b>b</b>&c␊.dvi"));
    EXPECT_EQ(display->textFormat(), Qt::PlainText);
    EXPECT_TRUE(display->toolTip().contains(QStringLiteral("&lt;b&gt;b")))
        << display->toolTip().toStdString();
    EXPECT_EQ(text(5), "/a/<b>b</b>&c\n.dvi");
}

TEST_F(Dialogs, SelectingGivesTheKeyboardAndSelectsTheFirstThreeHundred) {
    QDialog *const dialog = make("dvips run");
    auto *const field = control_of<QLineEdit>(dialog, 6);
    SetControlText(window_, 6, std::string(400, 'x').c_str());
    SelectControlText(window_, 6);
    EXPECT_EQ(dialog->focusWidget(), field);
    EXPECT_EQ(field->selectionStart(), 0);
    EXPECT_EQ(field->selectionLength(), 300);
    SetControlText(window_, 6, "short");
    SelectControlText(window_, 6);
    EXPECT_EQ(field->selectedText(), QStringLiteral("short"));
    show(dialog);
    EXPECT_EQ(dialog->focusWidget(), field);
    EXPECT_EQ(field->selectedText(), QStringLiteral("short"));
}

TEST_F(Dialogs, EveryMoveOfTheMouseIsToldOnceInTheWindowsCoordinates) {
    QDialog *const dialog = make("dvips run");
    Rect field = {}, display = {};
    EXPECT_EQ(GetControlBounds(window_, 4, &field), 1);
    EXPECT_EQ(GetControlBounds(window_, 5, &display), 1);
    run(dialog, {[&] {
            Rect shown = {};
            EXPECT_EQ(GetControlBounds(window_, 4, &shown), 1);
            EXPECT_EQ(shown.left, field.left) << "the bounds hold before the window is shown";
            EXPECT_EQ(shown.bottom, field.bottom);
            seen().moves.clear();
            QTest::mouseMove(dialog->windowHandle(), QPoint(field.left + 3, field.top + 2));
            QTest::mouseMove(dialog->windowHandle(), QPoint(display.right - 5, display.bottom - 4));
            QTest::mouseMove(dialog->windowHandle(), QPoint(2, 1));
        }});
    ASSERT_EQ(seen().moves.size(), 3U);
    EXPECT_EQ(seen().moves[0].h, field.left + 3);
    EXPECT_EQ(seen().moves[0].v, field.top + 2);
    EXPECT_EQ(seen().moves[1].h, display.right - 5);
    EXPECT_EQ(seen().moves[1].v, display.bottom - 4);
    EXPECT_EQ(seen().moves[2].h, 2);
    EXPECT_EQ(seen().moves[2].v, 1);
    EXPECT_GT(field.right, field.left);
    EXPECT_GT(display.bottom, display.top);
}

TEST_F(Dialogs, AMessageAnswersWhatWasPressed) {
    for (const char *const name : {"about box", "Quit", "ConfirmDelete", "LongName", "alert 900"})
        for (const int control : {control_ok, control_cancel}) {
            QTimer::singleShot(0, qApp, [name, control] {
                QDialog *const dialog = on_screen(name);
                ASSERT_NE(dialog, nullptr);
                if (auto *const button = control_of<QPushButton>(dialog, control))
                    button->click();
                else
                    QTest::keyClick(dialog, Qt::Key_Escape);
            });
            EXPECT_EQ(run_message(name), control == control_ok) << name;
        }
}

TEST_F(Dialogs, AWindowStandsOverTheModalOneElseOverTheMainWindow) {
    MainWindow *const main = make_main_window(QStringLiteral("Quillon"));
    main->hide();
    EXPECT_EQ(make("font size")->parentWidget(), nullptr);
    main->show();
    QDialog *const dialog = make("Set apps");
    EXPECT_EQ(dialog->parentWidget(), main);
    run(dialog, {[dialog] {
            const DialogRef message = CreateWindowFromNib("LongName");
            EXPECT_EQ(on_screen("LongName")->parentWidget(), dialog);
            DisposeWindow(message);
        }});
    main->hide();
}

TEST_F(Dialogs, AChooserStandsOverTheDialogWhoseButtonOpensIt) {
    QDialog *const dialog = make("Set apps");
    QWidget *parent = nullptr;
    bool modal = false;
    seen().on_hit = [&](DialogRef, int) {
        NavRequest request = {};
        request.kind = navChooseApplication;
        request.prompt = "Find a text editor";
        BoundedString<256> path;
        QTimer::singleShot(0, qApp, [&] {
            auto *const chooser = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            parent = chooser->parentWidget();
            modal = chooser->isModal();
            chooser->reject();
        });
        EXPECT_EQ(run_chooser(request, nullptr, path), 0);
    };
    run(dialog, {[dialog] { control_of<QPushButton>(dialog, 3)->click(); },
                 [dialog] { EXPECT_TRUE(dialog->isVisible()); }});
    EXPECT_EQ(parent, dialog);
    EXPECT_TRUE(modal);
}

TEST_F(Dialogs, ASheetIsShownAndTakenAwayWhileTheShellGoesOn) {
    QDialog *const dialog = make("wait");
    InstallWindowEventHandler(window_, nullptr);
    ShowSheetWindow(window_);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_FALSE(dialog->isModal());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog->isVisible());
    HideSheetWindow(window_);
    EXPECT_FALSE(dialog->isVisible());
    ShowSheetWindow(window_);
    EXPECT_TRUE(dialog->isVisible());
}

} // namespace quillon::desktop
