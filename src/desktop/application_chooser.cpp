// The list of applications, with a way to any other.
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "desktop/choosers.h"
#include "widgets/desktop_entries.h"

namespace quillon::desktop {

namespace {

constexpr int list_width = 420, list_height = 380, icon_size = 24, path_role = Qt::UserRole;

// The icon of that name, else a common one: every row has an icon, so that the names stand in one column.
QIcon entry_icon(const QString &name) {
    const QIcon plain = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    const QIcon generic = QIcon::fromTheme(QStringLiteral("application-x-executable"), plain);
    if (name.startsWith(u'/'))
        return QFile::exists(name) ? QIcon(name) : generic;
    const QIcon icon = QIcon::fromTheme(name, generic);
    return icon.availableSizes().isEmpty() ? generic : icon;
}

void add_row(QListWidget *list, const widgets::DesktopEntry &entry) {
    auto *const row = new QListWidgetItem(entry_icon(entry.icon), entry.name, list);
    row->setToolTip(entry.comment);
    row->setData(path_role, entry.path);
}

// The folder beside the shell's own bundle, which holds the applications of the distribution.
QString binaries_folder() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../../.."));
}

void add_rows(QListWidget *list, const NavRequest &request) {
    for (const widgets::DesktopEntry &entry : widgets::installed_applications())
        if (request_shows(request, entry.path))
            add_row(list, entry);
    const QDir folder(binaries_folder());
    for (const QFileInfo &bundle : folder.entryInfoList({QStringLiteral("*.app")}, QDir::Dirs))
        if (QFile::exists(bundle.filePath() + QStringLiteral("/Contents/PkgInfo")) &&
            request_shows(request, bundle.filePath()))
            add_row(list, {bundle.completeBaseName(), {}, {}, bundle.filePath()});
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
    list->setIconSize({icon_size, icon_size});
    list->setMinimumSize(list_width, list_height);
    list->setAccessibleName(QObject::tr("Applications"));
    add_rows(list, request);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton *const ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(QObject::tr("Choose"));
    QPushButton *const other = buttons->addButton(QObject::tr("Other..."), QDialogButtonBox::ActionRole);
    other->setAutoDefault(false);
    rows->addWidget(new QLabel(prompt));
    rows->addWidget(search);
    rows->addWidget(list);
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
