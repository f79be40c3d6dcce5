#include "desktop/choosers.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileSystemModel>

#include "toolbox/events.h"
#include "toolbox/files.h"

namespace quillon::desktop {

ShownFiles::ShownFiles(int (*shows)(const FSSpec *spec), QObject *parent)
    : QSortFilterProxyModel(parent), shows_(shows) {}

bool ShownFiles::filterAcceptsRow(int row, const QModelIndex &parent) const {
    const auto *const files = qobject_cast<QFileSystemModel *>(sourceModel());
    const QModelIndex index = files->index(row, 0, parent);
    if (files->isDir(index))
        return true;
    FSSpec spec;
    if (FSPathMakeSpec(QFile::encodeName(files->filePath(index)).constData(), &spec) != noErr)
        return false;
    return shows_(&spec) != 0;
}

bool request_shows(const NavRequest &request, const QString &path) {
    FSSpec spec;
    if (!request.shows)
        return true;
    return FSPathMakeSpec(QFile::encodeName(path).constData(), &spec) == noErr && request.shows(&spec);
}

// Only an entry that stands for an extension gets a pattern; the others leave it to the request's filter.
QString name_filter(const NavMenuItem &item) {
    const QString text = QString::fromUtf8(item.text.c_str());
    QString pattern = QStringLiteral("*");
    if (item.creator == four("1000") || item.creator == four("2000")) {
        const QString extension = text.section(u' ', -2, -2);
        if (!extension.isEmpty())
            pattern += extension.startsWith(u'.') ? extension : u'.' + extension;
    }
    return text + QStringLiteral(" (") + pattern + u')';
}

void prepare_file_dialog(QFileDialog &dialog, const NavRequest &request) {
    dialog.setWindowTitle(QString::fromUtf8(request.prompt ? request.prompt : ""));
    const bool saves = request.kind == navPutFile, folder = request.kind == navChooseFolder;
    dialog.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(folder  ? QFileDialog::Directory
                       : saves ? QFileDialog::AnyFile
                               : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::ShowDirsOnly, folder);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    if (folder)
        dialog.setLabelText(QFileDialog::Accept, QObject::tr("Choose"));
    QStringList filters;
    for (int i = 0; i < request.filter_count; ++i)
        filters.append(name_filter(request.filters[i]));
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        dialog.selectNameFilter(filters.value(request.initial_filter, filters.first()));
    }
    if (request.start_folder)
        dialog.setDirectory(QFile::decodeName(request.start_folder));
    if (request.start_name && *request.start_name)
        dialog.selectFile(QFile::decodeName(request.start_name));
    if (request.shows)
        dialog.setProxyModel(new ShownFiles(request.shows, &dialog));
    QObject::connect(
        &dialog, &QFileDialog::filterSelected, &dialog, [&dialog, &request, filters](const QString &name) {
            // The pop-up's text leaves the pattern out.
            for (int i = 0; i < request.filter_count; ++i)
                if (request.filter_picked &&
                    (name == filters[i] || name == QString::fromUtf8(request.filters[i].text.c_str())))
                    request.filter_picked(&request.filters[i]);
            if (auto *const shown = dynamic_cast<ShownFiles *>(dialog.proxyModel()))
                shown->filter_changed();
        });
}

int run_chooser(const NavRequest &request, QWidget *parent, BoundedBuffer &posix_path) {
    if (LeaveRequested())
        return 0;
    if (QWidget *const modal = QApplication::activeModalWidget())
        parent = modal;
    QString chosen;
    if (request.kind == navChooseApplication) {
        chosen = choose_application(request, parent);
    } else {
        QFileDialog dialog(parent);
        prepare_file_dialog(dialog, request);
        if (dialog.exec() == QDialog::Accepted)
            chosen = dialog.selectedFiles().value(0);
    }
    const QByteArray path = QFile::encodeName(chosen);
    return !path.isEmpty() && posix_path.copy({path.constData(), static_cast<std::size_t>(path.size())});
}

} // namespace quillon::desktop
