#include "common/preferences.h"

#include <cstdlib>

#include "common/places.h"
#include "common/setting_numbers.h"
#include "toolbox/resources.h"

namespace common {

bool read_setting(const char *key, std::string *value) {
    static const std::string path = preferences_path();
    std::size_t size = 0;
    char *const found = quillon::RecordRead(path.c_str(), key, &size);
    if (!found)
        return false;
    value->assign(found, size);
    std::free(found);
    return true;
}

std::string setting(const char *key) {
    std::string value;
    read_setting(key, &value);
    return value;
}

unsigned char space_byte() {
    const std::string value = setting("SPACECHAR");
    return static_cast<unsigned char>(
        setting_number(value.c_str(), preset_space, least_space, greatest_space));
}

bool write_preferences(const std::vector<SettingChange> &changes) {
    return write_preferences(preferences_path(), changes);
}

bool write_preferences(const std::string &path, const std::vector<SettingChange> &changes) {
    std::vector<quillon::RecordChange> records;
    records.reserve(changes.size());
    for (const SettingChange &change : changes)
        records.push_back({change.key.c_str(), change.value.c_str()});
    return quillon::RecordWrite(path.c_str(), records.data(), static_cast<int>(records.size())) == 1;
}

} // namespace common
