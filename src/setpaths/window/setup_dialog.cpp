#include "setpaths/window/setup_dialog.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QIcon>
#include <QPixmap>
#include <QPushButton>
#include <QStyle>
#include <QStyledItemDelegate>
#include <algorithm>
#include <functional>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/search_settings.h"
#include "ui_setup.h"
#include "widgets/applications.h"

namespace setpaths {

namespace {

constexpr int folders_column = 1;

struct PathRow {
    const char *key, *help;
};

// Returns the rows of the window's table: the search paths in their order, those that are seldom set behind
// them, and the distribution's trees.
std::vector<PathRow> path_rows() {
    std::vector<PathRow> rows;
    for (int row = 1; row <= common::search_setting_count; row++)
        for (const common::SearchSetting &setting : common::search_settings)
            if (setting.window_row == row)
                rows.push_back({setting.key, setting.help});
    for (const common::SearchSetting &setting : common::search_settings)
        if (setting.window_row == 0)
            rows.push_back({setting.key, setting.help});
    rows.push_back({"TEXMFTREES", "The distribution's own trees, which its programs find by themselves."});
    return rows;
}

constexpr std::pair<const char *, common::Use> uses[] = {{"Editor", common::Use::editor},
                                                         {"PDFVIEW", common::Use::pdf_viewer},
                                                         {"VIEWPS", common::Use::postscript_viewer},
                                                         {"DVIPREVIEW", common::Use::dvi_viewer}};

common::Use use_of(const std::string &key) {
    for (const auto &[name, use] : uses)
        if (key == name)
            return use;
    return common::Use::any;
}

QIcon finding_icon(bool good) {
    const QStyle *const style = QApplication::style();
    return good ? QIcon::fromTheme(QStringLiteral("emblem-ok"),
                                   style->standardIcon(QStyle::SP_DialogApplyButton))
                : style->standardIcon(QStyle::SP_MessageBoxWarning);
}

// Tells of every change in the text that is being typed into a cell.
class TypedCell : public QStyledItemDelegate {
  public:
    TypedCell(QObject *parent, std::function<void(int row, const QString &text)> typed)
        : QStyledItemDelegate(parent), typed_(std::move(typed)) {}
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override {
        QWidget *const editor = QStyledItemDelegate::createEditor(parent, option, index);
        if (auto *const line = qobject_cast<QLineEdit *>(editor))
            connect(line, &QLineEdit::textEdited, this,
                    [this, row = index.row()](const QString &text) { typed_(row, text); });
        return editor;
    }

