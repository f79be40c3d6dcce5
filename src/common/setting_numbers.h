// Numbers among the settings, as every program reads them.
#ifndef QUILLON_COMMON_SETTING_NUMBERS_H
#define QUILLON_COMMON_SETTING_NUMBERS_H

#include <cstdio>

namespace common {

// `SPACECHAR`, the byte that stands for a blank: its value when it is not set, and what a fresh preferences
// file holds.
inline constexpr const char *preset_space = "202", *fresh_space = "31";
inline constexpr int least_space = 1, greatest_space = 255;

// The decimal number at the head of VALUE. Where VALUE is null, no number or not from LEAST to GREATEST, that
// of PRESET.
inline int setting_number(const char *value, const char *preset, int least, int greatest) {
    int number = 0;
    if (!value || std::sscanf(value, "%d", &number) != 1 || number < least || number > greatest)
        std::sscanf(preset, "%d", &number);
    return number;
}

} // namespace common

#endif
