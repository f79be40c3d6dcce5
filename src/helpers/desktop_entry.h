// Desktop entries: finding one by its id, and the command that it stands for.
#ifndef QUILLON_HELPERS_DESKTOP_ENTRY_H
#define QUILLON_HELPERS_DESKTOP_ENTRY_H

#include <string>
#include <vector>

namespace helpers {

struct DesktopEntry {
    std::string path, id; // the id without ".desktop"
    std::string name, icon, exec, folder;
    bool terminal = false;
    bool bus_activatable = false;
};

// False when PATH is no desktop entry of an application.
bool read_desktop_entry(const std::string &path, DesktopEntry &entry);
// The path of the entry with that id (".desktop" may stand at its end) in the data folders; empty when there
// is none.
std::string find_desktop_entry(const std::string &id);
// The words of the entry's Exec line for DOCUMENT (empty: none), its field codes filled in. Empty when the
// line is malformed.
std::vector<std::string> entry_command(const DesktopEntry &entry, const std::string &document);

} // namespace helpers

#endif
