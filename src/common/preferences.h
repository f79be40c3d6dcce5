// The person's preferences file, as the programs beside the shell read it.
#ifndef QUILLON_COMMON_PREFERENCES_H
#define QUILLON_COMMON_PREFERENCES_H

#include <string>
#include <vector>

namespace common {

// The value of KEY in the preferences; empty when it is not set.
std::string setting(const char *key);
// The same; false when there is no such record, or no file.
bool read_setting(const char *key, std::string *value);
// The byte that stands for a blank.
unsigned char space_byte();

struct SettingChange {
    std::string key, value;
};
// Writes all changes as one transaction. False when nothing was changed: the file is missing or cannot be
// written, or its lock was not had in two seconds.
bool write_preferences(const std::vector<SettingChange> &changes);
// The same for the preferences file at PATH.
bool write_preferences(const std::string &path, const std::vector<SettingChange> &changes);

} // namespace common

#endif
