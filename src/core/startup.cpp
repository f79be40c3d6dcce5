#include "core/startup.h"

#include <cstdlib>

#include "console/output.h"
#include "console/window.h"
#include "core/event_loop.h"
#include "dialogs/choosers.h"
#include "events/handlers.h"
#include "files/paths.h"
#include "files/search.h"
#include "files/signatures.h"
#include "kpath/search_paths.h"
#include "menus/current_files.h"
#include "menus/formats.h"
#include "menus/menus.h"
#include "settings/setting_table.h"
#include "settings/settings.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/events.h"
#include "toolbox/files.h"
#include "tools/processes.h"
#include "tools/shell_commands.h"
#include "viewers/viewers.h"

namespace quillon {

// The shell frees a block of this size when memory runs out, so that the alert can still be shown.
static constexpr std::size_t reserve_size = 32000;

std::jmp_buf state;

static void probe_system() {
    std::int32_t answer = 0;
    hasAqua = Gestalt(gestaltMenuMgrAttr, &answer) == noErr && answer & 2 ? 1 : 0;
    if (Gestalt(gestaltSystemVersion, &answer) == noErr) {
        haveosx = answer > 0x0FFF;
        hasSys9 = answer > 0x08FF;
        if (answer > 0x07FF)
            RegisterAppearanceClient();
    }
}

static void name_tools() {
    const struct {
        BoundedBuffer &path;
        const char *format;
    } tools[] = {
        {texexe, "%s/tex.app"},         {etexexe, "%s/etex.app"},         {pdfexe, "%s/pdftex.app"},
        {pdfeexe, "%s/pdfetex.app"},    {dvipreview, "%s/dviview.app"},   {dvipsexe, "%s/dvips.app"},
        {bibexe, "%s/bibtex.app"},      {mkexe, "%s/makeindex.app"},      {mpostexe, "%s/mpost.app"},
        {dvipdfmexe, "%s/dvipdfm.app"}, {lualatexexe, "%s/lualatex.app"}, {xelatexexe, "%s/xelatex.app"},
        {biberexe, "%s/biber.app"},
    };
    for (const auto &tool : tools)
        tool.path.format(tool.format, home ? home : "");
}

static void find_applications() {
    viewpsexe = GetApp("VIEWPS");
    ps2pdfexe = GetApp("PS2PDFEXE");
    if (!get_sig(dvipreview.c_str(), &preview_creator))
        preview_creator = four("QVW8");
    editor = GetApp("Editor");
    ed_creator = get_editor_info(editor ? editor : "");
    setup.format("%s/setpaths.app", home ? home : "");
    pdfview = GetApp("PDFVIEW");
}

static void restore_last(const char *key, BoundedBuffer &target) {
    char *const value = myget_string(key);
    if (!value || !target.copy(value))
        target.clear();
    std::free(value);
}

static constexpr std::uint32_t slot_bit(int slot) {
    return 1u << slot;
}

static void set_first_paths() {
    setpaths(slot_bit(slot_texformats) | slot_bit(slot_texinputs) | slot_bit(slot_texconfig) |
             slot_bit(slot_dvipsheaders) | slot_bit(slot_encfolder));
}

void reread_settings() {
    if (!havePrefs)
        return;
    read_settings(stage_before_preferences_check);
    read_settings(stage_after_folders);
    take_application(&viewpsexe, "VIEWPS");
    take_application(&ps2pdfexe, "PS2PDFEXE");
    take_application(&editor, "Editor");
    take_application(&pdfview, "PDFVIEW");
    ed_creator = get_editor_info(editor ? editor : "");
    forget_paths();
    set_first_paths();
    SetFormatMenu();
    SetDefaultFormat();
    ForgetTables();
    ReadTables();
    ChangeMenus();
}

int initial() {
    probe_system();
    reserveMemory = std::malloc(reserve_size);
    DoAEInstallation();
    CreateNavUPP();
    SetUpCursors();
    check_config();
    inBackground = !GetApplName(progname, &appvol, &appdir);
    theConsole = SetUpTextWindow(progname.c_str(), 1);
    doDebug = 1;
    useETeX = 0;
    read_settings(stage_before_preferences_check);
    NoPrefFile();
    home = SetTilde();
    curr_dir.copy(home ? home : "");
    doAlias = 0;
    read_settings(stage_after_folders);
    parseFirstLine = 0;
    SetUpMenus();
    name_tools();
    find_applications();
    set_first_paths();
    fname.clear();
    format_name.clear();
    SetFormatMenu();
    SetDefaultFormat();
    OldTeXFile();
    restore_last("LASTCOMMAND", lastcommand);
    restore_last("LASTDIR", lastdir);
    restore();
    ReadTables();
    RemoveStaleTranscripts();
    if (haveosx)
        getMachOCalls();
    return 1;
}

void shell_main() {
    myMask = mask_waiting;
    if (!initial())
        at_exit = 1;
    myMask = everyEvent;
    doQuit = 0;
    notifying = 0;
    restore();
    for (;;)
        main_event(mask_every_event);
}

void DoJump(int code) {
    restore();
    exit_status = code;
    if (code == -50) {
        std::free(reserveMemory);
        if (!inBackground)
            StopAlert(900);
        std::exit(0);
    }
    if (in_dvii == 1)
        std::longjmp(state, 1);
    // The failed job will never close its scopes itself.
    while (job_running())
        end_job();
    forceQuit = 1;
    ml_printf("\nA serious error has occurred.\n");
    for (;;)
        main_event(mask_every_event);
}

} // namespace quillon
