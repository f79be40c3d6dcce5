#include "setpaths/window/setup_dialog.h"

#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QIcon>
#include <QPushButton>
#include <algorithm>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/search_settings.h"
#include "ui_setup.h"
#include "widgets/desktop_entries.h"

namespace setpaths {

namespace {

constexpr int folders_column = 1;

// Returns the keys of the settings in the window's table, in its order: the search paths that it shows, and
// the distribution's trees.
std::vector<const char *> path_keys() {
    std::vector<const char *> keys;
    for (int row = 1; row <= common::search_setting_count; row++)
        for (const common::SearchSetting &setting : common::search_settings)
            if (setting.window_row == row)
                keys.push_back(setting.key);
    keys.push_back("TEXMFTREES");
    return keys;
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
    : host_(host), ui_(std::make_unique<Ui::SetUp>()), proposal_(host.propose(host.home, "")) {
    ui_->setupUi(this);
    // The folder of programs that the person chose before comes before PATH.
    if (std::string folder; host_.value("TEXBIN", &folder) && !folder.empty())
        proposal_ = host_.propose(host_.home, common::to_posix_path(folder, proposal_.space));
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
    for (const char *const key : path_keys())
        paths_.push_back({key, list_text(value_of(key))});
    fill_paths();
    show_distribution();
    // The databases are written from the settings that are saved.
    ui_->write_databases->setEnabled(common::is_regular_file(common::preferences_path()));
    connect(ui_->choose_programs, &QPushButton::clicked, this, [this] { choose_distribution(); });
    connect(ui_->take_paths, &QPushButton::clicked, this, [this] { take_paths(); });
    connect(ui_->write_databases, &QPushButton::clicked, this, [this] { write_databases(); });
    ui_->buttons->button(QDialogButtonBox::Save)->setDefault(true);
    ui_->editor->setFocus();
}

SetupDialog::~SetupDialog() = default;

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
    box->addItem(tr("None"), QString());
    for (const widgets::DesktopEntry &entry : widgets::installed_applications())
        box->addItem(QIcon::fromTheme(entry.icon), entry.name, entry.path);
    box->addItem(tr("Other..."));
    show_program(programs_.back());
    connect(box, &QComboBox::activated, this, [this, number] { choose_program(number); });
}

void SetupDialog::show_program(Program &program) {
    int row = program.box->findData(program.chosen);
    if (row < 0) {
        row = program.box->count() - 1;
        program.box->insertItem(row, program.chosen, program.chosen);
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
}

void SetupDialog::fill_paths() {
    ui_->paths->setRowCount(static_cast<int>(paths_.size()));
    int row = 0;
    for (const Path &path : paths_) {
        auto *const key = new QTableWidgetItem(QString::fromLatin1(path.key));
        key->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        ui_->paths->setItem(row, 0, key);
        auto *const folders = new QTableWidgetItem(path.before);
        folders->setToolTip(QString(path.before).replace(u':', u'\n'));
        ui_->paths->setItem(row++, folders_column, folders);
    }
    ui_->paths->horizontalHeader()->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    ui_->paths->resizeColumnToContents(0);
    ui_->paths->setCurrentCell(0, folders_column);
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
    const bool found = !proposal_.programs.empty();
    ui_->programs->setText(QFile::decodeName(proposal_.programs.c_str()));
    ui_->take_paths->setEnabled(found);
    if (!found)
        say(tr("No TeX distribution was found. Install TeX Live, or choose the folder of its programs."));
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

void SetupDialog::say(const QString &text) {
    ui_->message->setText(text);
}

} // namespace setpaths
