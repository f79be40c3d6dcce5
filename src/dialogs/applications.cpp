#include "dialogs/applications.h"

#include <cstdlib>

#include "dialogs/dialog.h"
#include "files/choosers.h"
#include "files/signatures.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "viewers/viewers.h"

namespace quillon {

BoundedString<501> command_key_str;

namespace {

enum : std::int16_t { first_button = 3, first_display = 7, key_field = 3 };

// One row an application: what its button asks, where the choice is stored, and the application in use. The
// DVI previewer in use is a path of the shell's own; the others come from the settings.
struct Tool {
    const char *prompt, *key;
    const char **located;
};
const Tool tools[] = {
    {"Find a text editor", "Editor", &editor},
    {"Find DviView", "DVIPREVIEW", nullptr},
    {"Find PsGlance", "VIEWPS", &viewpsexe},
    {"Find a PDF viewer", "PDFVIEW", &pdfview},
};
constexpr int tool_count = sizeof tools / sizeof tools[0];

BoundedString<256> slots[tool_count]; // what was chosen in the dialog that is open

void use(const Tool &tool, const char *path) {
    set_str_resource(tool.key, path);
    if (!tool.located) {
        char *const located = GetApp(tool.key);
        if (located)
            dvipreview.copy(located);
        std::free(located);
        return;
    }
    take_application(tool.located, tool.key);
    if (tool.located == &editor)
        ed_creator = get_editor_info(editor ? editor : "");
}

} // namespace

void choose_tool(DialogRef window, std::int16_t control) {
    const int index = control - first_button;
    const char *const chosen = GetAppByDialog(tools[index].prompt, typeWildCard, 0);
    if (!chosen)
        return;
    slots[index].copy(chosen);
    show_path(window, static_cast<std::int16_t>(first_display + index), chosen);
}

void SetTools() {
    const DialogRef window = open_dialog(dialog_applications);
    for (int i = 0; i < tool_count; i++) {
        slots[i].clear();
        const char *const located = tools[i].located ? *tools[i].located : dvipreview.c_str();
        show_path(window, static_cast<std::int16_t>(first_display + i), located ? located : "");
    }
    const int confirmed = run_dialog(window);
    DisposeWindow(window);
    for (int i = 0; confirmed && i < tool_count; i++)
        if (!slots[i].empty())
            use(tools[i], slots[i].c_str());
}

void GetCmdKey() {
    const DialogRef window = open_dialog(dialog_command_key);
    SetControlText(window, key_field, command_key_str.c_str());
    SelectControlText(window, key_field);
    run_dialog(window);
    GetControlText(window, key_field, command_key_str);
    DisposeWindow(window);
}

} // namespace quillon
