// The list of applications, with a way to any other.
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "common/offered_applications.h"
#include "desktop/choosers.h"
#include "widgets/applications.h"

namespace quillon::desktop {

namespace {

constexpr int list_width = 420, list_height = 380, path_role = Qt::UserRole;

void add_row(QListWidget *list, const common::DesktopEntry &entry) {
    auto *const row =
        new QListWidgetItem(widgets::application_icon(entry.icon), QString::fromStdString(entry.name), list);
    row->setToolTip(QString::fromStdString(entry.comment));
    row->setData(path_role, QFile::decodeName(entry.path.c_str()));
}

// The folder beside the shell's own bundle, which holds the applications of the distribution.
QString binaries_folder() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../../.."));
}

common::Use use_of(const NavRequest &request) {
    switch (request.use) {
    case navEditor:
        return common::Use::editor;
    case navPdfViewer:
        return common::Use::pdf_viewer;
    case navPsViewer:
        return common::Use::postscript_viewer;
    case navDviViewer:
        return common::Use::dvi_viewer;
    case navAnyUse:
        break;
    }
    return common::Use::any;
}

// Fills the list with the applications for the use, or with all. The distribution's own bundles are no
// editors and no viewers.
void fill(QListWidget *list, const NavRequest &request, bool all) {
    const std::vector<common::DesktopEntry> installed = common::installed_applications();
    list->clear();
    for (const common::DesktopEntry &entry :
         all ? installed : common::applications_for(use_of(request), installed))
        if (request_shows(request, QFile::decodeName(entry.path.c_str())))
            add_row(list, entry);
    const QDir folder(binaries_folder());
    for (const QFileInfo &bundle : folder.entryInfoList({QStringLiteral("*.app")}, QDir::Dirs))
        if (request.use == navAnyUse &&
            QFile::exists(bundle.filePath() + QStringLiteral("/Contents/PkgInfo")) &&
            request_shows(request, bundle.filePath())) {
            common::DesktopEntry entry;
            entry.name = bundle.completeBaseName().toStdString();
            entry.path = QFile::encodeName(bundle.filePath()).toStdString();
            add_row(list, entry);
        }
}

// Lets the person choose a program, a desktop entry, or a bundle by any file in it. Gives its POSIX path,
// empty when cancelled.
QString choose_other(const NavRequest &request, QWidget *parent) {
    QFileDialog dialog(parent);
    prepare_file_dialog(dialog, request);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    QString path = dialog.selectedFiles().value(0);
    const qsizetype bundle = path.indexOf(QLatin1String(".app/"));
    if (bundle >= 0)
        path.truncate(bundle + 4);
    return path;
}

void filter_rows(QListWidget *list, const QString &words) {
    int first = -1;
    for (int row = 0; row < list->count(); ++row) {
        const bool shown = list->item(row)->text().contains(words, Qt::CaseInsensitive);
        list->item(row)->setHidden(!shown);
        if (shown && first < 0)
            first = row;
    }
    list->setCurrentRow(first);
}

} // namespace

QString choose_application(const NavRequest &request, QWidget *parent) {
    QDialog dialog(parent);
    const QString prompt = QString::fromUtf8(request.prompt ? request.prompt : "");
    dialog.setWindowTitle(prompt);
    auto *const rows = new QVBoxLayout(&dialog);
    auto *const search = new QLineEdit;
    search->setPlaceholderText(QObject::tr("Search"));
    search->setAccessibleName(QObject::tr("Search applications"));
    search->setClearButtonEnabled(true);
    auto *const list = new QListWidget;
    list->setIconSize({widgets::application_icon_size, widgets::application_icon_size});
    list->setMinimumSize(list_width, list_height);
    list->setAccessibleName(QObject::tr("Applications"));
    fill(list, request, false);
    auto *const none = new QLabel(widgets::what_to_install(use_of(request)));
    none->setWordWrap(true);
    none->setVisible(request.use != navAnyUse && list->count() == 0);
    auto *const all = new QCheckBox(QObject::tr("Show &all applications"));
    all->setVisible(request.use != navAnyUse);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton *const ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(QObject::tr("Choose"));
    QPushButton *const other = buttons->addButton(QObject::tr("Other..."), QDialogButtonBox::ActionRole);
    other->setAutoDefault(false);
    rows->addWidget(new QLabel(prompt));
    rows->addWidget(search);
    rows->addWidget(list);
    rows->addWidget(none);
    rows->addWidget(all);
    rows->addWidget(buttons);

    QString chosen;
    const auto selected = [list] {
        const QListWidgetItem *const item = list->currentItem();
        return item && !item->isHidden() ? item->data(path_role).toString() : QString();
    };
    QObject::connect(list, &QListWidget::currentRowChanged, ok,
                     [=] { ok->setEnabled(!selected().isEmpty()); });
    QObject::connect(search, &QLineEdit::textChanged, list,
                     [list](const QString &t) { filter_rows(list, t); });
    QObject::connect(all, &QCheckBox::toggled, list, [&, list, search](bool on) {
        fill(list, request, on);
        filter_rows(list, search->text());
    });
    QObject::connect(list, &QListWidget::itemActivated, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(other, &QPushButton::clicked, &dialog, [&] {
        chosen = choose_other(request, &dialog);
        if (!chosen.isEmpty())
            dialog.accept();
    });
    filter_rows(list, {});
    ok->setEnabled(!selected().isEmpty());
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return chosen.isEmpty() ? selected() : chosen;
}

} // namespace quillon::desktop
