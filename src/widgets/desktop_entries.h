// The applications that the desktop offers, read from its desktop entries.
#ifndef QUILLON_WIDGETS_DESKTOP_ENTRIES_H
#define QUILLON_WIDGETS_DESKTOP_ENTRIES_H

#include <QList>
#include <QString>

namespace widgets {

struct DesktopEntry {
    QString name, comment, icon;
    QString path; // absolute POSIX path of the desktop file
};

// Reads the desktop file at the POSIX path, in the person's language. The entry's path is empty when the file
// cannot be read or is no application that this desktop shows.
DesktopEntry read_desktop_entry(const QString &path);
// The installed applications, ordered by name. An entry in the user's own folder hides those of the same id
// in the system's folders.
QList<DesktopEntry> installed_applications();

} // namespace widgets

#endif
