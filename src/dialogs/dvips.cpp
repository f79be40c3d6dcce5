#include "dialogs/dvips.h"

#include <cstdlib>

#include "dialogs/dialog.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "settings/settings.h"

namespace quillon {

namespace {

enum : std::int16_t { stored_options = 3, run_options = 4, run_input = 5, run_output = 6 };

BoundedString<256> input_file; // of the run dialog that is open

} // namespace

void stored_dvips_options(BoundedBuffer &options) {
    char *const value = myget_string("DVIPS_OPTION_STR");
    options.clear();
    if (value)
        options.copy(value);
    std::free(value);
}

int GetAllDvipsOptions() {
    BoundedString<512> options;
    stored_dvips_options(options);
    const DialogRef window = open_dialog(dialog_dvips);
    SetControlText(window, stored_options, options.c_str());
    SelectControlText(window, stored_options);
    const int confirmed = run_dialog(window);
    if (confirmed && GetControlText(window, stored_options, options))
        set_str_resource("DVIPS_OPTION_STR", options.c_str());
    DisposeWindow(window);
    return confirmed;
}

int accept_dvips_run(DialogRef) {
    return !input_file.empty();
}

void choose_dvi_file(DialogRef window, std::int16_t control) {
    BoundedString<256> chosen;
    chosen.copy(input_file.view());
    if (control != control_choose || !get_input_file(chosen, ".dvi", nullptr, 0, "Select a dvi file"))
        return;
    input_file.copy(chosen.view());
    show_path(window, run_input, input_file.c_str());
}

int GetDvipsOptions(BoundedBuffer &dvi, BoundedBuffer &out, BoundedBuffer &options) {
    out.clear();
    input_file.clear();
    const DialogRef window = open_dialog(dialog_dvips_run);
    if (!dvi.empty() && access(dvi.c_str(), 4) == 0 && input_file.copy(dvi.view()))
        show_path(window, run_input, input_file.c_str());
    SetControlText(window, run_options, options.c_str());
    SelectControlText(window, run_options);
    const int confirmed = run_dialog(window);
    if (confirmed) {
        dvi.copy(input_file.view());
        GetControlText(window, run_options, options);
        GetControlText(window, run_output, out);
    }
    DisposeWindow(window);
    return confirmed;
}

} // namespace quillon
