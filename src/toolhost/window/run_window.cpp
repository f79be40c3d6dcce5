#include "toolhost/window/run_window.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBlock>
#include <QVBoxLayout>
#include <algorithm>

#include "toolhost/window/focus.h"
#include "widgets/icon.h"

namespace toolhost {

namespace {

constexpr int most_lines = 5000;
constexpr std::size_t block_size = 32768;
// Every change of a line lays the whole line out again, and an engine that only counts pages writes one line
// without an end. Longer lines than this (in characters) are cut.
constexpr qsizetype longest_line = 4096;
constexpr int usual_width = 760, usual_height = 460;
constexpr int focus_tries = 20;
constexpr int question_lines = 4; // the lines at the end in which TeX asks

QLabel *quiet_label(QWidget *parent) {
    auto *const label = new QLabel(parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

// Says what the window is to a screen reader, for which a plain widget would be a part of some window.
QAccessibleInterface *window_access(const QString &, QObject *object) {
    auto *const window = dynamic_cast<RunWindow *>(object);
    return window ? new QAccessibleWidget(window, QAccessible::Window) : nullptr;
}

} // namespace

RunWindow::RunWindow(const ToolWindowHost &host) : host_(host) {
    const QString tool = QString::fromUtf8(host.tool);
    setWindowTitle(tool + QStringLiteral(" – Quillon"));
    setWindowIcon(widgets::shell_icon());
    QAccessible::installFactory(window_access);
    setAttribute(Qt::WA_ShowWithoutActivating);

    text_ = new QPlainTextEdit(this);
    text_->setReadOnly(true);
    text_->setUndoRedoEnabled(false);
    text_->setMaximumBlockCount(most_lines);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    text_->setWordWrapMode(QTextOption::WrapAnywhere);
    text_->setAccessibleName(tr("Output of %1").arg(tool));
    QScrollBar *const bar = text_->verticalScrollBar();
    connect(bar, &QScrollBar::actionTriggered, this,
            [this, bar] { at_end_ = bar->sliderPosition() >= bar->maximum(); });
    connect(bar, &QScrollBar::rangeChanged, this, [this] { keep_end(); });

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(10);
    layout->addWidget(make_head());
    layout->addWidget(text_, 1);
    answers_ = make_answers();
    layout->addWidget(answers_);
    answers_->hide();

    for (const auto &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_Period)}) {
        auto *const shortcut = new QShortcut(keys, this);
        connect(shortcut, &QShortcut::activated, this, [this] { cancel(); });
    }
    const QRect room = screen()->availableGeometry();
    resize(std::min(usual_width, room.width() * 9 / 10), std::min(usual_height, room.height() * 8 / 10));
}

// Makes the head of the window: the command above the pages and the time, with Cancel beside them.
QWidget *RunWindow::make_head() {
    auto *const head = new QWidget(this);
    auto *const command = new QLabel(head);
    QFont bold = command->font();
    bold.setBold(true);
    command->setFont(bold);
    command->setTextFormat(Qt::PlainText);
    command->setTextInteractionFlags(Qt::TextSelectableByMouse);
    command->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    QString line = QString::fromUtf8(host_.command).trimmed();
    line.replace(QChar(31), QChar(0xA0));
    command->setText(line);
    command->setToolTip(line);

    says_ = quiet_label(head);
    pages_ = quiet_label(head);
    time_ = quiet_label(head);
    cancel_ = new QPushButton(tr("&Cancel"), head);
    cancel_->setToolTip(tr("Stop the run (Escape)"));
    cancel_->setAutoDefault(false);
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });

    auto *const facts = new QHBoxLayout;
    facts->setSpacing(18);
    facts->addWidget(says_);
    facts->addWidget(pages_);
    facts->addWidget(time_);
    facts->addStretch(1);
    auto *const texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(command);
    texts->addLayout(facts);
    auto *const layout = new QHBoxLayout(head);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(texts, 1);
    layout->addWidget(cancel_, 0, Qt::AlignTop);
    return head;
}

void RunWindow::add_answer(QWidget *row, const QString &title, const QString &hint, const char *line) {
    auto *const button = new QPushButton(title, row);
    button->setToolTip(hint);
    button->setAutoDefault(false);
    const QByteArray bytes(line);
    connect(button, &QPushButton::clicked, this, [this, bytes] { send(bytes); });
    row->layout()->addWidget(button);
}

QWidget *RunWindow::make_answers() {
    auto *const answers = new QWidget(this);
    auto *const layout = new QVBoxLayout(answers);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);

    auto *const line = new QHBoxLayout;
    auto *const label = new QLabel(tr("&Answer:"), answers);
    answer_ = new QLineEdit(answers);
    answer_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    answer_->setAccessibleName(tr("Answer to the program"));
    label->setBuddy(answer_);
    auto *const give = new QPushButton(tr("&Return"), answers);
    give->setDefault(true);
    const auto send_line = [this] { send(answer_->text().toUtf8() + '\n'); };
    connect(answer_, &QLineEdit::returnPressed, this, send_line);
    connect(give, &QPushButton::clicked, this, send_line);
    line->addWidget(label);
    line->addWidget(answer_, 1);
    line->addWidget(give);
    file_ = make_file_button(answers);
    line->addWidget(file_);
    layout->addLayout(line);
    if (!host_.answers_are_tex)
        return answers;

    auto *const row = new QWidget(answers);
    tex_answers_ = row;
    auto *const buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(6);
    add_answer(row, tr("&Edit"), tr("e: stop, and open the editor at the error"), "e\n");
    add_answer(row, tr("&Help"), tr("h: what the error means"), "h\n");
    add_answer(row, tr("&Scroll"), tr("s: show the coming errors without stopping"), "s\n");
    add_answer(row, tr("R&un"), tr("r: run on without stopping"), "r\n");
    add_answer(row, tr("&Quiet"), tr("q: run on in silence"), "q\n");
    add_answer(row, tr("E&xit"), tr("x: stop the run"), "x\n");
    auto *const insert = new QPushButton(tr("&Insert"), row);
    insert->setToolTip(tr("i: insert the text typed in the line"));
    insert->setAutoDefault(false);
    connect(insert, &QPushButton::clicked, this, [this] { send("i" + answer_->text().toUtf8() + '\n'); });
    buttons->addWidget(insert);
    buttons->addStretch(1);
    layout->addWidget(row);
    return answers;
}

