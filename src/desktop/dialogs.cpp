#include "desktop/dialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTreeWidget>
#include <QWindow>
#include <algorithm>
#include <cstring>
#include <limits>

#include "desktop/main_window.h"
#include "desktop/segment_layout.h"
#include "toolbox/events.h"
#include "ui_dialogs.h"

namespace quillon::desktop {

namespace {

constexpr std::int16_t control_cancel = 2, first_own_control = 3;
constexpr int selected_from = 0, selected_to = 300, blanks_kept_free = 2;
// Sentences of help, and what stands in a display without a text.
constexpr double help_size = 0.9;
constexpr float muted_opacity = 0.7F;

std::int16_t coordinate(int value) {
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::clamp<int>(value, Limits::min(), Limits::max()));
}

// A control with the text that the shell gave it. A field whose text is still SHOWN has these very BYTES,
// which need not be UTF-8.
struct Control {
    QWidget *widget = nullptr;
    QByteArray bytes;
    QString shown;
    QString when_empty; // what a display without a text says, which is its text in the form
    bool shortened = false;
};

class DesktopDialog : public QDialog, public Dialog {
  public:
    DesktopDialog(const DialogForm &form, QWidget *parent);

    // Null when the window has no control of that number.
    Control *control(std::int16_t number);
    void set_text(Control &control, const char *text, bool shortened);
    // The window's list, and its row whose control has that number; null when there is none.
    QTreeWidget *list() const { return findChild<QTreeWidget *>(); }
    QTreeWidgetItem *row(std::int16_t number) const;
    void serve();
    // Escape, the close button, and the end of the shell.
    void reject() override;

  protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

  private:
    void add_control(QWidget *widget, std::int16_t number);
    void find_first_control();
    void fit();
    void mute(QLabel *label, bool muted) const;
    void show_display(const Control &control) const;
    void mute_all() const;