  private:
    std::function<void(int row, const QString &text)> typed_;
};

std::unique_ptr<Ui::SetUp> make_form(QDialog *dialog) {
    auto form = std::make_unique<Ui::SetUp>();
    form->setupUi(dialog);
    return form;
}

// Shows the waiting cursor while a program or a disk keeps the window from answering.
struct Busy {
    Busy() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Busy() { QGuiApplication::restoreOverrideCursor(); }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;
};

} // namespace

SetupDialog::SetupDialog(const SetupWindowHost &host)
    : host_(host), ui_(make_form(this)), reverse_(host, *ui_, [this](const QString &text) { say(text); }),
      proposal_(host.propose(host.home, "")) {
    // The folder of programs that the person chose before comes before PATH.
    if (std::string folder; host_.value("TEXBIN", &folder) && !folder.empty())
        proposal_ = host_.propose(host_.home, common::to_posix_path(folder, proposal_.space));
    const bool first = !common::is_regular_file(common::preferences_path());
    ui_->headline->setText(first ? tr("Welcome to Quillon. This is what was found here: press Return to "
                                      "begin with it. Everything can be "
                                      "changed later, under Options > Set Up Paths.")
                                 : tr("What Quillon uses. A running Quillon takes changes over at once."));
    installed_ = common::installed_applications();
    add_program("Editor", ui_->editor);
    add_program("PDFVIEW", ui_->pdf_viewer);
    add_program("VIEWPS", ui_->ps_viewer);
    add_program("DVIPREVIEW", ui_->dvi_viewer);
    for (const auto &[key, box] :
         {std::pair("AUTOVIEW", ui_->show_result), std::pair("DATABASE", ui_->use_databases)}) {
        const bool on = value_of(key).starts_with('1');
        box->setChecked(on);
        flags_.push_back({key, box, on});
    }
    for (const PathRow &row : path_rows())
        paths_.push_back({row.key, row.help, list_text(value_of(row.key))});
    fill_paths();
    show_distribution();
    show_page();
    // The databases are written from the settings that are saved.
    ui_->write_databases->setEnabled(!first);
    connect(ui_->pages, &QTabWidget::currentChanged, this, [this] { show_page(); });
    connect(ui_->paths, &QTableWidget::currentCellChanged, this, [this](int row) { explain_path(row); });
    connect(ui_->paths, &QTableWidget::cellChanged, this, [this](int row) { explain_path(row); });
    ui_->paths->setItemDelegateForColumn(
        folders_column, new TypedCell(this, [this](int row, const QString &text) { check_path(row, text); }));
    connect(ui_->choose_programs, &QPushButton::clicked, this, [this] { choose_distribution(); });
    connect(ui_->take_paths, &QPushButton::clicked, this, [this] { take_paths(); });
    connect(ui_->write_databases, &QPushButton::clicked, this, [this] { write_databases(); });
    ui_->buttons->button(QDialogButtonBox::Save)->setDefault(true);
    ui_->editor->setFocus();
}

SetupDialog::~SetupDialog() = default;

// The keyboard goes to what a page is for.
void SetupDialog::show_page() {
    QWidget *const page = ui_->pages->currentWidget();
    if (page == ui_->reverse_page)
        reverse_.look();
    QWidget *const first = page == ui_->paths_page       ? static_cast<QWidget *>(ui_->paths)
                           : page == ui_->databases_page ? static_cast<QWidget *>(ui_->use_databases)
                           : page == ui_->reverse_page   ? static_cast<QWidget *>(ui_->reverse_viewer)
                                                         : static_cast<QWidget *>(ui_->editor);
    first->setFocus();
}

std::string SetupDialog::proposed(const char *key) const {
    for (const auto &[name, value] : proposal_.values)
        if (name == key)
            return value;
    return {};
}

std::string SetupDialog::value_of(const char *key) const {
    std::string value;
    return host_.value(key, &value) ? value : proposed(key);
}

// Returns a list with blanks for the byte that stands for them. A ":" stays, since it parts the list.
QString SetupDialog::list_text(const std::string &value) const {
    std::string text = value;
    std::replace(text.begin(), text.end(), static_cast<char>(proposal_.space), ' ');
    return QFile::decodeName(text.c_str());
}

std::string SetupDialog::list_value(const QString &text) const {
    std::string value = QFile::encodeName(text.trimmed()).toStdString();
    std::replace(value.begin(), value.end(), ' ', static_cast<char>(proposal_.space));
    return value;
}

void SetupDialog::add_program(const char *key, QComboBox *box) {
    const std::string path = common::to_posix_path(value_of(key), proposal_.space);
    const std::size_t number = programs_.size();
    programs_.push_back({key, box, QFile::decodeName(path.c_str()), {}});
    programs_.back().chosen = programs_.back().before;
    // An empty icon keeps the boxes equally high, and their names in one column.
    QPixmap empty(widgets::application_icon_size, widgets::application_icon_size);
    empty.fill(Qt::transparent);
    box->setIconSize(empty.size());
    box->addItem(empty, tr("None"), QString());
    for (const common::DesktopEntry &entry : common::applications_for(use_of(key), installed_))
        box->addItem(widgets::application_icon(entry.icon), QString::fromStdString(entry.name),
                     QFile::decodeName(entry.path.c_str()));
    box->addItem(empty, tr("Other..."));
    show_program(programs_.back());
    connect(box, &QComboBox::activated, this, [this, number] { choose_program(number); });
}

void SetupDialog::show_program(Program &program) {
    int row = program.box->findData(program.chosen);
    if (row < 0) {
        row = program.box->count() - 1;
        // Chosen by itself, or no longer installed.
        common::DesktopEntry entry;
        const bool known = common::read_desktop_entry(QFile::encodeName(program.chosen).toStdString(), entry);
        program.box->insertItem(row, widgets::application_icon(known ? entry.icon : std::string()),
                                known ? QString::fromStdString(entry.name) : program.chosen, program.chosen);
    }
    program.box->setCurrentIndex(row);
}

void SetupDialog::choose_program(std::size_t number) {
    Program &program = programs_[number];
    if (program.box->currentIndex() == program.box->count() - 1) {
        const QString path = QFileDialog::getOpenFileName(this, tr("Choose a program"));
        // A bundle is chosen by any file in it.
        const qsizetype bundle = path.indexOf(QLatin1String(".app/"));
        if (!path.isEmpty())
            program.chosen = bundle >= 0 ? path.left(bundle + 4) : path;
    } else {
        program.chosen = program.box->currentData().toString();
    }
    show_program(program);
    show_findings();
}

void SetupDialog::fill_paths() {
    ui_->paths->setRowCount(static_cast<int>(paths_.size()));
    int row = 0;
    for (const Path &path : paths_) {
        auto *const key = new QTableWidgetItem(QString::fromLatin1(path.key));
        key->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        key->setToolTip(QString::fromLatin1(path.help));
        ui_->paths->setItem(row, 0, key);
        auto *const folders = new QTableWidgetItem(path.before);
        folders->setToolTip(QString(path.before).replace(u':', u'\n'));
        ui_->paths->setItem(row++, folders_column, folders);
    }
    ui_->paths->horizontalHeader()->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    ui_->paths->resizeColumnToContents(0);
    ui_->paths->setCurrentCell(0, folders_column);
    explain_path(0);
}

void SetupDialog::explain_path(int row) {
    QTableWidgetItem *const item = row >= 0 ? ui_->paths->item(row, folders_column) : nullptr;
    if (!item)
        return;
    // The mark is set only here: while a cell is being typed into, it would put the old text back.
    const bool good = check_path(row, item->text());
    const QSignalBlocker quiet(ui_->paths);
    item->setIcon(good ? QIcon() : QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning));
}

