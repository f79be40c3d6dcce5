// The choosers on screen: files and folders by the toolkit's file dialog, applications by a list.
#ifndef QUILLON_DESKTOP_CHOOSERS_H
#define QUILLON_DESKTOP_CHOOSERS_H

#include <QSortFilterProxyModel>
#include <QString>

#include "toolbox/navigation.h"

class QFileDialog;
class QWidget;

namespace quillon::desktop {

// Shows what the request's own filter shows.
class ShownFiles : public QSortFilterProxyModel {
  public:
    ShownFiles(int (*shows)(const FSSpec *spec), QObject *parent);
    void filter_changed() { invalidateFilter(); }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

  private:
    int (*const shows_)(const FSSpec *spec);
};

// 1 when the request's filter shows the file at PATH, or has no filter.
bool request_shows(const NavRequest &request, const QString &path);
// The name filter that stands for a record of the filter pop-up.
QString name_filter(const NavMenuItem &item);
// 1 and the chosen POSIX path, or 0.
int run_chooser(const NavRequest &request, QWidget *parent, BoundedBuffer &posix_path);
// The path chosen from the list of applications; empty when cancelled.
QString choose_application(const NavRequest &request, QWidget *parent);
// Sets the dialog up for the request.
void prepare_file_dialog(QFileDialog &dialog, const NavRequest &request);

} // namespace quillon::desktop

#endif
