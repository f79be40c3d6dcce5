// The windows of the interface file without a display: a script fills them and presses their buttons.
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "front/dialogs.h"
#include "headless/headless.h"

namespace quillon {

namespace {

struct HeadlessDialog : Dialog {
    std::map<std::int16_t, std::string> texts;
    std::map<std::int16_t, int> values;
    bool open = false;
};

HeadlessDialog *own(Dialog *dialog) {
    return static_cast<HeadlessDialog *>(dialog);
}

Dialog *make(const char *) {
    return new HeadlessDialog;
}

void dispose(Dialog *dialog) {
    delete own(dialog);
}

void error(const Dialog *dialog, const DialogStep &step) {
    std::fprintf(stderr, "quillon: script: window \"%s\" has no such control: %d\n", dialog->name,
                 step.control);
}

// Carries one step out, when the window has the control that it names.
void take(HeadlessDialog *dialog, const DialogStep &step) {
    const ControlKind kind = kind_in(dialog, step.control);
    if (step.kind == DialogStep::set && kind == text_control)
        dialog->texts[step.control] = step.text;
    else if (step.kind == DialogStep::check && kind == check_control)
        dialog->values[step.control] = step.value != 0;
    else if (step.kind == DialogStep::press && kind == button_control)
        hit_control(dialog, step.control);
    else
        error(dialog, step);
}

// Steps that press nothing are confirmed. A window that is still open after all steps is cancelled, since
// nobody else can close it.
void run(Dialog *dialog) {
    HeadlessDialog *const window = own(dialog);
    std::vector<DialogStep> steps;
    std::fflush(stdout);
    if (std::strcmp(dialog->name, "Quit") == 0)
        std::fputs("There is no preferences file \"Quillon Preferences\". Run setpaths first.\n", stderr);
    const int answered = NextDialogAnswer(dialog->name, &steps);
    bool pressed = false;
    window->open = true;
    for (const DialogStep &step : steps) {
        if (window->open)
            take(window, step);
        pressed = pressed || step.kind == DialogStep::press;
    }
    if (answered && !pressed && window->open)
        hit_control(window, 1);
    if (!window->open)
        return;
    std::fprintf(stderr, "quillon: window \"%s\": %s, cancelled\n", dialog->name,
                 answered ? "its answers left it open" : "no answer was queued");
    hit_control(window, 2);
}

void end(Dialog *dialog) {
    own(dialog)->open = false;
}

void show_sheet(Dialog *, int) {}

void set_text(Dialog *dialog, std::int16_t control, const char *text, int) {
    own(dialog)->texts[control] = text;
}

int get_text(Dialog *dialog, std::int16_t control, BoundedBuffer &text) {
    return text.copy(own(dialog)->texts[control]);
}

void set_value(Dialog *dialog, std::int16_t control, int value) {
    own(dialog)->values[control] = value;
}

int get_value(Dialog *dialog, std::int16_t control) {
    return own(dialog)->values[control];
}

void select(Dialog *, std::int16_t) {}

void add_row(Dialog *, std::int16_t, const char *, const char *) {}

int no_bounds(Dialog *, std::int16_t, Rect *) {
    return 0;
}

} // namespace

void set_dialog_procedures(Front &front) {
    front.new_dialog = make;
    front.dispose_dialog = dispose;
    front.run_dialog = run;
    front.end_dialog = end;
    front.show_sheet = show_sheet;
    front.set_control_text = set_text;
    front.control_text = get_text;
    front.set_control_value = set_value;
    front.control_value = get_value;
    front.select_control = select;
    front.add_list_row = add_row;
    front.control_bounds = no_bounds;
}

} // namespace quillon
