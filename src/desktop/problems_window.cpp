#include "desktop/problems_window.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QShortcut>
#include <QTreeView>
#include <algorithm>

#include "core/command_table.h"
#include "desktop/event_pump.h"
#include "desktop/main_window.h"
#include "desktop/problem_model.h"
#include "tools/problems.h"

namespace quillon::desktop {

namespace {

constexpr int first_width = 720, first_height = 320, edge = 6;
constexpr int rows_measured = 200; // for the widths of columns
constexpr int widest_place = 3;    // the part of the window that the place takes at most: one in three

ProblemsWindow *the_window = nullptr;

QString count_of(int kind) {
    const QString names[] = {QObject::tr("Errors"), QObject::tr("Warnings"),
                             QObject::tr("Undefined references"), QObject::tr("Bad boxes")};
    return QStringLiteral("%1 (%2)").arg(names[kind]).arg(problems_of_kind(kind));
}

} // namespace

ProblemsWindow::ProblemsWindow()
    : model_(new ProblemModel(this)), list_(new QTreeView(this)), kinds_{}, summary_(new QLabel(this)),
      nothing_(new QLabel(tr("The last run has no problems."), this)) {
    setWindowTitle(tr("Problems"));
    setWindowFlags(Qt::Window);
    resize(first_width, first_height);
    lay_out();
    add_keys();
    list_->installEventFilter(this);
    connect(list_, &QTreeView::doubleClicked, this, &ProblemsWindow::go_to_current);
}

void ProblemsWindow::lay_out() {
    list_->setModel(model_);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
    list_->setAlternatingRowColors(true);
    list_->setTextElideMode(Qt::ElideRight);
    list_->setAccessibleName(tr("Problems of the last run"));
    list_->header()->setStretchLastSection(true);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(edge, edge, edge, edge);
    column->setSpacing(edge);
    auto *const row = new QHBoxLayout;
    row->setSpacing(2 * edge);
    for (int kind = 0; kind < problem_kind_count; kind++) {
        kinds_[kind] = new QCheckBox(this);
        kinds_[kind]->setIcon(problem_icon(kind));
        kinds_[kind]->setChecked((shown_problem_kinds >> kind) & 1);
        connect(kinds_[kind], &QCheckBox::toggled, this, &ProblemsWindow::filter);
        row->addWidget(kinds_[kind]);
    }
    row->addStretch(1);
    column->addLayout(row);
    column->addWidget(list_, 1);
    nothing_->setAlignment(Qt::AlignCenter);
    nothing_->setForegroundRole(QPalette::PlaceholderText);
    column->addWidget(nothing_, 1);
    summary_->setForegroundRole(QPalette::PlaceholderText);
    summary_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    column->addWidget(summary_);
}

// The keys of the menu's items work here too. They become the choices that the menu would post.
void ProblemsWindow::add_keys() {
    for (const std::int16_t item : {edit_problems, edit_next_problem, edit_previous_problem}) {
        const Command *const row = find_command(menu_edit, item);
        const QKeySequence keys(QStringLiteral("Ctrl+") + QChar::fromLatin1(row->key));
        connect(new QShortcut(keys, this), &QShortcut::activated, this, [item] {
            post_event(mouseDown,
                       static_cast<std::uint32_t>(menu_edit) << 16 | static_cast<std::uint32_t>(item),
                       cmdKey);
        });
    }
    connect(new QShortcut(Qt::CTRL | Qt::Key_W, this), &QShortcut::activated, this, &QWidget::close);
}

void ProblemsWindow::open() {
    read();
    show();
    raise();
    activateWindow();
    list_->setFocus();
}

void ProblemsWindow::read() {
    model_->read();
    show_counts();
    fit_columns();
    select(current_problem >= 0 ? current_problem : model_->rowCount({}) > 0 ? model_->problem_of(0) : -1);
}

void ProblemsWindow::show_counts() {
    BoundedString<256> line;
    long all = 0;
    for (int kind = 0; kind < problem_kind_count; kind++) {
        kinds_[kind]->setText(count_of(kind));
        all += problems_of_kind(kind);
    }
    last_run_summary(line);
    QString text = QString::fromUtf8(line.c_str());
    if (all > problem_count())
        text += tr(" – the first %1 problems are listed").arg(problem_count());
    summary_->setText(text);
    const bool any = problem_count() > 0;
    nothing_->setText(line.empty() ? tr("Nothing was run yet.") : tr("The last run has no problems."));
    nothing_->setVisible(!any);
    list_->setVisible(any);
}

// Gives the kind and the place the room that the first rows need.
void ProblemsWindow::fit_columns() {
    const QFontMetrics metrics = list_->fontMetrics();
    int widths[] = {0, 0};
    for (int row = 0; row < std::min(model_->rowCount({}), rows_measured); row++)
        for (int column = 0; column < 2; column++)
            widths[column] = std::max(
                widths[column], metrics.horizontalAdvance(model_->index(row, column).data().toString()));
    const int blank = metrics.horizontalAdvance(u'm');
    list_->setColumnWidth(ProblemModel::kind_column, widths[0] + list_->iconSize().width() + 16 + 3 * blank);
    list_->setColumnWidth(ProblemModel::place_column,
                          std::max(5 * blank, std::min(widths[1] + 2 * blank, width() / widest_place)));
}

void ProblemsWindow::filter() {
    shown_problem_kinds = 0;
    for (unsigned kind = 0; kind < problem_kind_count; kind++)
        shown_problem_kinds |= kinds_[kind]->isChecked() ? 1U << kind : 0U;
    const QModelIndex current = list_->currentIndex();
    const int problem = current.isValid() ? model_->problem_of(current.row()) : -1;
    model_->read();
    select(problem);
}

void ProblemsWindow::select(int problem) {
    const int row = problem < 0 ? -1 : model_->row_of(problem);
    if (row < 0)
        return;
    list_->setCurrentIndex(model_->index(row, 0));
    list_->scrollTo(list_->currentIndex());
}

void ProblemsWindow::go_to_current() {
    const QModelIndex current = list_->currentIndex();
    if (current.isValid())
        post_number_event(four("QUIL"), four("gopr"), model_->problem_of(current.row()));
}

bool ProblemsWindow::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            go_to_current();
            return true;
        }
    }
    return QDialog::eventFilter(object, event);
}

void ProblemsWindow::changeEvent(QEvent *event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fit_columns();
}

void show_problems() {
    if (!the_window)
        the_window = new ProblemsWindow;
    the_window->open();
}

void problems_changed() {
    BoundedString<256> line;
    last_run_summary(line);
    if (main_window())
        main_window()->set_summary(QString::fromUtf8(line.c_str()));
    if (the_window)
        the_window->read();
}

void problem_opened(int problem) {
    if (the_window)
        the_window->select(problem);
}

} // namespace quillon::desktop