// Says under the table what the path is for, and what is the matter with the folders in TEXT. False when one
// of them can be no folder.
bool SetupDialog::check_path(int row, const QString &text) {
    QStringList absent, wrong;
    for (const QString &element : text.split(u':', Qt::SkipEmptyParts)) {
        QString folder = element.trimmed();
        while (folder.size() > 1 && folder.endsWith(u'/'))
            folder.chop(1);
        const std::string path = common::expand_setting_path(list_value(folder), host_.home, proposal_.space);
        if (folder == QLatin1String(".") || folder.startsWith(QLatin1String("./")))
            continue;
        if (!path.starts_with('/'))
            wrong.append(folder);
        else if (!common::is_folder(path))
            absent.append(folder);
    }
    const Path &path = paths_[static_cast<std::size_t>(row)];
    QString note = QString::fromLatin1(path.key) + QStringLiteral(": ") + QString::fromLatin1(path.help);
    if (!wrong.isEmpty())
        note += QLatin1Char(' ') + tr("A folder begins with /, ~ or a full stop, and this does not: %1.")
                                       .arg(wrong.join(QStringLiteral(", ")));
    if (!absent.isEmpty())
        note += QLatin1Char(' ') + tr("There is no folder %1 now.").arg(absent.join(QStringLiteral(", ")));
    ui_->path_note->setText(note);
    return wrong.isEmpty();
}

// Puts the distribution's search paths into the table. Nothing is written before the person saves.
void SetupDialog::take_paths() {
    for (std::size_t row = 0; row < paths_.size(); row++)
        ui_->paths->item(static_cast<int>(row), folders_column)
            ->setText(list_text(proposed(paths_[row].key)));
    say(tr("The search paths are the distribution's. Save keeps them."));
}

void SetupDialog::choose_distribution() {
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Choose the folder of the TeX programs"), ui_->programs->text());
    if (folder.isEmpty())
        return;
    if (!QFile::exists(folder + QStringLiteral("/pdftex")) ||
        !QFile::exists(folder + QStringLiteral("/kpsewhich"))) {
        say(tr("There is no pdftex with its kpsewhich in %1.").arg(folder));
        return;
    }
    const Busy busy;
    proposal_ = host_.propose(host_.home, QFile::encodeName(folder).toStdString());
    other_distribution_ = true;
    take_paths();
    show_distribution();
}

void SetupDialog::show_distribution() {
    ui_->programs->setText(QFile::decodeName(proposal_.programs.c_str()));
    ui_->take_paths->setEnabled(!proposal_.programs.empty());
    found_ = host_.findings(proposal_);
    show_findings();
}

// What is missing stands first.
void SetupDialog::show_findings() {
    std::vector<Finding> rows = found_;
    for (const Program &program : programs_)
        if (const common::Use use = use_of(program.key); program.chosen.isEmpty())
            rows.push_back({use == common::Use::dvi_viewer, widgets::what_to_install(use).toStdString()});
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Finding &a, const Finding &b) { return !a.good && b.good; });
    ui_->found->clear();
    for (const Finding &row : rows)
        new QListWidgetItem(finding_icon(row.good), QString::fromStdString(row.text), ui_->found);
}

void SetupDialog::write_databases() {
    const Busy busy;
    say(host_.write_databases(host_.home) ? tr("The file databases are written.")
                                          : tr("The file databases could not be written."));
}

Values SetupDialog::changes() const {
    Values values;
    for (const Program &program : programs_)
        if (program.chosen != program.before)
            values.emplace_back(
                program.key,
                common::to_unix_path(QFile::encodeName(program.chosen).toStdString(), proposal_.space));
    for (const Flag &flag : flags_)
        if (flag.box->isChecked() != flag.before)
            values.emplace_back(flag.key, flag.box->isChecked() ? "1" : "0");
    for (std::size_t row = 0; row < paths_.size(); row++) {
        const QString text = ui_->paths->item(static_cast<int>(row), folders_column)->text();
        if (text != paths_[row].before)
            values.emplace_back(paths_[row].key, list_value(text));
    }
    if (other_distribution_)
        values.emplace_back("TEXBIN", common::to_unix_path(proposal_.programs, proposal_.space));
    return values;
}

void SetupDialog::accept() {
    // Moving the focus takes in what is still being typed into the table.
    ui_->buttons->setFocus();
    const Busy busy;
    written_ = false;
    if (!host_.write_settings(changes(), proposal_)) {
        say(tr("The preferences could not be written."));
    } else if (!host_.write_databases(host_.home)) {
        say(tr("The preferences are written; the file databases could not be."));
    } else {
        written_ = true;
        QDialog::accept();
    }
}

// While another window had the keyboard, a viewer may have begun or ended.
void SetupDialog::changeEvent(QEvent *event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() &&
        ui_->pages->currentWidget() == ui_->reverse_page)
        reverse_.look();
}

void SetupDialog::say(const QString &text) {
    ui_->message->setText(text);
}

} // namespace setpaths
