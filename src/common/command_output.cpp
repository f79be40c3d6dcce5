#include "common/command_output.h"

#include <algorithm>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/argument_list.h"

namespace common {

std::string output_of(const std::string &program, std::vector<std::string> words,
                      std::vector<std::string> environment) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    words.insert(words.begin(), program);
    pid_t process = -1;
    const int error = posix_spawn(&process, program.c_str(), &actions, nullptr, argument_list(words).data(),
                                  environment.empty() ? environ : argument_list(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string text;
    char block[4096];
    ssize_t count;
    while (error == 0 && (count = read(ends[0], block, sizeof block)) > 0)
        text.append(block, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    if (error != 0 || waitpid(process, &status, 0) < 0 || !WIFEXITED(status))
        return {};
    text.resize(std::min(text.find('\n'), text.size()));
    return text;
}

} // namespace common
