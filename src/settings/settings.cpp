#include "settings/settings.h"

#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "core/event_loop.h"
#include "core/startup.h"
#include "dialogs/message_windows.h"
#include "files/paths.h"
#include "state/job_state.h"
#include "toolbox/resources.h"

namespace quillon {

FSSpec config_spec;
unsigned char havePrefs = 0;
BoundedString<1024> name;

namespace {

constexpr std::size_t short_value_limit = 256; // including the NUL
constexpr int out_of_memory = -50;

BoundedString<4096> preferences_path; // the POSIX path of config_spec
unsigned char loss_said = 0;          // 1 once the console has said that a setting was not kept
std::int16_t support_volume = 0, preferences_volume = 0;
std::int32_t support_folder = 0, preferences_folder = 0;

// Returns the stored value in new memory, and its size; null when it is not stored or empty.
char *read_record(const char *key, std::size_t *size) {
    if (!havePrefs)
        return nullptr;
    char *const value = RecordRead(preferences_path.c_str(), key, size);
    if (!value && *size > 0)
        DoJump(out_of_memory);
    if (value && value[0] == '\0') {
        std::free(value);
        return nullptr;
    }
    return value;
}

} // namespace

const char *check_config() {
    if (haveosx && FindFolder(four("asup"), 0, &support_volume, &support_folder) != noErr)
        support_volume = 0;
    havePrefs = 0;
    loss_said = 0;
    name.clear();
    preferences_path.clear();
    std::memset(&config_spec, 0, sizeof config_spec);
    if (FindFolder(four("pref"), 0, &preferences_volume, &preferences_folder) != noErr) {
        preferences_volume = 0;
        return name.c_str();
    }
    const OSErr error =
        FSMakeFSSpec(preferences_volume, preferences_folder, "Quillon Preferences", &config_spec);
    if ((error == noErr || error == fnfErr) && FSpToPosix(&config_spec, preferences_path))
        havePrefs = RecordFileOpens(preferences_path.c_str()) != 0;
    FSSpecToMacPath(&config_spec, name);
    return name.c_str();
}

const char *NoPrefFile() {
    if (haveosx) {
        if (!support_volume || !get_unixpath_by_dirid(support_volume, support_folder, supportFolder) ||
            !supportFolder.append("/Quillon"))
            supportFolder.clear();
    }
    if (!preferences_volume || !get_unixpath_by_dirid(preferences_volume, preferences_folder, prefsFolder) ||
        !prefsFolder.append("/QuillonDataBases"))
        prefsFolder.clear();
    if (havePrefs)
        return prefsFolder.c_str();
    wait_for_front();
    DoQuit();
}

const char *get_str_resource(const char *key) {
    static BoundedString<512> value_buffer;
    std::size_t size = 0;
    char *const value = read_record(key, &size);
    const int fits = value && size + 1 < short_value_limit && value_buffer.copy(value);
    std::free(value);
    return fits ? value_buffer.c_str() : nullptr;
}

int setting_is_stored(const char *key) {
    std::size_t size = 0;
    char *const value = havePrefs ? RecordRead(preferences_path.c_str(), key, &size) : nullptr;
    std::free(value);
    return value != nullptr;
}

char *myget_string(const char *key) {
    std::size_t size = 0;
    return read_record(key, &size);
}

int set_str_resource(const char *key, const char *value) {
    const RecordChange change = {key, value};
    return set_str_resources(&change, 1);
}

int set_str_resources(const RecordChange *changes, int count) {
    if (!havePrefs)
        return 0;
    const int kept = RecordWrite(preferences_path.c_str(), changes, count);
    // Nothing is said of a file that cannot be opened for one access; one that opens and keeps nothing is
    // named.
    if (!kept && !loss_said && RecordFileOpens(preferences_path.c_str())) {
        ml_printf("I can't write %s. Settings are not kept.\n", preferences_path.c_str());
        loss_said = 1;
    }
    return kept;
}

char *GetApp(const char *key) {
    const char *const value = get_str_resource(key);
    if (!value) {
        if (doDebug)
            ml_printf("Application %s has not been set.\n", key);
        return nullptr;
    }
    BoundedString<256> path;
    if (value[0] == '~' && home) {
        if (!path.format("%s%s", home, value + 1)) {
            ml_printf("The path of application %s is too long: <%s%s>\n", key, home, value + 1);
            return nullptr;
        }
    } else {
        path.copy(value);
    }
    if (doDebug) {
        ml_printf("\n%s path\n", key);
        ml_printf("<%s>\n", path.c_str());
    }
    char *const copy = static_cast<char *>(std::calloc(1, path.capacity()));
    if (!copy)
        DoJump(out_of_memory);
    std::memcpy(copy, path.c_str(), path.length());
    return copy;
}

void GetTmpSrcFile(BoundedBuffer &buffer) {
    std::int16_t volume;
    std::int32_t dir_id;
    buffer.clear();
    if (FindFolder(four("temp"), 1, &volume, &dir_id) == noErr &&
        !get_macpath_by_dirid(volume, dir_id, buffer))
        buffer.clear();
    if (!buffer.append(":tmpsrclinenumber"))
        buffer.clear();
}

} // namespace quillon
