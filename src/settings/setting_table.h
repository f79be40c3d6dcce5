// The setting rows: the one place where keys, kinds, defaults and help stand.
#ifndef QUILLON_SETTINGS_SETTING_TABLE_H
#define QUILLON_SETTINGS_SETTING_TABLE_H

#include <cstdint>

namespace quillon {

enum SettingKind {
    setting_text,
    setting_path,
    setting_flag,
    setting_number,
    setting_choice,
    setting_numbered
};

struct Setting {
    const char *key; // for setting_numbered the prefix, followed by 1 to COUNT
    SettingKind kind;
    const char *preset; // the value when not set, null for none
    std::uint8_t *flag; // the byte-wide global that start-up fills, or null
    int count;
    const char *help; // one sentence
};

extern const Setting setting_table[];
extern const int setting_count;

// The row of that key; null when there is none.
const Setting *find_setting(const char *key);

// The value that start-up gives the flag KEY: its preset decides which first character counts.
std::uint8_t read_flag(const char *key);

} // namespace quillon

#endif
