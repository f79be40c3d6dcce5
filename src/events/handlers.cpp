#include "events/handlers.h"

#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "console/window.h"
#include "core/startup.h"
#include "files/paths.h"
#include "files/search.h"
#include "jobs/problem_steps.h"
#include "jobs/tex_runs.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "tools/problems.h"
#include "tools/tool_call.h"
#include "tools/tool_runs.h"
#include "viewers/quoting.h"

namespace quillon {

std::uint8_t doAppleTeX = 0, doFind = 0;
BoundedString<256> findString;
BoundedString<1024> odocfile;

static const char busy_text[] = "TeX is busy with another request.";
static const char exec_busy_text[] = "TeX is busy with a previous request.";
static const char accepted_text[] = "TeX is processing your request.";

static int expects_reply(const AppleEvent *reply) {
    return reply->data != nullptr;
}

static void put_text(AppleEvent *reply, OSType keyword, const char *text) {
    if (expects_reply(reply))
        AEPutParamPtr(reply, keyword, typeChar, text, std::strlen(text));
}

OSErr RequiredCheck(const AppleEvent *event) {
    OSType missed = 0;
    const OSErr error = AEGetAttributePtr(event, keyMissedKeywordAttr, typeWildCard, &missed, sizeof missed);
    if (error == errAEDescNotFound)
        return noErr;
    return error == noErr ? static_cast<OSErr>(errAEEventNotHandled) : error;
}

// Refuses a request with the error text TEXT when start-up failed.
static OSErr refuse_when_busy(AppleEvent *reply, const char *text) {
    if (!at_exit)
        return noErr;
    put_text(reply, keyErrorString, text);
    return errAEEventNotHandled;
}

// Reads the direct text of an event into BUFFER. The console says so when a part of it does not fit.
static void read_text(const AppleEvent *event, BoundedBuffer &buffer) {
    std::size_t size = 0;
    buffer.clear();
    if (AEGetParamPtr(event, keyDirectObject, typeChar, buffer.data(), buffer.capacity() - 1, &size) != noErr)
        return;
    const std::size_t room = buffer.capacity() - 1;
    buffer.cut(size < room ? size : room);
    buffer.data()[size < room ? size : room] = '\0';
    if (size > room)
        ml_printf("A text of %lu characters was received; only its first %lu are used.\n",
                  static_cast<unsigned long>(size), static_cast<unsigned long>(room));
    else if (buffer.length() < size)
        ml_printf("A text with a zero byte was received; only what stands before it is used.\n");
}

OSErr HandleOAPP(const AppleEvent *event, AppleEvent *, std::int32_t) {
    return RequiredCheck(event);
}

// Makes the Unix path of a location. Returns 0 when it does not fit.
static int unix_path_of(FSSpec *spec, BoundedBuffer &path) {
    BoundedString<256> leaf;
    from_pascal(spec->name, leaf);
    convert_space(leaf.data());
    return get_unixpath_by_dirid(spec->vRefNum, spec->parID, path) && path.append("/") &&
           path.append(leaf.view());
}

// Refuses a document that has no Unix path: it lies directly in the root folder, or its path does not fit.
static void refuse_document(const FSSpec *spec) {
    BoundedString<256> leaf;
    from_pascal(spec->name, leaf);
    odocfile.clear();
    ml_printf("Quillon cannot open \"%s\" where it lies.\n", leaf.c_str());
}

OSErr HandleODOC(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    OSErr error = refuse_when_busy(reply, busy_text);
    if (error != noErr)
        return error;
    AEDescList list;
    if ((error = AEGetParamDesc(event, keyDirectObject, typeAEList, &list)) != noErr)
        return error;
    if ((error = RequiredCheck(event)) != noErr) {
        AEDisposeDesc(&list);
        return error;
    }
    std::int32_t count = 0;
    AECountItems(&list, &count);
    if (count >= 1) {
        FSSpec spec = {};
        if ((error = AEGetNthPtr(&list, 1, typeFSS, &spec, sizeof spec, nullptr)) != noErr) {
            AEDisposeDesc(&list);
            return error;
        }
        if (!unix_path_of(&spec, odocfile)) {
            refuse_document(&spec);
            AEDisposeDesc(&list);
            return noErr;
        }
    }
    doAppleTeX = 1;
    AEDisposeDesc(&list);
    return noErr;
}

OSErr HandlePDOC(const AppleEvent *, AppleEvent *, std::int32_t) {
    return errAEEventNotHandled;
}

OSErr HandleQUIT(const AppleEvent *, AppleEvent *, std::int32_t) {
    SaveRecentItems();
    TextCleanUp();
    std::exit(0);
}

int SetCurrDirFromParameter(BoundedBuffer &command) {
    BoundedString<1024> folder, hfs_path;
    FSSpec spec = {};
    int is_folder = 0, was_alias = 0;
    char *const mark = std::strstr(command.data(), " -@ ");
    if (!mark)
        return 0;
    const char *const rest = mark + 4;
    std::memset(mark, 0, 4);
    if (!*rest || !folder.copy(rest))
        return 0;
    convert_path(folder.c_str(), hfs_path);
    if (FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec) != noErr ||
        ResolveAliasFile(&spec, 1, &is_folder, &was_alias) != noErr || !is_folder)
        return 0;
    BoundedString<1024> path;
    return FSSpecToUnixPath(&spec, path) && curr_dir.copy(path.view());
}

