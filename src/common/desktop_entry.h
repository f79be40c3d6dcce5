// Desktop entries: the files in which the desktop keeps its applications. All paths are POSIX paths.
#ifndef QUILLON_COMMON_DESKTOP_ENTRY_H
#define QUILLON_COMMON_DESKTOP_ENTRY_H

#include <string>
#include <string_view>
#include <vector>

namespace common {

struct DesktopEntry {
    std::string path, id; // the id without ".desktop"
    std::string name, icon, exec,
        folder;          // its keys Name, Icon, Exec and Path; the name in the person's language
    std::string comment; // its key Comment, in the person's language
    std::vector<std::string> types, categories; // its lists MimeType and Categories
    bool terminal = false;                      // it runs in a terminal
    bool bus_activatable = false;               // the bus can start it
    bool shown = false; // this desktop offers it: it is not hidden, and what it needs is installed
};

// Fills ENTRY from the file at PATH. False when it is no desktop entry of an application.
bool read_desktop_entry(const std::string &path, DesktopEntry &entry);
// Returns the path of the entry with that id (".desktop" may stand at its end) in the first data folder that
// has it, empty when none has. A "-" in an id may stand for a folder.
std::string find_desktop_entry(const std::string &id);
// Returns the folders that hold desktop entries, the person's own first, then the system's.
std::vector<std::string> entry_folders();
// Returns the parts of LIST between the characters SEPARATOR, without the empty ones.
std::vector<std::string> parts_of(std::string_view list, char separator);
// Returns the words of the entry's Exec line with its field codes filled in. DOCUMENT is an absolute path,
// empty for none; it goes last when no field code takes it. Empty when a quote in the line is left open.
std::vector<std::string> entry_command(const DesktopEntry &entry, const std::string &document);

} // namespace common

#endif
