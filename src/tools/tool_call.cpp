#include "tools/tool_call.h"

#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "core/event_loop.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "tools/problems.h"
#include "tools/processes.h"

namespace quillon {

unsigned char AppDone = 0;

static const OSType tex_engines[] = {four("*Xet"), four("eXet"), four("PXET"),
                                     four("PxET"), four("LUAX"), four("XELX")};

static int is_tex_engine(OSType signature) {
    for (const OSType engine : tex_engines)
        if (signature == engine)
            return 1;
    return 0;
}

// Builds the command event for the tool PSN. Returns 0 when its address cannot be made.
static int make_command_event(const ProcessSerialNumber *psn, const char *command_line, const char *folder,
                              AppleEvent *event) {
    AEDesc address;
    if (AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &address) != noErr)
        return 0;
    AECreateAppleEvent(four("QUIL"), four("priv"), &address, kAutoGenerateReturnID, kAnyTransactionID, event);
    AEDisposeDesc(&address);
    FSSpec spec = {};
    UnixToFSS(folder, nullptr, &spec);
    AEPutParamPtr(event, keyDirectObject, typeChar, command_line, std::strlen(command_line));
    AEPutParamPtr(event, four("dest"), typeFSS, &spec, sizeof spec);
    return 1;
}

int CallTool(const char *tool, const char *command_line, const char *folder) {
    ProcessSerialNumber psn;
    job_outcome = job_not_run;
    forget_run_summary();
    if (!get_sig(tool, &toolSig)) {
        // Kept on purpose: this message spells "foldeer".
        ml_printf("I can't find %s. It should be in the binaries foldeer.\n", tool);
        return 0;
    }
    if (FSSpec spec = {}; !UnixPathToFolder(folder, &spec)) {
        exit_status = 1;
        ml_printf("I can't find the folder %s.\n", folder);
        return 0;
    }
    if (!DoMyLaunch(tool, &psn, 1)) {
        ml_printf("Unable to launch <%s>!\n", tool);
        return 0;
    }
    WaitForUpdate();
    AppleEvent event, reply;
    if (!make_command_event(&psn, command_line, folder, &event))
        return 0;
    const std::int32_t mode =
        inBackground ? kAEWaitReply + kAECanInteract : kAEWaitReply + kAEAlwaysInteract + kAECanSwitchLayer;
    const OSErr result = AESend(&event, &reply, mode, kAEHighPriority, kNoTimeOut, myIdleToolProcSend);
    AEDisposeDesc(&event);
    if (result == noErr) {
        job_outcome = job_done;
        ProcessReply(&reply);
    } else if (result == errAETimeout) {
        ml_printf("Time out error on <%s>!\n", tool);
    }
    AEDisposeDesc(&reply);
    return result == noErr;
}

static int get_long(const AppleEvent *event, OSType keyword, std::int32_t *value) {
    return AEGetParamPtr(event, keyword, typeLongInteger, value, sizeof *value, nullptr) == noErr;
}

static void take_exit_code(const AppleEvent *event) {
    if (!get_long(event, keyDirectObject, &job_exit_code))
        job_exit_code = 1;
    exit_status = job_exit_code == 0 ? 0 : 1;
}

int is_transcript(const FSSpec *spec) {
    std::int16_t volume = 0;
    std::int32_t directory = 0;
    return FindFolder(four("trns"), 0, &volume, &directory) == noErr && spec->vRefNum == volume &&
           spec->parID == directory;
}

// Shows what a tool sends in place of a transcript that it could not keep. Returns 1 when the event has it.
static int show_unkept(const AppleEvent *event) {
    static char said[66000];
    std::size_t size = 0;
    if (AEGetParamPtr(event, four("said"), typeChar, said, sizeof said, &size) != noErr)
        return 0;
    PutTextInfo(said, size < sizeof said ? size : sizeof said);
    return 1;
}

// Shows the log file that the event names, or the text that stands for one. Returns 1 when there is either.
static int show_log(const AppleEvent *event) {
    FSSpec log;
    if (AEGetParamPtr(event, four("logf"), typeFSS, &log, sizeof log, nullptr) != noErr)
        return show_unkept(event);
    if (is_transcript(&log))
        ReadLogFile(&log);
    return 1;
}

// Quits the tool that sent the event, and sets tex_error when it is a TeX engine whose run failed.
static void take_identity(const AppleEvent *event) {
    std::int32_t value = 0;
    if (!get_long(event, four("iden"), &value))
        return;
    const OSType signature = static_cast<OSType>(value);
    TerminateApp(signature);
    if (is_tex_engine(signature) && exit_status == 1)
        tex_error = 1;
}

static int asks_for_editor(const AppleEvent *event) {
    std::int32_t asked = 0;
    return get_long(event, four("edit"), &asked) && asked != 0;
}

// Keeps the first error of the run for the program that asked for the job.
static void take_first_error(const AppleEvent *reply) {
    std::size_t size = 0;
    job_error_message.clear();
    job_error_file.clear();
    job_error_line = 0;
    if (!asks_for_editor(reply))
        return;
    const char *const file = get_str_resource("FILENAME");
    if (!file || !job_error_file.copy(file))
        return;
    const char *const line = get_str_resource("LINENUMBER");
    job_error_line = line ? static_cast<std::int32_t>(std::atol(line)) : 0;
    char message[1024];
    if (AEGetParamPtr(reply, four("mesg"), typeChar, message, sizeof message, &size) == noErr)
        job_error_message.copy_cut({message, size < sizeof message ? size : sizeof message});
}

void ProcessReply(const AppleEvent *reply) {
    take_exit_code(reply);
    show_log(reply);
    take_problems(reply);
    take_identity(reply);
    take_first_error(reply);
    if (asks_for_editor(reply))
        calleditor = 1;
}

// Prints the place of the error and asks for the editor, when the event does.
static void say_error_place(const AppleEvent *event) {
    if (!asks_for_editor(event))
        return;
    calleditor = 1;
    const char *const line_text = get_str_resource("LINENUMBER");
    const long line = line_text ? std::atol(line_text) : 0;
    const char *const file = get_str_resource("FILENAME");
    ml_printf("\nUse any text editor to edit %s\n", file ? file : "");
    ml_printf("at line number %ld.\n", line);
}

OSErr HandleReply(const AppleEvent *event, AppleEvent *, std::int32_t) {
    AppDone = 1;
    take_exit_code(event);
    show_log(event);
    take_problems(event);
    take_identity(event);
    say_error_place(event);
    return noErr;
}

OSErr HandleExit(const AppleEvent *event, AppleEvent *, std::int32_t) {
    // After a reply the run has ended, and this late report does not make it a cancelled one.
    if (job_outcome != job_done)
        job_outcome = job_cancelled;
    take_exit_code(event);
    if (show_log(event))
        ml_printf("\nProcessing cancelled by user.\n\n");
    take_problems(event);
    say_error_place(event);
    return noErr;
}

} // namespace quillon