// Sets curr_dir from the parameter 'dest', or to the binaries folder when there is none.
static void take_folder(const AppleEvent *event) {
    FSSpec spec = {};
    BoundedString<1024> path;
    if (AEGetParamPtr(event, four("dest"), typeFSS, &spec, sizeof spec, nullptr) != noErr) {
        curr_dir.copy(home ? home : "");
        return;
    }
    FSSpecToUnixPath(&spec, path);
    if (!curr_dir.copy(path.view())) {
        curr_dir.clear();
        ml_printf("The path \"%s\" is too long for Quillon.\n", path.c_str());
    }
}

// Tells a caller on the bus how the command ended, which the exit status does not say.
static void tell_outcome() {
    static const OSType outcomes[] = {four("none"), four("nrun"), four("cncl"), four("unkn")};
    AESetCallOutcome(outcomes[job_outcome]);
}

// Reads a yes-or-no parameter of the event. Returns OTHERWISE when the event has none.
static std::uint8_t wish(const AppleEvent *event, OSType keyword, std::uint8_t otherwise) {
    std::int32_t value = 0;
    if (AEGetParamPtr(event, keyword, typeLongInteger, &value, sizeof value, nullptr) != noErr)
        return otherwise;
    return value != 0;
}

// Puts into the reply what a client is told beyond the status: the tool's exit code and the run's first
// error; for a document also the file that was typeset.
static void put_result(AppleEvent *reply, int is_document) {
    BoundedString<1024> posix_path;
    BoundedString<256> summary;
    if (!expects_reply(reply))
        return;
    command_summary(summary);
    if (!summary.empty())
        put_text(reply, four("summ"), summary.c_str());
    const std::int32_t code = exit_status == 0 || job_exit_code == 0 ? exit_status : job_exit_code;
    AEPutParamPtr(reply, four("code"), typeLongInteger, &code, sizeof code);
    if (const char *const document = is_document ? get_str_resource("TEXFILE") : nullptr)
        put_text(reply, four("docm"), UnixFileToPosixFile(document, posix_path));
    if (job_error_file.empty())
        return;
    put_text(reply, four("errf"), UnixFileToPosixFile(job_error_file.c_str(), posix_path));
    put_text(reply, four("errm"), job_error_message.c_str());
    AEPutParamPtr(reply, four("errl"), typeLongInteger, &job_error_line, sizeof job_error_line);
}

// Typesets a document for a client as "Typeset" does.
static void typeset_document(FSSpec *document) {
    const JobScope scope;
    job_outcome = job_not_run;
    exit_status = 0;
    BoundedString<1024> path;
    if (!unix_path_of(document, path))
        refuse_document(document);
    else if (usePdfTeX)
        DoRecentPdfTeX(path.c_str());
    else
        DoRecentTeX(path.c_str());
}

OSErr HandleAppleScript(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    OSErr error = refuse_when_busy(reply, exec_busy_text);
    if (error != noErr)
        return error;
    read_text(event, mycommand);
    take_folder(event);
    SetCurrDirFromParameter(mycommand);
    const std::uint8_t views = wish(event, four("view"), !nobody_answers),
                       edits = wish(event, four("edit"), 1);
    const std::uint8_t wants_result = wish(event, four("rslt"), 0);
    FSSpec document = {};
    const int is_document =
        AEGetParamPtr(event, four("docm"), typeFSS, &document, sizeof document, nullptr) == noErr;
    if ((error = RequiredCheck(event)) != noErr) {
        ml_printf("I missed something.\n");
        return error;
    }
    job_views = views;
    job_edits = edits;
    job_error_file.clear();
    job_exit_code = 0;
    if (is_document)
        typeset_document(&document);
    else
        DoAppleScript();
    job_views = !nobody_answers;
    job_edits = 1;
    tell_outcome();
    if (wants_result)
        put_result(reply, is_document);
    if (expects_reply(reply))
        AEPutParamPtr(reply, keyDirectObject, typeLongInteger, &exit_status, sizeof exit_status);
    return noErr;
}

// Reads the text of a 'find' or 'loca' event into findString.
static OSErr take_find_text(const AppleEvent *event, AppleEvent *reply) {
    OSErr error = refuse_when_busy(reply, busy_text);
    if (error != noErr)
        return error;
    read_text(event, findString);
    if ((error = RequiredCheck(event)) != noErr)
        ml_printf("I missed something.\n");
    return error;
}

OSErr HandleFIND(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    const OSErr error = take_find_text(event, reply);
    if (error != noErr)
        return error;
    put_text(reply, keyErrorString, accepted_text);
    doFind = 1;
    return noErr;
}

OSErr HandleLocate(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    const OSErr error = take_find_text(event, reply);
    if (error != noErr)
        return error;
    if (!DoSearchFile(findString))
        findString.clear();
    put_text(reply, keyDirectObject, findString.c_str());
    return noErr;
}

