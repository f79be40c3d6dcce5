#include "viewers/editor.h"

#include <cstring>

#include "console/output.h"
#include "console/window.h"
#include "files/paths.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "tools/processes.h"
#include "tools/scripts.h"
#include "tools/shell_commands.h"
#include "viewers/quoting.h"

namespace quillon {

static int path_says(const char *name) {
    return editor && std::strstr(editor, name) != nullptr;
}

// Sends the editor Alpha a Tcl command that selects a whole line. Returns 0 when the event cannot be made.
static int select_in_alpha(OSType address_type, const void *address, std::size_t size, const char *tcl) {
    AEDesc target;
    AppleEvent event, reply;
    if (AECreateDesc(address_type, address, size, &target) != noErr)
        return 0;
    const OSErr error = AECreateAppleEvent(four("misc"), four("dosc"), &target, kAutoGenerateReturnID,
                                           kAnyTransactionID, &event);
    AEDisposeDesc(&target);
    if (error != noErr)
        return 0;
    AEPutParamPtr(&event, keyDirectObject, typeChar, tcl, std::strlen(tcl));
    AESend(&event, &reply, kAENoReply, kAEHighPriority, kAEDefaultTimeout, nullptr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
    return 1;
}

static void run_line_command(const char *file, int line) {
    BoundedString<1024> whole, posix_path;
    BoundedString<2048> quoted;
    BoundedString<2200> command;
    add_current_dir(whole, file);
    UnixFileToPosixFile(whole.c_str(), posix_path);
    if (!quote_path(posix_path.c_str(), quoted))
        return;
    command.format(ed_creator == four("R*ch") ? "bbedit +%d \"%s\" 2>&1" : "edit +%d \"%s\" 2>&1", line,
                   quoted.c_str());
    ml_printf("Executing <%s>.\n", command.c_str());
    InvokeTool(command.c_str(), nullptr);
}

static int is_of_bbedit_family() {
    return ed_creator == four("R*ch") || ed_creator == four("!Rch") || path_says("BBEdit");
}

int LineCommandFollows() {
    return is_of_bbedit_family() && !path_says("Lite");
}

int SetLineInEditorOSX(const char *file, int line) {
    if (!is_of_bbedit_family()) {
        if (ed_creator != four("ALFA") && !path_says("Alpha"))
            return 1;
        BoundedString<128> tcl;
        tcl.format("select [pos::fromRowCol %d 0] [pos::fromRowCol %ld 0]", line, line + 1L);
        return select_in_alpha(typeApplSignature, &ed_creator, sizeof ed_creator, tcl.c_str());
    }
    if (LineCommandFollows() && file)
        run_line_command(file, line);
    ForceTextUpdate();
    return 1;
}

// Finds the file location of editfile. Returns 0 when there is no such file or its path does not fit.
static int find_editfile(FSSpec *spec) {
    BoundedString<1024> path, hfs_path;
    add_current_dir(path, editfile.c_str());
    convert_to_space(path.data());
    return !path.empty() && convert_path(path.c_str(), hfs_path) &&
           FSMakeFSSpec(0, 0, hfs_path.c_str(), spec) == noErr;
}

// Makes the open-document event for SPEC, addressed to PSN. Returns 0, with no event, when a part of it
// cannot be made.
static int make_open_event(const ProcessSerialNumber *psn, const FSSpec *spec, AppleEvent *event) {
    AEDesc address, item;
    AEDescList list;
    const int made =
        AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &address) == noErr &&
        AECreateAppleEvent(four("aevt"), four("odoc"), &address, kAutoGenerateReturnID, kAnyTransactionID,
                           event) == noErr &&
        AECreateList(&list) == noErr && AECreateDesc(typeFSS, spec, sizeof *spec, &item) == noErr &&
        AEPutDesc(&list, 0, &item) == noErr && AEPutParamDesc(event, keyDirectObject, &list) == noErr;
    AEDisposeDesc(&address);
    AEDisposeDesc(&item);
    AEDisposeDesc(&list);
    if (!made)
        AEDisposeDesc(event);
    return made;
}

// Launches the editor and sends it editfile. Returns 1, and the editor's serial number, when it was sent.
static int open_editfile(ProcessSerialNumber *psn) {
    FSSpec spec = {};
    AppleEvent event, reply;
    if (!find_editfile(&spec))
        return 0;
    const int launched = DoMyLaunch(editor, psn, 1);
    EventRecord seen;
    for (int i = 0; launched == 2 && haveosx && i < 3; i++)
        EventAvail(everyEvent, &seen);
    if (!launched || !make_open_event(psn, &spec, &event))
        return 0;
    const OSErr result = AESend(&event, &reply, kAENoReply, kAEHighPriority, kAEDefaultTimeout, nullptr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
    if (result == errAETimeout) {
        ml_printf("Editor not responding!\n");
        SysBeep(1);
    }
    return result == noErr;
}

int callScript3(const char *editor_path, int line) {
    BoundedString<2048> path;
    const int fits = script_path(editor_path, path);
    if (InitCScript() != noErr)
        return 0;
    if (fits && cmd.format("tell application \"%s\"\r\t\t\t\tselect display_line %d of text window 1\r"
                           "\t\t\tend tell\r",
                           path.c_str(), line))
        CScript(cmd.c_str());
    DisposeCScript();
    return 0;
}

int OpenEditor(int line) {
    ProcessSerialNumber psn;
    if (!editor || !*editor || !open_editfile(&psn))
        return 0;
    if (ed_creator == four("R*ch") || path_says("BBEdit")) {
        callScript3(editor, line);
        ForceTextUpdate();
        return 1;
    }
    if (ed_creator == four("ALFA") || path_says("Alpha")) {
        BoundedString<128> tcl;
        tcl.format("select [rowColToPos %d 0] [rowColToPos %ld 0]", line, line + 1L);
        return select_in_alpha(typeProcessSerialNumber, &psn, sizeof psn, tcl.c_str());
    }
    return 1;
}

} // namespace quillon