    QHash<std::int16_t, Control> controls_;
};

DesktopDialog::DesktopDialog(const DialogForm &form, QWidget *parent) : QDialog(parent) {
    form.set_up(this);
    for (QWidget *const widget : findChildren<QWidget *>()) {
        const int number = widget->property("controlID").toInt();
        if (number > 0)
            add_control(widget, coordinate(number));
        if (!widget->property("help").toBool())
            continue;
        QFont font = widget->font();
        font.setPointSizeF(font.pointSizeF() * help_size);
        widget->setFont(font);
    }
    mute_all();
    find_first_control();
    fit();
}

void DesktopDialog::add_control(QWidget *widget, std::int16_t number) {
    Control &control = controls_[number];
    control.widget = widget;
    if (auto *const display = qobject_cast<QLabel *>(widget)) {
        control.when_empty = display->text();
        display->installEventFilter(this);
        set_text(control, "", false);
    }
    if (auto *const tree = qobject_cast<QTreeWidget *>(widget)) {
        tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
        tree->header()->setStretchLastSection(false);
        tree->headerItem()->setTextAlignment(1, Qt::AlignTrailing | Qt::AlignVCenter);
    }
    auto *const button = qobject_cast<QAbstractButton *>(widget);
    if (button && !qobject_cast<QCheckBox *>(button))
        connect(button, &QAbstractButton::clicked, this, [this, number] { hit_control(this, number); });
}

// The keyboard begins at the first control other than OK and Cancel, else at the default button.
void DesktopDialog::find_first_control() {
    QWidget *first = nullptr;
    for (QWidget *widget = nextInFocusChain(); widget != this && !first; widget = widget->nextInFocusChain())
        if ((widget->focusPolicy() & Qt::TabFocus) &&
            widget->property("controlID").toInt() >= first_own_control)
            first = widget;
    for (QPushButton *const button : findChildren<QPushButton *>())
        if (!first && button->isDefault())
            first = button;
    if (first)
        first->setFocus();
}

// A window may become wider, for long texts, but never so small that a text is cut.
void DesktopDialog::fit() {
    if (layout()->sizeConstraint() == QLayout::SetFixedSize)
        return;
    const QSize wanted = layout()->totalSizeHint();
    setMinimumSize(wanted);
    if (!list())
        setMaximumHeight(wanted.height());
    resize(wanted);
}

Control *DesktopDialog::control(std::int16_t number) {
    const auto found = controls_.find(number);
    return found == controls_.end() ? nullptr : &*found;
}

QTreeWidgetItem *DesktopDialog::row(std::int16_t number) const {
    return list() ? list()->topLevelItem(number - first_list_row) : nullptr;
}

void DesktopDialog::set_text(Control &control, const char *text, bool shortened) {
    control.bytes = text;
    control.shortened = shortened;
    if (auto *const field = qobject_cast<QLineEdit *>(control.widget)) {
        field->setText(QString::fromUtf8(control.bytes));
        field->setCursorPosition(0);
        control.shown = field->text();
        return;
    }
    control.shown = shown_text(text, static_cast<std::size_t>(control.bytes.size()), ' ');
    show_display(control);
}

void DesktopDialog::show_display(const Control &control) const {
    auto *const display = static_cast<QLabel *>(control.widget);
    const QString &text = control.shown;
    const QString &described = text.isEmpty() ? control.when_empty : text;
    QString visible = described;
    if (control.shortened && !text.isEmpty()) {
        const QFontMetrics metrics = display->fontMetrics();
        const int room =
            display->contentsRect().width() - blanks_kept_free * metrics.horizontalAdvance(QLatin1Char(' '));
        visible = metrics.elidedText(text, Qt::ElideMiddle, room);
    }
    display->setText(visible);
    // A text that looks like markup is shown as it is.
    display->setToolTip(Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text);
    display->setAccessibleDescription(described);
    // The keyboard does not reach a display; the button beside it tells what was chosen.
    if (auto *const button = findChild<QWidget *>(display->property("chosenBy").toString()))
        button->setAccessibleDescription(described);
    mute(display, text.isEmpty());
}

void DesktopDialog::mute(QLabel *label, bool muted) const {
    QPalette colours; // all are the window's but those that are set here
    if (muted) {
        QColor colour = palette().color(QPalette::WindowText);
        colour.setAlphaF(muted_opacity);
        colours.setColor(QPalette::WindowText, colour);
    }
    label->setPalette(colours);
}

void DesktopDialog::mute_all() const {
    for (QLabel *const label : findChildren<QLabel *>())
        if (label->property("help").toBool())
            mute(label, true);
    for (const Control &control : controls_)
        if (auto *const display = qobject_cast<QLabel *>(control.widget))
            mute(display, control.shown.isEmpty());
}

void DesktopDialog::changeEvent(QEvent *event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        mute_all();
}

// A button that has the keyboard shows it from the start, not only after the first key.
void DesktopDialog::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    setAttribute(Qt::WA_KeyboardFocusChange);
}

bool DesktopDialog::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::Resize && object->isWidgetType()) {
        for (const Control &control : controls_)
            if (control.widget == object)
                show_display(control);
    } else if (event->type() == QEvent::MouseMove && object->isWindowType() && handler) {
        const QPoint at = static_cast<QMouseEvent *>(event)->position().toPoint();
        const DialogEvent moved = {
            four("mous"), kEventMouseMoved, 0, {coordinate(at.y()), coordinate(at.x())}};
        handler(this, &moved);
    }
    return QDialog::eventFilter(object, event);
}

void DesktopDialog::serve() {
    // The window of the display sees every move of the mouse once, whichever control it is over. Asking for
    // its number would give the main window's own parts windows of the display too.
    create();
    windowHandle()->installEventFilter(this);
    exec();
}

void DesktopDialog::reject() {
    hit_control(this, control_cancel);
    if (LeaveRequested())
        done(Rejected);
}

DesktopDialog *own(Dialog *dialog) {
    return static_cast<DesktopDialog *>(dialog);
}

