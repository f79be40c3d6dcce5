// The settings for options of MakeIndex. The shell composes its command lines from them, and so does the tool
// host where it runs MakeIndex between two passes of an engine.
#ifndef QUILLON_COMMON_INDEX_SETTINGS_H
#define QUILLON_COMMON_INDEX_SETTINGS_H

namespace common {

struct IndexSetting {
    const char *key;
    const char *option;
};
// Of each of these the option is given when the value begins with "1".
inline constexpr IndexSetting index_flags[] = {
    {"MICOMPRESS", "-c"}, {"MIGERMAN", "-g"}, {"MILETTER", "-l"}, {"MIRANGE", "-r"}};
// Of each of these the value follows the option.
inline constexpr IndexSetting index_values[] = {{"MIPAGESTRING", "-p"}, {"MISTYLE", "-s"}};

} // namespace common

#endif
