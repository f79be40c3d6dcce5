// Launching bundles, desktop entries and programs.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/activation.h"
#include "common/application.h"
#include "common/bundle.h"
#include "common/spawn.h"
#include "front/front.h"
#include "linux/events/peers.h"
#include "linux/events/plain_programs.h"
#include "linux/events/tokens.h"
#include "toolbox/processes.h"

namespace quillon {

// The environment of the tool whose bundle has the POSIX path PATH: the shell's own, with the front, the
// process id of the shell and an activation token added.
static std::vector<std::string> tool_environment(const std::string &path) {
    std::vector<std::string> variables = common::own_environment();
    variables.push_back("QUILLON_FRONT=" + std::string(front->name));
    variables.push_back("QUILLON_SHELL_PID=" + std::to_string(getpid()));
    common::put_token(variables, fresh_token(path));
    return variables;
}

static OSErr launch_bundle(const std::string &path, ProcessSerialNumber *psn) {
    Launched program;
    program.path = path;
    program.signature = signature_of(path);
    // The headless front prints the console's text on standard output, so the output of a program goes to
    // standard error.
    const std::string executable = common::program_of_bundle(path);
    const int failure = common::spawn(
        {executable, {executable}, tool_environment(path), common::Place::own_group}, &program.pid);
    if (failure == ENOMEM || failure == EAGAIN)
        return memFullErr;
    if (failure != 0)
        return failure == ENOENT ? static_cast<OSErr>(fnfErr) : static_cast<OSErr>(permErr);
    program.descriptor = static_cast<int>(syscall(SYS_pidfd_open, program.pid, 0));
    add_launched(program);
    *psn = {psn_launched, static_cast<std::uint32_t>(program.pid)};
    return noErr;
}

OSErr LaunchApplication(LaunchParamBlockRec *block) {
    static FSRef reference;
    const OSErr error = FSpMakeFSRef(block->launchAppSpec, &reference);
    if (error != noErr)
        return error;
    if (common::is_bundle_path(reference.path))
        return launch_bundle(reference.path, &block->launchProcessSN);
    const common::Application application = common::application_at(reference.path);
    if (application.kind == common::Kind::none)
        return access(reference.path, F_OK) == 0 ? static_cast<OSErr>(permErr) : static_cast<OSErr>(fnfErr);
    block->launchProcessSN = add_pending_start(application.path);
    return noErr;
}

} // namespace quillon
