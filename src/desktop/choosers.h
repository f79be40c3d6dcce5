// The choosers on screen: the toolkit's file dialog for files and folders, a list for applications.
#ifndef QUILLON_DESKTOP_CHOOSERS_H
#define QUILLON_DESKTOP_CHOOSERS_H

#include <QSortFilterProxyModel>
#include <QString>

#include "toolbox/navigation.h"

class QFileDialog;
class QWidget;

namespace quillon::desktop {

// The files of a file dialog that a request's filter shows. Folders are always shown.
class ShownFiles : public QSortFilterProxyModel {
  public:
    // SHOWS is the filter of a NavRequest, and not null.
    ShownFiles(int (*shows)(const FSSpec *spec), QObject *parent);
    // Asks the filter anew for every file.
    void filter_changed() { invalidateFilter(); }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

  private:
    int (*const shows_)(const FSSpec *spec);
};

// True when the request's filter shows the file at the absolute POSIX path, or when it has no filter.
bool request_shows(const NavRequest &request, const QString &path);
// The name filter of the toolkit, "TEXT (*.EXTENSION)", for an entry of the filter pop-up.
QString name_filter(const NavMenuItem &item);
// Runs the chooser for the request, as NavRun does, over the modal window that is open, else over PARENT (may
// be null).
int run_chooser(const NavRequest &request, QWidget *parent, BoundedBuffer &posix_path);
// Runs the list of applications and gives the absolute POSIX path of the choice; empty when it was cancelled.
QString choose_application(const NavRequest &request, QWidget *parent);
// Sets a file dialog up for the request, which must last as long as the dialog.
void prepare_file_dialog(QFileDialog &dialog, const NavRequest &request);

} // namespace quillon::desktop

#endif
