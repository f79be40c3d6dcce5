#include "toolhost/prompt.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace toolhost {

namespace {

constexpr int deepest = 16; // levels of descendants that are looked at

} // namespace

void PromptWatch::start(pid_t program, const std::string &terminal) {
    *this = PromptWatch();
    program_ = program;
    terminal_ = terminal;
}

bool PromptWatch::waits(bool line_open) {
    time_ = 0;
    all_asleep_ = true;
    if (program_ <= 0)
        return false;
    if (tree_reads(program_, 0))
        return true;
    if (kernel_says_)
        return false;
    const bool still = all_asleep_ && time_ == last_time_;
    last_time_ = time_;
    return still && line_open;
}

bool PromptWatch::tree_reads(pid_t process, int depth) {
    if (reads_terminal(process))
        return true;
    if (depth >= deepest)
        return false;
    char name[80];
    std::snprintf(name, sizeof name, "/proc/%d/task/%d/children", static_cast<int>(process),
                  static_cast<int>(process));
    std::FILE *const list = std::fopen(name, "re");
    if (!list)
        return false;
    bool reads = false;
    int child;
    while (!reads && std::fscanf(list, "%d", &child) == 1)
        reads = tree_reads(child, depth + 1);
    std::fclose(list);
    return reads;
}

bool PromptWatch::reads_terminal(pid_t process) {
    char name[80];
    std::snprintf(name, sizeof name, "/proc/%d/syscall", static_cast<int>(process));
    std::FILE *const file = std::fopen(name, "re");
    long number = -1;
    unsigned long descriptor = 0;
    int fields = 0;
    if (file) {
        fields = std::fscanf(file, "%ld %lx", &number, &descriptor);
        std::fclose(file);
    }
    if (!file || (fields < 1 && access(name, R_OK) != 0)) {
        kernel_says_ = false;
        add_time(process);
        return false;
    }
    if (fields != 2 || number != SYS_read)
        return false;
    std::snprintf(name, sizeof name, "/proc/%d/fd/%lu", static_cast<int>(process), descriptor);
    char target[256];
    const ssize_t length = readlink(name, target, sizeof target);
    if (length <= 0)
        return false;
    const std::string_view path(target, static_cast<std::size_t>(length));
    return path == terminal_ || path == "/dev/tty";
}

void PromptWatch::add_time(pid_t process) {
    char name[80];
    std::snprintf(name, sizeof name, "/proc/%d/stat", static_cast<int>(process));
    std::FILE *const file = std::fopen(name, "re");
    if (!file)
        return;
    char text[1024];
    const std::size_t size = std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    text[size] = '\0';
    const char *const after = std::strrchr(text, ')');
    char state = 'R';
    unsigned long long user = 0;
    unsigned long long system = 0;
    if (after && std::sscanf(after + 1, " %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &state,
                             &user, &system) == 3)
        time_ += user + system;
    all_asleep_ = all_asleep_ && state == 'S';
}

} // namespace toolhost
