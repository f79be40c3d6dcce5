// The person's preferences file, for the programs beside the shell.
#ifndef QUILLON_COMMON_PREFERENCES_H
#define QUILLON_COMMON_PREFERENCES_H

#include <string>
#include <vector>

namespace common {

// Returns the value of KEY in the preferences, empty when it is not set. The file is read at each call.
std::string setting(const char *key);
// Copies the value of KEY to VALUE. False, with VALUE untouched, when there is no such record or no file.
bool read_setting(const char *key, std::string *value);
// Returns the byte that stands for a blank in the Unix paths of the settings (`SPACECHAR`).
unsigned char space_byte();

struct SettingChange {
    std::string key, value;
};
// Writes all the changes as one transaction. False, with nothing changed, when the file is missing or cannot
// be written, or when another program held its lock for two seconds.
bool write_preferences(const std::vector<SettingChange> &changes);
// Does the same for the preferences file at the POSIX path PATH.
bool write_preferences(const std::string &path, const std::vector<SettingChange> &changes);

} // namespace common

#endif
