#include "background/snapshot_engine.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/clock.h"
#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/spawn.h"
#include "toolhost/words.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::size_t largest_text = std::size_t{32} << 20;
constexpr rlim_t longest_work = 25; // seconds of work of one engine, also when nobody waits for it
constexpr unsigned longest_piece =
    60; // seconds until a run is given up, with those that a busy machine takes
constexpr rlim_t largest_output = 1 << 30; // bytes
constexpr int patience = 100;              // milliseconds between two looks whether the work goes on

// Dates at which a preamble that depends on the date leaves another state. Every part of them differs, and no
// number has more digits in one than in the other: digits take memory, so that everything else would lie
// elsewhere. 2021-11-16 13:45:21 and 2034-12-28 15:56:43.
constexpr const char *first_date = "1637070321", *second_date = "2050934203";
constexpr const char *date_of_proof = "1683634271"; // 2023-05-09 12:11:11

int open_new(const std::string &path) {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

// Waits for PROCESS, and kills it when the work does not go on or the time is over.
bool await(pid_t process, const Workshop &shop, int *status) {
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    bool goes_on = handle >= 0;
    const std::uint64_t end = common::now_microseconds() + (longest_piece - 5) * 1'000'000ULL;
    for (pollfd source = {handle, POLLIN, 0}; goes_on && poll(&source, 1, patience) <= 0;)
        goes_on = shop.goes_on() && common::now_microseconds() < end;
    if (handle >= 0)
        close(handle);
    if (!goes_on)
        kill(-process, SIGKILL);
    return waitpid(process, status, 0) == process && goes_on;
}

// The environment of a run in the scratch folder: it makes no fonts, starts no other program, and writes
// nowhere else.
toolhost::Variables scratch_environment(const Workshop &shop, const char *date) {
    toolhost::Variables environment = shop.environment;
    environment["SOURCE_DATE_EPOCH"] = date;
    environment["FORCE_SOURCE_DATE"] = "1";
    environment["TZ"] = "UTC";
    environment["MKTEXPK"] = environment["MKTEXTFM"] = environment["MKTEXTEX"] = environment["MKTEXMF"] = "0";
    environment["shell_escape_commands"] = "none";
    environment["openout_any"] = "p";
    environment.erase("TEXEDIT");
    environment.erase("KPATHSEA_DEBUG");
    if (!shop.format_copy.empty())
        toolhost::offer_copy({"", shop.format_copy}, environment);
    return environment;
}

EngineRun run(const Workshop &shop, std::vector<std::string> words, const toolhost::Variables &environment) {
    EngineRun result;
    result.output = shop.scratch + "/out";
    std::error_code error;
    files::remove_all(result.output, error);
    files::create_directories(result.output, error);
    for (const std::string &folder : shop.subfolders)
        files::create_directories(result.output + "/" + folder, error);
    common::Spawn spawn;
    spawn.program = shop.call.search.program;
    spawn.words = std::move(words);
    for (const auto &[name, value] : environment)
        spawn.environment.push_back(name + "=" + value);
    spawn.place = common::Place::own_group;
    spawn.output = open_new(shop.scratch + "/said");
    spawn.error = open_new(shop.scratch + "/errors");
    pid_t process = 0;
    int status = 0;
    if (!error && shop.goes_on() && spawn.output >= 0 && spawn.error >= 0 &&
        chdir(shop.call.folder.c_str()) == 0 && common::spawn(spawn, &process) == 0) {
        const rlimit work = {longest_work, longest_work + 5}, bytes = {largest_output, largest_output};
        prlimit(process, RLIMIT_CPU, &work, nullptr);
        prlimit(process, RLIMIT_FSIZE, &bytes, nullptr);
        // This process too is ended when a piece of its work takes too long.
        alarm(longest_piece);
        const bool waited = await(process, shop, &status);
        alarm(longest_piece); // what follows is a piece of its own
        result.ended = waited && WIFEXITED(status);
        result.too_long = waited && WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU;
        result.status = WEXITSTATUS(status);
    }
    for (const int file : {spawn.output, spawn.error})
        if (file >= 0)
            close(file);
    if (chdir("/") != 0)
        result.ended = false;
    const std::string stem = result.output + "/" + shop.call.job;
    result.said = common::read_file(shop.scratch + "/said", largest_text);
    result.errors = common::read_file(shop.scratch + "/errors", largest_text);
    result.log = common::read_file(stem + ".log", largest_text);
    result.list = common::read_file(stem + ".fls", largest_text);
    return result;
}

} // namespace

EngineRun typeset(const Workshop &shop, const std::string &format, const std::string &name) {
    toolhost::Variables environment = scratch_environment(shop, date_of_proof);
    if (!format.empty())
        toolhost::offer_copy({"", format}, environment);
    std::vector<std::string> words = shop.call.words;
    words.insert(words.begin() + 1, "-output-directory=" + shop.scratch + "/out");
    if (!toolhost::has_option(words, "recorder"))
        words.insert(words.begin() + 1, "-recorder");
    EngineRun result = run(shop, words, environment);
    // The three runs of a proof write into a folder of one name, since the name is part of some results.
    const std::string kept = shop.scratch + "/" + name;
    std::error_code error;
    files::remove_all(kept, error);
    files::rename(result.output, kept, error);
    result.output = kept;
    result.ended = result.ended && !error;
    return result;
}

EngineRun dump(const Workshop &shop, const std::string &text, std::size_t lines, const std::string &opens,
               bool second) {
    const std::string file = shop.scratch + "/lines.tex";
    if (!common::replace_file(file, text))
        return {};
    toolhost::Variables environment = scratch_environment(shop, second ? second_date : first_date);
    environment["KPATHSEA_DEBUG"] = "32"; // what is searched for, and where
    std::vector<std::string> words = {shop.call.words[0],
                                      "-ini",
                                      "-progname=" + shop.call.search.progname,
                                      "-recorder",
                                      "-halt-on-error",
                                      "-interaction=errorstopmode",
                                      "-jobname=" + shop.call.job,
                                      "-output-directory=" + shop.scratch + "/out"};
    if (toolhost::has_option(shop.call.words, "no-shell-escape"))
        words.emplace_back("-no-shell-escape");
    words.push_back("&" + shop.call.search.name);
    words.push_back("\\def\\quillonlines{" + file + "}\\def\\quillonlast{" + std::to_string(lines) +
                    "}\\def\\quillonopen{" + opens + "}\\def\\quillontags{" +
                    std::to_string(shop.passed_files) + "}\\input " + shop.driver + " ");
    return run(shop, words, environment);
}

} // namespace background
