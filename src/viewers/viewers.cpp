#include "viewers/viewers.h"

#include <cstdlib>

#include "console/output.h"
#include "core/event_loop.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "tools/processes.h"
#include "tools/shell_commands.h"
#include "viewers/quoting.h"

namespace quillon {

int OpenDocInOSX(const char *app, const char *document) {
    BoundedString<4096> command;
    BoundedString<1024> posix_path;
    BoundedString<2048> quoted_app, quoted_document;
    if (!app || !*app) {
        ml_printf("Please choose an editor with the \"Set apps\" item under the Options Menu.\n");
        return 1;
    }
    UnixFileToPosixFile(app, posix_path);
    // What cannot be converted is handed on as it is, so that the command can name it.
    if (posix_path.empty())
        posix_path.copy(app);
    int fits = quote_path(posix_path.c_str(), quoted_app);
    if (document) {
        BoundedString<1024> whole;
        add_current_dir(whole, document);
        UnixFileToPosixFile(whole.c_str(), posix_path);
        fits &= quote_path(posix_path.c_str(), quoted_document);
        fits &= command.format("open -a \"%s\" \"%s\" 2>&1", quoted_app.c_str(), quoted_document.c_str());
    } else {
        fits &= command.format("open -a \"%s\" 2>&1", quoted_app.c_str());
    }
    return fits && InvokeTool(command.c_str(), nullptr) == 1 ? 0 : 1;
}

// Makes the open-document event for SPEC, addressed to PSN. Returns 0, after a message, on failure.
static int make_document_event(const ProcessSerialNumber *psn, const FSSpec *spec, AppleEvent *event) {
    AEDesc address, item;
    AEDescList list;
    const char *failure = nullptr;
    if (AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &address) != noErr)
        failure = "Can't create desc.\n";
    else if (AECreateAppleEvent(four("aevt"), four("odoc"), &address, kAutoGenerateReturnID,
                                kAnyTransactionID, event) != noErr)
        failure = "Can't create apple event.\n";
    else if (AECreateList(&list) != noErr)
        failure = "Can't create list.\n";
    else if (AECreateDesc(typeFSS, spec, sizeof *spec, &item) != noErr)
        failure = "Can't create item desc.\n";
    else if (AEPutDesc(&list, 0, &item) != noErr)
        failure = "Can't dispose list item.\n"; // Kept on purpose: it says "dispose", here and below.
    else if (AEPutParamDesc(event, keyDirectObject, &list) != noErr)
        failure = "Can't dispose list desc.\n";
    AEDisposeDesc(&address);
    AEDisposeDesc(&item);
    AEDisposeDesc(&list);
    if (!failure)
        return 1;
    AEDisposeDesc(event);
    ml_printf("%s", failure);
    return 0;
}

int LaunchAndSendODOC(const char *app, const char *document, int bring_to_front) {
    BoundedString<1024> hfs_path;
    FSSpec spec = {};
    ProcessSerialNumber psn;
    AppleEvent event, reply;
    if (!app)
        return 0;
    convert_path(document, hfs_path);
    convert_to_space(hfs_path.data());
    if (FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec) != noErr) {
        ml_printf("Can't make filespec.\n");
        return 0;
    }
    OSErr error = procNotFound;
    // One that was running may have been about to leave. Then it is started anew, once.
    for (int launched = 0, times = 0; error == procNotFound && launched < 2 && times < 2; times++) {
        launched = DoMyLaunch(app, &psn, bring_to_front);
        if (!launched) {
            ml_printf("didlaunch = 0\n");
            return 0;
        }
        if (!make_document_event(&psn, &spec, &event))
            return 0;
        error = AESend(&event, &reply, kAENoReply, kAEHighPriority, 600, myIdleProcSend);
        AEDisposeDesc(&event);
        AEDisposeDesc(&reply);
    }
    if (error == permErr)
        ml_printf("The application <%s> could not be started.\n", app);
    return 1;
}

// Opens DVI in the previewer. FAILURE is printed when the second try fails too.
static void view_dvi(const char *dvi, const char *failure) {
    if (!*dvi)
        return;
    if (!IsApp(dvipreview.c_str())) {
        ml_printf("I can't find dviview. It should be in the binaries folder.\n");
        return;
    }
    if (haveosx) {
        OpenDocInOSX(dvipreview.c_str(), dvi);
        return;
    }
    DoTransfer(dvipreview.c_str());
    if (LaunchAndSendODOC(dvipreview.c_str(), dvi, 1))
        return;
    ml_printf("An error occurred in either launching dviview\n");
    ml_printf("or sending an Apple Event to it.\n");
    ml_printf("I'll try again.\n");
    if (!LaunchAndSendODOC(dvipreview.c_str(), dvi, 1))
        ml_printf("%s", failure);
}

void OpenDviFile(const char *dvi) {
    view_dvi(dvi, "An error occurred trying to open the dvifile.\n");
}

void AutoViewDviFile() {
    // Kept on purpose: this message has no "the".
    view_dvi(current_outputfile.c_str(), "An error occurred trying to open dvifile.\n");
}

void take_application(const char **application, const char *key) {
    const char *const before = *application;
    *application = GetApp(key);
    std::free(const_cast<char *>(before));
}

int find_application(const char **viewer, const char *key, const char *prompt) {
    if (IsApp(*viewer))
        return 1;
    if (nobody_answers) {
        ml_printf("Application %s has not been set.\n", key);
        return 0;
    }
    wait_for_front();
    const char *const chosen = GetAppByDialog(prompt, typeWildCard, 0);
    if (!chosen)
        return 0;
    set_str_resource(key, chosen);
    take_application(viewer, key);
    return *viewer != nullptr;
}

static void view_document(const char *document, const char **viewer, const char *key, const char *prompt) {
    if (!*document || !find_application(viewer, key, prompt))
        return;
    if (haveosx)
        OpenDocInOSX(*viewer, document);
    else if (!LaunchAndSendODOC(*viewer, document, 1))
        ml_printf("An error occurred trying to open pdf file.\n"); // Kept on purpose: it says "pdf" always.
}

void ViewPS() {
    view_document(mypsfile.c_str(), &viewpsexe, "VIEWPS", "Find psglance");
}

void ViewPdf() {
    view_document(mypdffile.c_str(), &pdfview, "PDFVIEW", "Find a pdf viewer");
}

} // namespace quillon
