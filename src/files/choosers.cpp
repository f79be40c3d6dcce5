#include "files/choosers.h"

#include "console/output.h"
#include "dialogs/choosers.h"
#include "dialogs/message_windows.h"
#include "files/paths.h"

namespace quillon {

namespace {

int get_short_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
                   const char *ext2, int text_flag, const char *prompt) {
    if (!nav_get_file(name, vref, dir_id, ext1, ext2, text_flag, prompt))
        return 0;
    if (!is_long_name(name.c_str()))
        return 1;
    longName();
    return 0;
}

// Makes the Unix path of the file NAME in a folder. Returns 0, with an empty PATH, when it cannot be made.
int build_path(BoundedBuffer &path, std::int16_t vref, std::int32_t dir_id, const BoundedBuffer &name) {
    BoundedString<1024> whole;
    if (get_unixpath_by_dirid(vref, dir_id, whole) && whole.append("/") && whole.append(name.view()) &&
        path.copy(whole.view()))
        return 1;
    path.clear();
    return 0;
}

} // namespace

int get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
             const char *ext2, int text_flag, const char *prompt) {
    return get_short_file(name, vref, dir_id, ext1, ext2, text_flag, prompt);
}

int put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt) {
    return nav_put_file(name, vref, dir_id, prompt);
}

int get_working_folder(BoundedBuffer &unix_path, const char *prompt) {
    return nav_get_working_folder(unix_path, prompt);
}

int get_input_file(BoundedBuffer &path, const char *ext1, const char *ext2, int text_flag,
                   const char *prompt) {
    BoundedString<1024> name;
    std::int16_t vref;
    std::int32_t dir_id;
    name.copy(path.view());
    if (!get_short_file(name, &vref, &dir_id, ext1, ext2, text_flag, prompt)) {
        path.clear();
        return 0;
    }
    if (build_path(path, vref, dir_id, name))
        return 1;
    ml_printf("IO Error on file %s\n", name.c_str());
    return 0;
}

int put_output_file(BoundedBuffer &path, const char *prompt) {
    BoundedString<1024> name;
    std::int16_t vref;
    std::int32_t dir_id;
    name.copy(path.view());
    path.clear();
    return nav_put_file(name, &vref, &dir_id, prompt) && build_path(path, vref, dir_id, name);
}

const char *GetAppByDialog(const char *prompt, OSType sig, OSType sig1) {
    static BoundedString<256> path;
    BoundedString<256> name;
    std::int16_t vref;
    std::int32_t dir_id;
    if (!nav_get_app(prompt, name, &vref, &dir_id, sig, sig1) || !build_path(path, vref, dir_id, name))
        return nullptr;
    if (path.view().ends_with('/'))
        path.cut(path.length() - 1);
    return path.c_str();
}

} // namespace quillon
