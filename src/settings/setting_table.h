// The setting rows: the one place where keys, kinds, defaults and help stand. What start-up reads, what a
// menu item switches and what the manual says follow from them.
#ifndef QUILLON_SETTINGS_SETTING_TABLE_H
#define QUILLON_SETTINGS_SETTING_TABLE_H

#include <cstdint>

namespace quillon {

enum SettingKind {
    setting_text,
    setting_path,
    setting_flag,    // of the value the first character counts, 1 or 0
    setting_number,  // a decimal number
    setting_choice,  // of the value the first character counts, a digit
    setting_numbered // several settings under one prefix
};

// When start-up reads a setting into its global.
enum SettingStage { stage_none, stage_before_preferences_check, stage_after_folders };

struct Setting {
    const char *key; // for setting_numbered the prefix, followed by 1 to MOST
    SettingKind kind;
    const char *preset; // the value when not set, null for none
    const char *help;   // one sentence
    SettingStage stage = stage_none;
    std::uint8_t *flag = nullptr;   // the global that the setting fills: this one,
    std::int32_t *number = nullptr; // or this one, or none
    int least = 0, most = 0;        // the range of a number or a choice
};

extern const Setting *const setting_table;
extern const int setting_count;

// The row of that key, a numbered setting's own number included; null when there is none.
const Setting *find_setting(const char *key);

// The value that the stored text stands for; the preset's where it is not set or stands for none. For rows
// that are flags, numbers or choices.
int read_setting(const Setting &row);
// Fills the globals of the rows of STAGE, in the order of the rows.
void read_settings(SettingStage stage);
// The value that the row's global has now.
int setting_value(const Setting &row);
// Gives the row's global that value and stores it under the row's key: 1 stored, 0 not.
int change_setting(const Setting &row, int value);

} // namespace quillon

#endif
