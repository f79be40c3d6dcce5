// The applications that the desktop offers: installed desktop entries.
#ifndef QUILLON_WIDGETS_DESKTOP_ENTRIES_H
#define QUILLON_WIDGETS_DESKTOP_ENTRIES_H

#include <QList>
#include <QString>

namespace widgets {

struct DesktopEntry {
    QString name, comment, icon;
    QString path; // of the desktop file
};

// The entry in the file at PATH; its path is empty when it is no application to show.
DesktopEntry read_desktop_entry(const QString &path);
// By name. An entry of the user's own folder hides one of the same id further along.
QList<DesktopEntry> installed_applications();

} // namespace widgets

#endif
