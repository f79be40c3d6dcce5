// A call of the shell's method Run, and what it answers.
#ifndef QUILLON_CLIENT_RUN_CALL_H
#define QUILLON_CLIENT_RUN_CALL_H

#include <string>
#include <systemd/sd-bus.h>

namespace client {

struct RunRequest {
    std::string command;   // a command line; with `document` the absolute POSIX path of a document
    std::string folder;    // where it runs, an absolute POSIX path
    bool document = false; // the document is typeset as the shell's settings say
    bool view = false;     // open the viewer after a clean run
    bool edit = false;     // open the editor on an error
    bool answer = false;   // this program answers what the tool asks
    bool summary = false;  // tell the line that sums the run up
};

struct RunResult {
    bool done = false;
    int status;              // the exit status for this command
    bool ran = false;        // the tool ran to its end
    std::string first_error; // "FILE:LINE: MESSAGE"; empty when there was none
    std::string summary;
    std::string document; // of a document: the file that was typeset, which its magic comments may choose
};

// Sends REQUEST to the shell that is named SHELL on the bus, with the console's text for this program.
// RESULT, which must outlive the call, is filled when the answer comes; why nothing ran is printed then. A
// negative errno on failure.
int send_run(sd_bus *bus, const char *shell, const RunRequest &request, RunResult *result);
// Takes back the command of this program at the shell named SHELL.
void cancel_run(sd_bus *bus, const char *shell);

} // namespace client

#endif
