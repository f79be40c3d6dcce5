#include "toolbox/pipes.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "common/activation.h"
#include "common/places.h"
#include "linux/events/plain_programs.h"
#include "linux/events/tokens.h"
#include "toolbox/processes.h"

namespace quillon {

namespace {

void *library = nullptr;

// The POSIX path of Contents/Helpers of the shell's bundle; empty where there is none.
std::string helpers_folder() {
    const std::string folder = common::above_own_program(2) + "/Helpers";
    return ::access(folder.c_str(), X_OK) == 0 ? folder : "";
}

std::string single_quoted(const std::string &text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

// Runs a command that finds the helpers first. Only the command's own PATH names their folder.
std::FILE *open_pipe(const char *command, const char *mode) {
    static const std::string folder = helpers_folder();
    std::string line;
    if (!folder.empty())
        line = "PATH=" + single_quoted(folder) + "${PATH:+:$PATH}; export PATH\n";
    std::vector<std::string> variables = hint_variables(open_hints.document_follows ? "document"
                                                        : open_hints.line_follows   ? "line"
                                                                                    : "nothing");
    common::put_token(variables, fresh_token(""));
    for (const std::string &variable : variables)
        line += "export " + single_quoted(variable) + "\n";
    return ::popen((line + command).c_str(), mode);
}

} // namespace

int SystemFrameworkLoad() {
    if (!library)
        library = ::dlopen("libc.so.6", RTLD_LAZY);
    return library != nullptr;
}

void *SystemFunction(const char *name) {
    if (!SystemFrameworkLoad())
        return nullptr;
    if (std::strcmp(name, "popen") == 0)
        return reinterpret_cast<void *>(open_pipe);
    return ::dlsym(library, name);
}

} // namespace quillon
