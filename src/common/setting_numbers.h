// Settings that are numbers. Every program reads them in the same way.
#ifndef QUILLON_COMMON_SETTING_NUMBERS_H
#define QUILLON_COMMON_SETTING_NUMBERS_H

#include <cstdio>

namespace common {

// `SPACECHAR` is the byte that stands for a blank in Unix paths. PRESET_SPACE is its value when it is not
// set, FRESH_SPACE the value in a new preferences file.
inline constexpr const char *preset_space = "202", *fresh_space = "31";
inline constexpr int least_space = 1, greatest_space = 255;

// Returns the decimal number at the head of VALUE. When VALUE is null, is no number or is not from LEAST to
// GREATEST, returns that of PRESET.
inline int setting_number(const char *value, const char *preset, int least, int greatest) {
    int number = 0;
    if (!value || std::sscanf(value, "%d", &number) != 1 || number < least || number > greatest)
        std::sscanf(preset, "%d", &number);
    return number;
}

} // namespace common

#endif