OSErr HandleFormats(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    static BoundedString<32768> joined;
    BoundedString<256> text;
    const OSErr error = RequiredCheck(event);
    if (error != noErr)
        return error;
    joined.clear();
    for (std::int16_t item = 3; item <= CountMenuItems(formatMenu); item++) {
        GetMenuItemText(formatMenu, item, text);
        if (item > 3)
            joined.append(" ");
        joined.append(text.view());
    }
    put_text(reply, keyDirectObject, joined.c_str());
    return noErr;
}

// Gives the problems of the last run, as the records that its tool wrote.
static OSErr HandleProblems(const AppleEvent *, AppleEvent *reply, std::int32_t) {
    const std::string_view records = problem_records();
    if (expects_reply(reply) && !records.empty())
        AEPutParamPtr(reply, keyDirectObject, typeChar, records.data(), records.size());
    return noErr;
}

// Opens the problem whose number the event names in the editor. The event waits until no job runs.
static OSErr HandleGoToProblem(const AppleEvent *event, AppleEvent *, std::int32_t) {
    std::int32_t index = 0;
    const OSErr error = AEGetParamPtr(event, keyDirectObject, typeLongInteger, &index, sizeof index, nullptr);
    if (error == noErr)
        OpenProblem(index);
    return error;
}

// The set-up has changed the settings. The event waits until no job runs.
static OSErr HandleSettings(const AppleEvent *, AppleEvent *, std::int32_t) {
    if (at_exit)
        return errAEEventNotHandled;
    reread_settings();
    return noErr;
}

// Says that the session bus has gone, so that no tool can be reached any more.
static OSErr HandleBusGone(const AppleEvent *, AppleEvent *, std::int32_t) {
    ml_printf("\nThe session bus has gone. Tools cannot be run until Quillon is started again.\n");
    return noErr;
}

void DoAEInstallation() {
    static const struct {
        OSType event_class, id;
        AEEventHandler handler;
    } table[] = {
        {four("aevt"), four("oapp"), HandleOAPP},        {four("aevt"), four("odoc"), HandleODOC},
        {four("aevt"), four("pdoc"), HandlePDOC},        {four("aevt"), four("quit"), HandleQUIT},
        {four("QUIL"), four("exec"), HandleAppleScript}, {four("QUIL"), four("find"), HandleFIND},
        {four("QUIL"), four("frmt"), HandleFormats},     {four("QUIL"), four("loca"), HandleLocate},
        {four("aevt"), four("ansr"), HandleReply},       {four("QUIL"), four("exit"), HandleExit},
        {four("QUIL"), four("gone"), HandleBusGone},     {four("QUIL"), four("sett"), HandleSettings},
        {four("QUIL"), four("prob"), HandleProblems},    {four("QUIL"), four("gopr"), HandleGoToProblem},
    };
    for (const auto &entry : table)
        AEInstallEventHandler(entry.event_class, entry.id, entry.handler, 0);
    AESetInteractionAllowed(kAEInteractWithAll);
}

void doAppleEvent(const EventRecord *event) {
    doAppleTeX = 0;
    doFind = 0;
    AEProcessAppleEvent(event);
    if (doAppleTeX)
        doOpenDoc();
    else if (doFind)
        DoFindFile(findString);
    if (aeQuit) {
        SaveRecentItems();
        doQuit = 1;
    }
}

static void convert_document(const char *path) {
    if (mypsfile.copy(path))
        RunPs2pdf(1);
}

using CompanionRun = void (*)(const char *path);

// Returns the run that a document with the extension of PATH asks for; null for a TeX source.
static CompanionRun companion_of(const char *path) {
    static const struct {
        const char *extension;
        CompanionRun run;
    } companions[] = {{".dvi", RunDvips},         {".aux", RunBibTeX},        {".ps", convert_document},
                      {".idx", RunOdocMakeIndex}, {".glo", RunOdocMakeIndex}, {".mp", RunOdocMetaPost}};
    for (const auto &companion : companions)
        if (has_extension(path, companion.extension))
            return companion.run;
    return nullptr;
}

// Refuses the document LEAF for its long name, and says what typesets it all the same when it is a TeX
// source.
static void refuse_long_name(BoundedBuffer &leaf) {
    BoundedString<4096> word; // each byte of the name takes four at most
    ml_printf("Filename \"%s\" is too long for Quillon.\n", leaf.c_str());
    convert_to_space(leaf.data());
    if (!companion_of(leaf.c_str()) && quote_word(leaf.c_str(), word))
        ml_printf("It can be typeset with: quillon exec pdftex %s\n", word.c_str());
    odocfile.clear();
}

void doOpenDoc() {
    BoundedString<1024> folder, leaf;
    split_path(odocfile.c_str(), folder, leaf);
    if (is_long_name(leaf.c_str())) {
        refuse_long_name(leaf);
        return;
    }
    if (const CompanionRun run = companion_of(odocfile.c_str()))
        run(odocfile.c_str());
    else if (usePdfTeX)
        DoPdfTeX(odocfile.c_str());
    else
        DoTeX(odocfile.c_str());
}

} // namespace quillon
