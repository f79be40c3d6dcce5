#include "viewers/editor.h"

#include <cstring>

#include "console/output.h"
#include "console/window.h"
#include "files/paths.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "tools/processes.h"
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

int SetLineInEditorOSX(const char *file, int line) {
    if (ed_creator != four("R*ch") && ed_creator != four("!Rch") && !path_says("BBEdit")) {
        if (ed_creator != four("ALFA") && !path_says("Alpha"))
            return 1;
        BoundedString<128> tcl;
        tcl.format("select [pos::fromRowCol %d 0] [pos::fromRowCol %d 0]", line, line + 1);
        return select_in_alpha(typeApplSignature, &ed_creator, sizeof ed_creator, tcl.c_str());
    }
    if (!path_says("Lite") && file)
        run_line_command(file, line);
    ForceTextUpdate();
    return 1;
}

// Launches the editor and sends it editfile. Returns 1, and the editor's serial number, when it was sent.
static int open_editfile(ProcessSerialNumber *psn) {
    BoundedString<1024> path, hfs_path;
    FSSpec spec = {};
    add_current_dir(path, editfile.c_str());
    convert_to_space(path.data());
    convert_path(path.c_str(), hfs_path);
    if (FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec) != noErr)
        return 0;
    const int launched = DoMyLaunch(editor, psn, 1);
    EventRecord seen;
    for (int i = 0; launched == 2 && haveosx && i < 3; i++)
        EventAvail(everyEvent, &seen);
    AEDesc address, item;
    AEDescList list;
    AppleEvent event, reply;
    if (!launched || AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &address) != noErr)
        return 0;
    AECreateAppleEvent(four("aevt"), four("odoc"), &address, kAutoGenerateReturnID, kAnyTransactionID,
                       &event);
    AECreateList(&list);
    AECreateDesc(typeFSS, &spec, sizeof spec, &item);
    AEPutDesc(&list, 0, &item);
    AEPutParamDesc(&event, keyDirectObject, &list);
    const OSErr result = AESend(&event, &reply, kAENoReply, kAEHighPriority, kAEDefaultTimeout, nullptr);
    AEDisposeDesc(&address);
    AEDisposeDesc(&item);
    AEDisposeDesc(&list);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
    if (result == errAETimeout) {
        ml_printf("Editor not responding!\n");
        SysBeep(1);
    }
    return result == noErr;
}

int OpenEditor(int line) {
    ProcessSerialNumber psn;
    if (!editor || !open_editfile(&psn))
        return 0;
    if (ed_creator == four("ALFA") || path_says("Alpha")) {
        BoundedString<128> tcl;
        tcl.format("select [rowColToPos %d 0] [rowColToPos %d 0]", line, line + 1);
        return select_in_alpha(typeProcessSerialNumber, &psn, sizeof psn, tcl.c_str());
    }
    return 1;
}

} // namespace quillon
