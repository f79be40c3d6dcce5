#include "tools/shell_commands.h"

#include "console/output.h"
#include "toolbox/pipes.h"

namespace quillon {

std::size_t (*BSDfread)(void *, std::size_t, std::size_t, std::FILE *) = nullptr;
std::FILE *(*BSDpopenFunc)(const char *, const char *) = nullptr;
int (*BSDpclose)(std::FILE *) = nullptr;
int (*BSDfgetc)(std::FILE *) = nullptr;
char *(*BSDfgets)(char *, int, std::FILE *) = nullptr;
int (*BSDchdir)(const char *) = nullptr;

static constexpr OSStatus coreFoundationUnknownErr = -4960;

template <typename Function> static void bind(Function *&target, const char *name) {
    target = reinterpret_cast<Function *>(SystemFunction(name));
}

OSStatus getMachOCalls() {
    if (!SystemFrameworkLoad())
        return coreFoundationUnknownErr;
    bind(BSDfread, "fread");
    bind(BSDpopenFunc, "popen");
    bind(BSDpclose, "pclose");
    bind(BSDfgetc, "fgetc");
    bind(BSDfgets, "fgets");
    bind(BSDchdir, "chdir");
    return noErr;
}

int InvokeTool(const char *command_line, const char *folder) {
    if (folder)
        BSDchdir(folder);
    std::FILE *const pipe = BSDpopenFunc(command_line, "r");
    if (!pipe)
        return 0;
    char line[1024];
    while (BSDfgets(line, sizeof line, pipe))
        ml_fputs(line, stdout);
    return BSDpclose(pipe) == 0;
}

} // namespace quillon
