// The setting table has one row for each setting, with its key, kind, default and help text. Start-up and the
// menu items that switch a setting work from these rows, and the build makes the manual page from them.
#ifndef QUILLON_SETTINGS_SETTING_TABLE_H
#define QUILLON_SETTINGS_SETTING_TABLE_H

#include <cstdint>

namespace quillon {

enum SettingKind {
    setting_text,
    setting_path,
    setting_flag,    // the stored text's first character is 1 or 0; the rest is ignored
    setting_number,  // a decimal number
    setting_choice,  // the stored text's first character is a digit; the rest is ignored
    setting_numbered // several settings whose keys are one prefix and a number
};

// The moment of start-up at which a setting is read into its global: never, before the shell checks that
// there is a preferences file, or once the folders are known.
enum SettingStage { stage_none, stage_before_preferences_check, stage_after_folders };

struct Setting {
    const char *key; // of a setting_numbered row the prefix; a number from 1 to `most` follows it
    SettingKind kind;
    const char *preset; // the value of a setting that is not stored; null for none
    const char *help;   // one sentence that says what the setting does
    SettingStage stage = stage_none;
    std::uint8_t *flag = nullptr;   // the global that the setting fills, when it is a byte
    std::int32_t *number = nullptr; // the global that the setting fills, when it is a number
    int least = 0, most = 0;        // the range of a number or a choice
};

// The rows, and how many there are.
extern const Setting *const setting_table;
extern const int setting_count;

// Returns the row of the setting KEY (for a numbered setting, KEY ends in the number); null when no row has
// it.
const Setting *find_setting(const char *key);

// Returns the value of a flag, number or choice: from the stored text, or from the row's preset when nothing
// is stored or the text is no such value.
int read_setting(const Setting &row);
// Reads the settings of STAGE into their globals, in the order of the rows.
void read_settings(SettingStage stage);
// Returns the value that the row's global has now; 0 for a row without a global.
int setting_value(const Setting &row);
// Gives the row's global VALUE and stores VALUE as decimal text. Returns 1 when it was stored, else 0.
int change_setting(const Setting &row, int value);

} // namespace quillon

#endif
