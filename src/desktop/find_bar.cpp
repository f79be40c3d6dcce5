#include "desktop/find_bar.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QShortcut>
#include <QToolButton>

#include "desktop/console_view.h"
#include "state/job_state.h"

namespace quillon::desktop {

namespace {

constexpr int longest_text = 1000, edge = 4, spacing = 4;
constexpr int parts_that_fit = 4;          // times the width of a large count, from which all parts have room
constexpr std::size_t longest_offer = 200; // bytes of a selection that the bar takes up

bool is_return(const QKeyEvent *event) {
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

} // namespace

FindBar::FindBar(ConsoleView *console, QWidget *parent)
    : QWidget(parent), console_(console), text_(new QLineEdit(this)),
      previous_(make_button(tr("Previous hit (Shift+F3)"))), next_(make_button(tr("Next hit (F3)"))),
      match_case_(new QCheckBox(tr("Match case"), this)), count_(new QLabel(this)),
      close_(make_button(tr("Close (Escape)"))) {
    hide();
    lay_out();
    for (QWidget *const part : std::initializer_list<QWidget *>{text_, previous_, next_, match_case_, close_})
        part->installEventFilter(this);
    connect(text_, &QLineEdit::textChanged, this, &FindBar::search_anew);
    connect(match_case_, &QCheckBox::toggled, this, &FindBar::search_anew);
    connect(previous_, &QToolButton::clicked, this, &FindBar::find_previous);
    connect(next_, &QToolButton::clicked, this, &FindBar::find_next);
    connect(close_, &QToolButton::clicked, this, &FindBar::shut);
    // A shortcut of a widget that is hidden does nothing.
    connect(new QShortcut(Qt::Key_F3, this), &QShortcut::activated, this, &FindBar::find_next);
    connect(new QShortcut(Qt::SHIFT | Qt::Key_F3, this), &QShortcut::activated, this,
            &FindBar::find_previous);
    console_->on_change([this] { refresh(); });
}

QToolButton *FindBar::make_button(const QString &name) {
    auto *const button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setToolTip(name);
    button->setAccessibleName(name);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void FindBar::lay_out() {
    text_->setPlaceholderText(tr("Find in console"));
    text_->setAccessibleName(tr("Find in console"));
    text_->setClearButtonEnabled(true);
    // The toolkit gives its button no name.
    for (QToolButton *const button : text_->findChildren<QToolButton *>())
        button->setAccessibleName(tr("Clear"));
    text_->setMaxLength(longest_text);
    text_->setMinimumWidth(text_->fontMetrics().horizontalAdvance(QStringLiteral("nnnnnn")));
    previous_->setArrowType(Qt::UpArrow);
    next_->setArrowType(Qt::DownArrow);
    match_case_->setFocusPolicy(Qt::TabFocus);
    close_->setText(QString(QChar(0x00D7)));
    match_case_->setToolTip(tr("Match case"));
    match_case_->setAccessibleName(tr("Match case"));
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(edge, edge, edge, edge);
    row->setSpacing(spacing);
    row->addWidget(text_, 1);
    row->addWidget(previous_);
    row->addWidget(next_);
    row->addWidget(match_case_);
    row->addWidget(count_);
    row->addWidget(close_);
    // The bar never makes the window wider.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

// In a narrow window the box has no label, and the count takes only the room that it needs.
void FindBar::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    const int count_width = count_->fontMetrics().horizontalAdvance(QStringLiteral("99999 of 99999"));
    const bool wide = width() >= parts_that_fit * count_width;
    match_case_->setText(wide ? tr("Match case") : QString());
    count_->setMinimumWidth(wide ? count_width : 0);
}

void FindBar::open() {
    const bool shown = isVisibleTo(parentWidget());
    const ByteRange selected = console_->selection();
    show();
    text_->setFocus(Qt::ShortcutFocusReason);
    if (!shown) {
        origin_ = selected.empty() ? console_->top_offset() : selected.start;
        console_->show_hits(&search_);
        const bool offered =
            console_->select_text() && !selected.empty() && selected.end - selected.start <= longest_offer;
        const QString text = offered ? console_->text_of(selected) : QString();
        const QSignalBlocker quiet(text_);
        if (!text.isEmpty() && !text.contains(u'\n'))
            text_->setText(text);
        search_anew();
    }
    text_->selectAll();
}

void FindBar::shut() {
    // The toolkit would look for the next widget itself when the one with the keyboard is hidden.
    console_->setFocus(Qt::OtherFocusReason);
    hide();
    console_->show_hits(nullptr);
    if (!console_->select_text())
        console_->clear_selection();
}

// Looks for what the bar says now, from the place where the search began.
void FindBar::search_anew() {
    search_.set_pattern(SearchPattern(text_->text().toStdString(), match_case_->isChecked(), space_char));
    store_ = console_->store();
    if (!store_)
        return;
    search_.update(*store_);
    std::optional<ByteRange> hit = search_.first_from(*store_, origin_);
    if (!hit)
        hit = search_.first_from(*store_, 0);
    go_to(hit);
}

void FindBar::go_to(std::optional<ByteRange> hit) {
    if (hit)
        console_->select(*hit);
    else
        console_->clear_selection();
    console_->viewport()->update();
    refresh();
}

void FindBar::find_next() {
    refresh();
    if (!store_)
        return;
    const ByteRange marked = console_->selection();
    std::optional<ByteRange> hit =
        search_.first_from(*store_, marked.empty() ? console_->top_offset() : marked.end);
    if (!hit)
        hit = search_.first_from(*store_, 0);
    if (hit)
        origin_ = hit->start;
    go_to(hit);
}

void FindBar::find_previous() {
    refresh();
    if (!store_)
        return;
    const ByteRange marked = console_->selection();
    std::optional<ByteRange> hit =
        search_.last_before(*store_, marked.empty() ? console_->top_offset() : marked.start);
    if (!hit)
        hit = search_.last_before(*store_, store_->size());
    if (hit)
        origin_ = hit->start;
    go_to(hit);
}

void FindBar::refresh() {
    if (!isVisibleTo(parentWidget()))
        return;
    if (store_ != console_->store()) {
        store_ = console_->store();
        search_.set_pattern(search_.pattern());
    }
    if (store_)
        search_.update(*store_);
    const QString text = count_text();
    if (text == count_->text())
        return;
    count_->setText(text);
    text_->setAccessibleDescription(text);
}

QString FindBar::count() const {
    return count_->text();
}

QString FindBar::count_text() const {
    if (text_->text().isEmpty())
        return {};
    const std::size_t hits = search_.hits();
    if (hits == 0)
        return tr("No hits");
    const ByteRange marked = console_->selection();
    if (store_ && !marked.empty() && search_.first_from(*store_, marked.start) == marked)
        return tr("%1 of %2").arg(search_.number_of(*store_, marked.start) + 1).arg(hits);
    return hits == 1 ? tr("1 hit") : tr("%1 hits").arg(hits);
}

// True for a key that the bar has no use for and the console has: one that scrolls, and a command key.
bool FindBar::passes_on(const QKeyEvent *event) const {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return event->modifiers() & Qt::ControlModifier && event->key() != Qt::Key_Control;
    }
}

void FindBar::keyPressEvent(QKeyEvent *event) {
    event->accept();
    if (event->key() == Qt::Key_Escape)
        shut();
    else if (is_return(event))
        event->modifiers() & Qt::ShiftModifier ? find_previous() : find_next();
    else if (passes_on(event))
        QCoreApplication::sendEvent(console_, event);
}

bool FindBar::eventFilter(QObject *object, QEvent *event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(object, event);
    auto *const key = static_cast<QKeyEvent *>(event);
    // While the menus are disabled the menu bar must not take the keyboard, as the console sees to it as
    // well.
    if (event->type() == QEvent::ShortcutOverride && !console_->commands_admitted() &&
        (key->key() == Qt::Key_Alt || key->modifiers() & Qt::AltModifier)) {
        event->accept();
        return true;
    }
    // With nothing selected in the line, the copy that is asked for is that of the hit.
    if (event->type() == QEvent::KeyPress && key->matches(QKeySequence::Copy) && !text_->hasSelectedText()) {
        QCoreApplication::sendEvent(console_, event);
        return true;
    }
    // The line would not say whether the Shift key was held.
    if (event->type() == QEvent::KeyPress && is_return(key)) {
        keyPressEvent(key);
        return true;
    }
    return QWidget::eventFilter(object, event);
}

} // namespace quillon::desktop
