#include "headless/script_print.h"

#include <cstdio>
#include <cstdlib>

#include "console/output.h"
#include "console/window.h"
#include "core/event_loop.h"
#include "events/handlers.h"
#include "headless/script_words.h"
#include "jobs/after_run.h"
#include "menus/current_files.h"
#include "menus/menus.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/codes.h"
#include "toolbox/menus.h"
#include "tools/problems.h"
#include "tools/processes.h"
#include "tools/tool_call.h"

namespace quillon {

static void print_menu(std::int16_t id) {
    const MenuHandle menu = GetMenuHandle(id);
    if (!menu) {
        std::fprintf(stderr, "quillon: script: there is no menu %d\n", id);
        return;
    }
    FillMenu(menu);
    ChangeMenus();
    for (std::int16_t item = 1; item <= CountMenuItems(menu); item++) {
        BoundedString<2048> text;
        GetMenuItemText(menu, item, text);
        const char key = GetItemCmd(menu, item);
        std::printf("%d %c %c %c %s\n", item, IsMenuItemEnabled(menu, item) ? '+' : '-',
                    IsItemChecked(menu, item) ? '*' : '-', key ? key : '-', text.c_str());
    }
}

struct TextState {
    const char *name;
    const BoundedBuffer &value;
};

static const TextState text_states[] = {
    {"progname", progname},
    {"contentsFolder", contentsFolder},
    {"shortroot", shortroot},
    {"prefsFolder", prefsFolder},
    {"supportFolder", supportFolder},
    {"curr_dir", curr_dir},
    {"SYSTEMFONTPATH", SYSTEMFONTPATH},
    {"texexe", texexe},
    {"etexexe", etexexe},
    {"pdfexe", pdfexe},
    {"pdfeexe", pdfeexe},
    {"lualatexexe", lualatexexe},
    {"xelatexexe", xelatexexe},
    {"biberexe", biberexe},
    {"dvipreview", dvipreview},
    {"dvipsexe", dvipsexe},
    {"bibexe", bibexe},
    {"mkexe", mkexe},
    {"mpostexe", mpostexe},
    {"dvipdfmexe", dvipdfmexe},
    {"setup", setup},
    {"fname", fname},
    {"format_name", format_name},
    {"format_folder", format_folder},
    {"dotexfile", dotexfile},
    {"mydvifile", mydvifile},
    {"mypdffile", mypdffile},
    {"mypsfile", mypsfile},
    {"mybibfile", mybibfile},
    {"current_dvifile", current_dvifile},
    {"current_outputfile", current_outputfile},
    {"lastcommand", lastcommand},
    {"lastdir", lastdir},
    {"mycommand", mycommand},
    {"editfile", editfile},
    {"findString", findString},
    {"odocfile", odocfile},
    {"mylabel", mylabel},
    {"savelogname", savelogname},
    {"name", name},
};

struct PointerState {
    const char *name;
    const char *const &value;
};

static const PointerState pointer_states[] = {
    {"home", home},     {"viewpsexe", viewpsexe}, {"ps2pdfexe", ps2pdfexe},
    {"editor", editor}, {"pdfview", pdfview},
};

struct FlagState {
    const char *name;
    const std::uint8_t &value;
};

static const FlagState flag_states[] = {
    {"usePdfTeX", usePdfTeX},
    {"useETeX", useETeX},
    {"doDebug", doDebug},
    {"use8bit", use8bit},
    {"useFullPaths", useFullPaths},
    {"doView", doView},
    {"addSpecials", addSpecials},
    {"doRecord", doRecord},
    {"runUntilStable", runUntilStable},
    {"fastPreamble", fastPreamble},
    {"typesetOnSave", typesetOnSave},
    {"magicComments", magicComments},
    {"parseFirstLine", parseFirstLine},
    {"doAlias", doAlias},
    {"tex_error", tex_error},
    {"calleditor", calleditor},
    {"haveosx", haveosx},
    {"hasSys9", hasSys9},
    {"hasAqua", hasAqua},
    {"inBackground", inBackground},
    {"notifying", notifying},
    {"doQuit", doQuit},
    {"aeQuit", aeQuit},
    {"at_exit", at_exit},
    {"forceQuit", forceQuit},
    {"in_dvii", in_dvii},
    {"doAppleTeX", doAppleTeX},
    {"doFind", doFind},
    {"havePrefs", havePrefs},
    {"AppDone", AppDone},
};

struct NumberState {
    const char *name;
    const std::int32_t &value;
};

static const NumberState number_states[] = {
    {"editlinenumber", editlinenumber},
    {"exit_status", exit_status},
    {"dataBaseSearch", dataBaseSearch},
    {"mp_format_type", mp_format_type},
    {"space_char", space_char},
    {"shift_key_down", shift_key_down},
    {"option_key_down", option_key_down},
    {"output_is_pdf", output_is_pdf},
    {"appdir", appdir},
    {"oldItem", oldItem},
    {"get_text", get_text},
};

struct SignatureState {
    const char *name;
    const OSType &value;
};

static const SignatureState signature_states[] = {
    {"preview_creator", preview_creator},
    {"ed_creator", ed_creator},
    {"default_creator", default_creator},
    {"toolSig", toolSig},
    {"theOSType", theOSType},
};

// Prints the variables whose types no other has: 1, or 0 when NAME is none of them.
static int print_odd_state(const std::string &name) {
    if (name == "appvol")
        std::printf("appvol=%d\n", appvol);
    else if (name == "myMask")
        std::printf("myMask=0x%04X\n", myMask);
    else if (name == "sleepTime")
        std::printf("sleepTime=%u\n", sleepTime);
    else
        return 0;
    return 1;
}

static void print_state(const std::string &name) {
    for (const TextState &row : text_states)
        if (name == row.name) {
            std::printf("%s=%s\n", row.name, row.value.c_str());
            return;
        }
    for (const PointerState &row : pointer_states)
        if (name == row.name) {
            std::printf("%s=%s\n", row.name, row.value ? row.value : "");
            return;
        }
    for (const FlagState &row : flag_states)
        if (name == row.name) {
            std::printf("%s=%d\n", row.name, row.value);
            return;
        }
    for (const NumberState &row : number_states)
        if (name == row.name) {
            std::printf("%s=%d\n", row.name, row.value);
            return;
        }
    for (const SignatureState &row : signature_states)
        if (name == row.name) {
            // All four characters are printed, NUL bytes too.
            std::printf("%s=", row.name);
            std::fwrite(code_text(row.value).data(), 1, 4, stdout);
            std::putchar('\n');
            return;
        }
    if (!print_odd_state(name))
        std::fprintf(stderr, "quillon: script: there is no state %s\n", name.c_str());
}

static void print_setting(const std::string &key) {
    char *const value = myget_string(key.c_str());
    if (value)
        std::printf("%s=%s\n", key.c_str(), value);
    else
        std::printf("%s\n", key.c_str());
    std::free(value);
}

static void print_problems() {
    for (int i = 0; i < problem_count(); i++) {
        const ProblemRecord &problem = problem_at(i);
        std::printf("%s:%d: %s: %s\n", problem.file.data(), problem.line, problem_kind_word(problem.kind),
                    problem.text.data());
    }
}

void PrintForScript(const std::string &line) {
    std::string rest = line;
    const std::string what = TakeWord(&rest);
    if (what == "menu")
        print_menu(static_cast<std::int16_t>(std::atoi(rest.c_str())));
    else if (what == "state")
        print_state(rest);
    else if (what == "setting")
        print_setting(rest);
    else if (what == "problems")
        print_problems();
    else
        std::fprintf(stderr, "quillon: script: print takes menu, state, setting or problems\n");
    std::fflush(stdout);
}

} // namespace quillon
