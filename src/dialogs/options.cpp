#include "dialogs/options.h"

#include <cstdlib>
#include <cstring>

#include "common/index_settings.h"
#include "console/output.h"
#include "dialogs/dialog.h"
#include "files/choosers.h"
#include "settings/settings.h"
#include "toolbox/windows.h"

namespace quillon {

namespace {

// The controls of the flags follow each other as the settings do.
enum : std::int16_t {
    index_first_flag = 4,
    index_page = 8,
    index_style = 9,
    index_output = 10,
    index_transcript = 11,
    index_files = 12
};
enum : std::int16_t { bibtex_options = 3, bibtex_sort_file = 4 };
enum : std::int16_t { pdftex_mode = 4, pdftex_make_fonts = 5 };

// What the MakeIndex dialog that is open has gathered.
BoundedString<1024> file_list;
BoundedString<256> work_folder;

int is_on(const char *key) {
    const char *const value = get_str_resource(key);
    return value && value[0] == '1';
}

void show_setting(DialogRef window, std::int16_t control, const char *key, const char *fallback) {
    char *const value = myget_string(key);
    SetControlText(window, control, value ? value : fallback);
    std::free(value);
}

void store_text(DialogRef window, std::int16_t control, const char *key) {
    BoundedString<257> text;
    if (GetControlText(window, control, text))
        set_str_resource(key, text.c_str());
}

void append_option(BoundedBuffer &out, const char *option, const char *value) {
    if (value && *value && !out.append_format(" %s %s", option, value))
        ml_printf("The options of MakeIndex are too long.\n");
}

void append_stored(BoundedBuffer &out, const char *option, const char *key) {
    char *const value = myget_string(key);
    append_option(out, option, value);
    std::free(value);
}

} // namespace

void SetMakeIndexOptions(BoundedBuffer &out) {
    out.clear();
    for (const common::IndexSetting &flag : common::index_flags)
        if (is_on(flag.key))
            out.append_format(" %s", flag.option);
    for (const common::IndexSetting &named : common::index_values)
        append_stored(out, named.option, named.key);
}

int accept_makeindex(DialogRef) {
    if (!file_list.empty())
        return 1;
    SysBeep(1);
    return 0;
}

void add_index_file(DialogRef window, std::int16_t control) {
    BoundedString<256> chosen;
    if (control != control_choose || !get_input_file(chosen, ".idx", ".glo", 0, "Select an idx file"))
        return;
    const char *const slash = std::strrchr(chosen.c_str(), '/');
    if (!file_list.append_format(" %s", slash + 1)) {
        ml_printf("The list of files is too long for %s.\n", slash + 1);
        return;
    }
    if (work_folder.empty())
        work_folder.copy({chosen.c_str(), static_cast<std::size_t>(slash - chosen.c_str())});
    show_path(window, index_files, file_list.c_str());
}

int GetMakeIndexOptions(BoundedBuffer &folder, BoundedBuffer &files, BoundedBuffer &output,
                        BoundedBuffer &style, BoundedBuffer &transcript, BoundedBuffer &options) {
    BoundedString<257> page;
    file_list.clear();
    work_folder.clear();
    const DialogRef window = open_dialog(dialog_makeindex);
    std::int16_t control = index_first_flag;
    for (const common::IndexSetting &flag : common::index_flags)
        SetControlValue(window, control++, is_on(flag.key));
    show_setting(window, index_page, "MIPAGESTRING", "");
    show_setting(window, index_style, "MISTYLE", "");
    const int confirmed = run_dialog(window) && !file_list.empty();
    if (confirmed) {
        GetControlText(window, index_page, page);
        GetControlText(window, index_style, style);
        GetControlText(window, index_output, output);
        GetControlText(window, index_transcript, transcript);
        set_str_resource("MISTYLE", style.c_str());
        options.clear();
        control = index_first_flag;
        for (const common::IndexSetting &flag : common::index_flags) {
            const int ticked = GetControlValue(window, control++);
            set_str_resource(flag.key, ticked ? "1" : "0");
            if (ticked)
                options.append_format(" %s", flag.option);
        }
        append_option(options, "-p", page.c_str());
        folder.copy(work_folder.view());
        files.copy(file_list.view());
    }
    DisposeWindow(window);
    return confirmed;
}

int accept_bibtex8(DialogRef window) {
    BoundedString<257> text;
    for (const std::int16_t control : {bibtex_options, bibtex_sort_file}) {
        GetControlText(window, control, text);
        if (!text.empty())
            return 1;
    }
    SysBeep(1);
    return 0;
}

int GetBibtex8OptionString() {
    const DialogRef window = open_dialog(dialog_bibtex8);
    show_setting(window, bibtex_options, "BIBTEXOPTIONS", "");
    show_setting(window, bibtex_sort_file, "CSFFILE", "");
    SelectControlText(window, bibtex_options);
    const int confirmed = run_dialog(window);
    if (confirmed) {
        store_text(window, bibtex_options, "BIBTEXOPTIONS");
        store_text(window, bibtex_sort_file, "CSFFILE");
    }
    DisposeWindow(window);
    return confirmed;
}

int accept_pdftex(DialogRef window) {
    BoundedString<257> mode;
    GetControlText(window, pdftex_mode, mode);
    return mode.empty() ? refuse(window, pdftex_mode) : 1;
}

int pdftex_options() {
    const DialogRef window = open_dialog(dialog_pdftex);
    show_setting(window, pdftex_mode, "PDFTEXMODE", setting_is_stored("PDFTEXMODE") ? "" : "ljfour");
    SetControlValue(window, pdftex_make_fonts, is_on("PDFMAKEFONT"));
    SelectControlText(window, pdftex_mode);
    const int confirmed = run_dialog(window);
    if (confirmed) {
        store_text(window, pdftex_mode, "PDFTEXMODE");
        set_str_resource("PDFMAKEFONT", GetControlValue(window, pdftex_make_fonts) ? "1" : "0");
    }
    DisposeWindow(window);
    return confirmed;
}

} // namespace quillon