// The control's widget when it is of that class, else null.
template <class Widget> Widget *widget_of(Dialog *dialog, std::int16_t number) {
    const Control *const control = own(dialog)->control(number);
    return control ? qobject_cast<Widget *>(control->widget) : nullptr;
}

} // namespace

Dialog *new_dialog(const char *name) {
    QWidget *parent = QApplication::activeModalWidget();
    if (!parent && main_window() && main_window()->isVisible())
        parent = main_window();
    for (const DialogForm &form : dialog_forms)
        if (std::strcmp(form.window, name) == 0)
            return new DesktopDialog(form, parent);
    return nullptr;
}

void dispose_dialog(Dialog *dialog) {
    delete own(dialog);
}

void run_dialog(Dialog *dialog) {
    if (LeaveRequested())
        hit_control(dialog, control_cancel);
    else
        own(dialog)->serve();
}

void end_dialog(Dialog *dialog) {
    own(dialog)->done(QDialog::Accepted);
}

void show_sheet(Dialog *dialog, int show) {
    DesktopDialog *const window = own(dialog);
    // The keyboard stays with the console, and there is nothing that the person could close.
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    if (show)
        window->setWindowFlag(Qt::WindowCloseButtonHint, false);
    window->setVisible(show != 0);
}

void set_control_text(Dialog *dialog, std::int16_t control, const char *text, int shortened) {
    if (Control *const found = own(dialog)->control(control))
        own(dialog)->set_text(*found, text, shortened != 0);
}

int control_text(Dialog *dialog, std::int16_t control, BoundedBuffer &text) {
    const Control *const found = own(dialog)->control(control);
    if (!found)
        return 0;
    QByteArray bytes = found->bytes;
    const auto *const field = qobject_cast<QLineEdit *>(found->widget);
    if (field && field->text() != found->shown)
        bytes = field->text().toUtf8();
    return text.copy({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

void set_control_value(Dialog *dialog, std::int16_t control, int value) {
    if (auto *const box = widget_of<QCheckBox>(dialog, control))
        box->setChecked(value != 0);
    else if (auto *const row = own(dialog)->row(control))
        row->setCheckState(0, value != 0 ? Qt::Checked : Qt::Unchecked);
}

int control_value(Dialog *dialog, std::int16_t control) {
    if (const auto *const row = own(dialog)->row(control))
        return row->checkState(0) == Qt::Checked;
    const auto *const box = widget_of<QCheckBox>(dialog, control);
    return box && box->isChecked();
}

void add_list_row(Dialog *dialog, std::int16_t list, const char *text, const char *remark) {
    auto *const tree = widget_of<QTreeWidget>(dialog, list);
    if (!tree)
        return;
    const QString shown = shown_text(text, std::strlen(text), ' ');
    auto *const row = new QTreeWidgetItem(tree, {shown, QString::fromUtf8(remark)});
    row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    row->setToolTip(0, Qt::mightBeRichText(shown) ? "<span>" + shown.toHtmlEscaped() + "</span>" : shown);
    row->setTextAlignment(1, Qt::AlignTrailing | Qt::AlignVCenter);
    if (!tree->currentItem())
        tree->setCurrentItem(row);
}

void select_control(Dialog *dialog, std::int16_t control) {
    if (auto *const field = widget_of<QLineEdit>(dialog, control)) {
        field->setFocus();
        field->setSelection(selected_from, selected_to - selected_from);
    }
}

int control_bounds(Dialog *dialog, std::int16_t control, Rect *bounds) {
    DesktopDialog *const window = own(dialog);
    const Control *const found = window->control(control);
    if (!found)
        return 0;
    if (!window->isVisible()) // its controls have places already when it is asked before it is shown
        window->layout()->activate();
    const QRect area(found->widget->mapTo(window, QPoint(0, 0)), found->widget->size());
    *bounds = {coordinate(area.top()), coordinate(area.left()), coordinate(area.top() + area.height()),
               coordinate(area.left() + area.width())};
    return 1;
}

} // namespace quillon::desktop
