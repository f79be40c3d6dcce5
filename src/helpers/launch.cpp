#include "helpers/launch.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/argument_list.h"
#include "common/descriptors.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"

namespace helpers {

namespace {

// Returns PATH without the folder of these commands, so that what they start finds the system's own commands.
std::string search_path() {
    const char *const value = std::getenv("PATH");
    const std::string own = common::above_own_program(1);
    std::string kept;
    for (const std::string &folder : common::split_list(value ? value : "/usr/local/bin:/usr/bin:/bin"))
        if (!folder.empty() && folder != own)
            kept += (kept.empty() ? "" : ":") + folder;
    return kept;
}

std::vector<std::string> environment() {
    std::vector<std::string> variables = {"PATH=" + search_path()};
    for (char **variable = environ; *variable; variable++)
        if (std::strncmp(*variable, "PATH=", 5) != 0 && std::strncmp(*variable, "QUILLON_", 8) != 0)
            variables.emplace_back(*variable);
    return variables;
}

void forget_signals() {
    sigset_t none;
    sigemptyset(&none);
    for (int number = 1; number < SIGRTMIN; number++)
        signal(number, SIG_DFL);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Closes every file of the caller but REPORT and KEPT, and gives the process empty input and no output.
void forget_files(int report, int kept) {
    const int nothing = open("/dev/null", O_RDWR);
    for (int standard = 0; standard <= 2; standard++)
        dup2(nothing, standard);
    common::close_others({report, kept});
}

// Writes a number for start_detached: an errno, or the id of the program's process as a negative number.
void tell(int report, int number) {
    while (write(report, &number, sizeof number) < 0 && errno == EINTR) {
    }
}

// Reads the next such number; 0 when there is none.
int hear(int report) {
    int number = 0;
    ssize_t count;
    while ((count = read(report, &number, sizeof number)) < 0 && errno == EINTR) {
    }
    return count == sizeof number ? number : 0;
}

[[noreturn]] void become_program(const Launch &launch, const std::string &program, int report) {
    std::vector<std::string> words = launch.words, variables = environment();
    words[0] = program;
    if (!launch.folder.empty() && chdir(launch.folder.c_str()) != 0)
        tell(report, errno);
    else {
        execve(program.c_str(), common::argument_list(words).data(), common::argument_list(variables).data());
        tell(report, errno);
    }
    _exit(127);
}

[[noreturn]] void middle_process(const Launch &launch, const std::string &program, int report) {
    setsid();
    forget_signals();
    forget_files(report, -1);
    const pid_t pid = fork();
    if (pid == 0)
        become_program(launch, program, report);
    tell(report, pid < 0 ? errno : -pid);
    close(report);
    if (pid > 0 && launch.after)
        launch.after(pid);
    _exit(0);
}

} // namespace

std::string program_path(const std::string &name) {
    if (name.find('/') != std::string::npos)
        return common::can_run(name) ? name : "";
    return name.empty() ? "" : common::find_program(name, search_path(), "/");
}

int start_detached(const Launch &launch, pid_t *process) {
    const std::string program = program_path(launch.words[0]);
    if (program.empty())
        return access(launch.words[0].c_str(), F_OK) == 0 ? EACCES : ENOENT;
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0)
        return errno;
    // The pipe must not be one of the standard three, which the child replaces.
    for (int &end : report)
        if (end < 3)
            end = fcntl(end, F_DUPFD_CLOEXEC, 3);
    const pid_t pid = fork();
    if (pid == 0)
        middle_process(launch, program, report[1]);
    const int failed = pid < 0 ? errno : 0;
    close(report[1]);
    int error = failed;
    while (const int number = hear(report[0]))
        if (number > 0)
            error = number;
        else if (process)
            *process = -number;
    close(report[0]);
    if (pid > 0 && !launch.after)
        waitpid(pid, nullptr, 0);
    return error;
}

int work_detached(const std::function<void()> &work, int kept) {
    const pid_t pid = fork();
    if (pid < 0)
        return errno;
    if (pid > 0) {
        waitpid(pid, nullptr, 0);
        return 0;
    }
    setsid();
    forget_signals();
    forget_files(-1, kept);
    if (fork() == 0)
        work();
    _exit(0);
}

} // namespace helpers
