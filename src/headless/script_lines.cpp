// A script's text may come from a pipe or a terminal, which makes nobody wait.
#include "headless/script_lines.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstring>

#include "headless/headless.h"
#include "headless/script_words.h"

namespace quillon {

static int descriptor = -1;
static bool can_wait = false; // true for a pipe or a terminal, which may hold nothing yet
static bool at_end = true;
static std::string unread;

int OpenScriptLines(const char *path) {
    const int opened = std::strcmp(path, "-") == 0 ? STDIN_FILENO : open(path, O_RDONLY | O_CLOEXEC);
    if (opened < 0)
        return 0;
    if (descriptor > STDIN_FILENO)
        close(descriptor);
    descriptor = opened;
    can_wait = lseek(descriptor, 0, SEEK_CUR) < 0;
    at_end = false;
    unread.clear();
    return 1;
}

int ScriptIsOpen() {
    return descriptor >= 0;
}

int ScriptEnded() {
    return at_end;
}

int ScriptDescriptor() {
    return can_wait && !at_end ? descriptor : -1;
}

// Reads the next part of the script. False when nothing can be read now.
static bool read_more() {
    if (at_end)
        return false;
    pollfd source = {descriptor, POLLIN, 0};
    if (can_wait && poll(&source, 1, 0) <= 0)
        return false;
    char block[4096];
    const ssize_t size = read(descriptor, block, sizeof block);
    if (size <= 0)
        at_end = true;
    else
        unread.append(block, static_cast<std::size_t>(size));
    return true;
}

bool PeekLine(std::string *line) {
    std::size_t end = unread.find('\n');
    while (end == std::string::npos && read_more())
        end = unread.find('\n');
    if (end == std::string::npos && (!at_end || unread.empty()))
        return false;
    *line = unread.substr(0, end);
    return true;
}

void DropLine() {
    const std::size_t end = unread.find('\n');
    unread.erase(0, end == std::string::npos ? end : end + 1);
}

bool PeekStep(std::string *word, std::string *rest) {
    while (PeekLine(rest)) {
        *word = TakeWord(rest);
        if (!word->empty() && (*word)[0] != '#')
            return true;
        DropLine();
    }
    return false;
}

} // namespace quillon