// Makes the button with which a file is chosen, when TeX asks for another one.
QPushButton *RunWindow::make_file_button(QWidget *parent) {
    auto *const button = new QPushButton(tr("Choose &File..."), parent);
    button->setToolTip(tr("Answer with the path of a file"));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this] { choose_file(); });
    button->hide();
    return button;
}

void RunWindow::choose_file() {
    const QString path = QFileDialog::getOpenFileName(this, tr("Choose a File for TeX"));
    // TeX takes a name with blanks in quotes.
    if (!path.isEmpty())
        send((path.contains(u' ') ? u'"' + path + u'"' : path).toUtf8() + '\n');
}

// TeX asks for another file name in place of one of its usual answers.
void RunWindow::fit_to_question() {
    const QTextBlock last = text_->document()->lastBlock();
    bool asks_for_file = false;
    QTextBlock block = last;
    for (int i = 0; i < question_lines && block.isValid(); ++i, block = block.previous())
        asks_for_file = asks_for_file || block.text().contains(QLatin1String("Please type another"));
    file_->setVisible(asks_for_file);
    if (tex_answers_)
        tex_answers_->setVisible(!asks_for_file);
}

void RunWindow::send(const QByteArray &line) {
    if (!waiting_)
        return;
    host_.answer(host_.context, line.constData(), static_cast<std::size_t>(line.size()));
    answer_->clear();
    refresh();
}

void RunWindow::cancel() {
    cancel_->setEnabled(false);
    host_.cancel(host_.context);
}

// Closing the window stops the run. The window goes when the run has ended.
void RunWindow::closeEvent(QCloseEvent *event) {
    ToolWindowState state;
    host_.state(host_.context, &state);
    if (state.running) {
        event->ignore();
        cancel();
    }
}

void RunWindow::show_text() {
    char block[block_size];
    std::size_t size;
    QString text;
    while ((size = host_.take_text(host_.context, block, sizeof block)) > 0)
        text += QString(decoder_(QByteArrayView(block, static_cast<qsizetype>(size))));
    if (text.isEmpty())
        return;
    add_lines(text);
    keep_end();
}

// Adds TEXT at the end of what is shown. Each form of line end becomes one, and lines that are too long are
// cut.
void RunWindow::add_lines(const QString &text) {
    QString lines;
    lines.reserve(text.size());
    for (const QChar c : text) {
        const bool second_end = c == u'\n' && after_return_;
        after_return_ = c == u'\r';
        if (second_end)
            continue;
        const bool ends = c == u'\n' || c == u'\r';
        if (!ends && line_size_ >= longest_line && (c == u' ' || line_size_ >= 2 * longest_line)) {
            lines += u'\n';
            line_size_ = 0;
        }
        line_size_ = ends ? 0 : line_size_ + 1;
        lines += ends ? QChar(u'\n') : c.isNull() ? QChar(0x2400) : c;
    }
    QTextCursor end(text_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(lines);
}

void RunWindow::keep_end() {
    QScrollBar *const bar = text_->verticalScrollBar();
    if (at_end_ && bar->value() != bar->maximum())
        bar->setValue(bar->maximum());
}

// Asks for the focus. The window may not be on the screen yet and a window manager may be slow, so this is
// tried again at each refresh.
void RunWindow::ask_for_focus() {
    if (focus_tries_ == 0 || !isVisible())
        return;
    --focus_tries_;
    if (isActiveWindow()) {
        focus_tries_ = 0;
    } else if (!take_focus(this)) {
        focus_tries_ = 0;
        QApplication::alert(this);
    }
}

void RunWindow::show_state(const ToolWindowState &state) {
    const auto seconds = static_cast<int>(state.milliseconds / 1000);
    says_->setText(state.cancelling ? tr("Stopping…")
                   : state.waiting  ? tr("Waits for an answer")
                   : *state.step    ? QString::fromUtf8(state.step)
                                    : tr("Running"));
    pages_->setText(state.pages == 0   ? QString()
                    : state.pages == 1 ? tr("1 page")
                                       : tr("%1 pages").arg(state.pages));
    pages_->setVisible(state.pages > 0);
    time_->setText(QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0')));
    cancel_->setEnabled(!state.cancelling);
    const bool waiting = state.waiting && !state.cancelling;
    if (waiting)
        ask_for_focus();
    if (waiting == waiting_)
        return;
    waiting_ = waiting;
    if (waiting) {
        // The line for answers stays, so that the next answer can be typed while the program still prints.
        answers_->show();
        fit_to_question();
        answer_->setFocus();
        raise();
        at_end_ = true;
        keep_end();
        focus_tries_ = focus_tries;
        ask_for_focus();
    }
}

bool RunWindow::refresh() {
    ToolWindowState state;
    host_.state(host_.context, &state);
    if (!state.running)
        return false;
    show_text();
    show_state(state);
    return true;
}

} // namespace toolhost
