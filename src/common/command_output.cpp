#include "common/command_output.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/spawn.h"

namespace common {

std::string output_of(const std::string &program, std::vector<std::string> words,
                      std::vector<std::string> environment) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {};
    words.insert(words.begin(), program);
    pid_t process = -1;
    const int error =
        spawn({program, std::move(words), std::move(environment), Place::here, ends[1], nowhere}, &process);
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
