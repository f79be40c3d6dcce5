// The `quillon` command: starts or brings forward the shell, and drives it from a terminal.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "client/clean_command.h"
#include "client/clean_snapshots.h"
#include "client/exec_command.h"
#include "client/exec_words.h"
#include "client/shell.h"
#include "client/shell_calls.h"
#include "client/start.h"
#include "client/watch_command.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/session_bus.h"

namespace {

using Words = std::vector<std::string>;

constexpr int status_usage = 64;

constexpr const char *usage =
    "quillon [FILE...]                    start or bring forward the shell; open the files\n"
    "quillon exec [OPTION...] WORD...     run a command in the shell; its exit status is the run's\n"
    "                                     -C DIR  in that folder\n"
    "                                     -f      show the tool live and pass answers to it\n"
    "                                     --view  open the viewer after a clean run\n"
    "                                     --edit  open the editor at the first error\n"
    "quillon find NAME                    print the path of a TeX input file and open it\n"
    "quillon locate NAME                  print the path of a TeX input file\n"
    "quillon formats                      list the formats\n"
    "quillon problems                     list the problems of the last run, FILE:LINE: KIND: TEXT\n"
    "quillon clean [--yes] [FILE]         list what the runs of a document wrote beside its output, and "
    "remove it\n"
    "quillon clean --snapshots            forget every preamble\n"
    "quillon watch [--view] FILE          typeset a document now and whenever a file of it is saved\n"
    "quillon edit +LINE FILE              open the chosen editor at that line\n"
    "quillon quit                         quit the shell\n"
    "quillon --headless [--script FILE]   a shell without a display; FILE may be - for the standard input\n"
    "quillon --version                    print the version\n"
    "quillon --help                       print this text\n"
    "Without a running shell, exec, find, locate and formats use one of their own, with a copy of the\n"
    "preferences. Statuses: 64 words not understood, 69 no shell, 75 too many wait, 127 no such tool,\n"
    "130 cancelled; for exec else the run's. See quillon(1).\n";

int say_usage(const std::string &problem) {
    std::fprintf(stderr, "quillon: %s\nTry \"quillon --help\".\n", problem.c_str());
    return status_usage;
}

// Becomes the shell, which gets all the words. It starts in this folder, so relative paths stay valid.
int headless(const Words &words) {
    client::ensure_preferences(false);
    sd_bus *const bus = common::open_session_bus();
    const bool own_bus = !bus || client::shell_runs(bus);
    sd_bus_flush_close_unref(bus);
    return client::become(client::shell_program(), words, own_bus);
}

int open_or_start(const Words &files) {
    const bool display = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
    // Who leaves the set-up without saving does not want to begin yet.
    if (!client::ensure_preferences(display) && display) {
        std::fprintf(stderr, "quillon: nothing is set up; start quillon again, or run setpaths\n");
        return 1;
    }
    sd_bus *const bus = common::open_session_bus();
    // A person at a display gets a window, whatever shell without one serves others.
    if (bus && client::shell_runs(bus) && (!display || client::shell_has_window(bus))) {
        const int status = client::open_files(bus, files);
        sd_bus_flush_close_unref(bus);
        return status;
    }
    Words words;
    if (!display)
        words.push_back("--headless");
    for (const std::string &file : files)
        words.push_back(common::from_working_folder(file));
    const bool own_bus = !bus;
    sd_bus_flush_close_unref(bus);
    return client::become(client::shell_program(), words, own_bus);
}

// What the session bus starts for a call while no shell runs: one with a window, or none that nobody would
// see.
int activated() {
    if (std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY"))
        return open_or_start({});
    std::fputs("quillon: without a display no call starts a shell\n", stderr);
    return client::status_unavailable;
}

int exec(const Words &words) {
    client::ExecRequest request;
    request.folder = common::from_working_folder(".");
    const std::string problem = client::read_exec_words(words, request);
    if (!problem.empty())
        return say_usage(problem);
    request.folder = common::from_working_folder(request.folder);
    while (request.folder.size() > 1 && (request.folder.ends_with('/') || request.folder.ends_with("/.")))
        request.folder.pop_back();
    client::ensure_preferences(false);
    sd_bus *const bus = common::open_session_bus();
    if (!bus)
        return client::become(common::own_program(), words, true);
    const int status = client::exec_command(bus, request);
    sd_bus_flush_close_unref(bus);
    return status;
}

// Becomes the command that opens the editor, for which no shell is needed.
int edit(const Words &words) {
    if (words.size() != 3)
        return say_usage("edit takes +LINE and a file");
    return client::become(client::contents_folder() + "/Helpers/edit",
                          {words[1], common::from_working_folder(words[2])}, false);
}

int ask_shell(const Words &words) {
    const std::string &verb = words[0];
    const bool named = verb == "find" || verb == "locate";
    if (words.size() != (named ? 2 : 1))
        return say_usage(verb + (named ? " takes one name" : " takes nothing more"));
    client::ensure_preferences(false);
    client::Shell shell;
    shell.bus = common::open_session_bus();
    if (!shell.bus)
        return client::become(common::own_program(), words, true);
    int status = client::status_unavailable;
    if (client::reach_shell(shell))
        status = verb == "find"     ? client::find(shell, words[1].c_str())
                 : verb == "locate" ? client::locate(shell, words[1].c_str())
                                    : client::list_formats(shell);
    client::leave_shell(shell);
    sd_bus_flush_close_unref(shell.bus);
    return status;
}

int problems(const Words &words) {
    if (words.size() != 1)
        return say_usage("problems takes nothing more");
    sd_bus *const bus = common::open_session_bus();
    const int status = bus && client::shell_runs(bus) ? client::list_problems({bus, common::shell_name})
                                                      : client::no_shell();
    sd_bus_flush_close_unref(bus);
    return status;
}

int watch(const Words &words) {
    const bool view = words.size() > 1 && words[1] == "--view";
    const std::size_t name = view ? 2 : 1;
    if (words.size() != name + 1 || words[name].starts_with('-'))
        return say_usage("watch takes --view and one file");
    const std::string file = common::from_working_folder(words[name]);
    if (!common::is_regular_file(file)) {
        std::fprintf(stderr, "quillon: there is no file %s\n", words[name].c_str());
        return 1;
    }
    client::ensure_preferences(false);
    sd_bus *const bus = common::open_session_bus();
    if (!bus)
        return client::become(common::own_program(), words, true);
    const int status = client::watch(bus, file, view);
    sd_bus_flush_close_unref(bus);
    return status;
}

// Removes what the runs of a document wrote; without a name, of the current one.
int clean(const Words &words) {
    if (words.size() == 2 && words[1] == "--snapshots")
        return client::clean_snapshots();
    const bool yes = words.size() > 1 && words[1] == "--yes";
    const std::size_t name = yes ? 2 : 1;
    if (words.size() > name + 1 || (words.size() > name && words[name].starts_with('-')))
        return say_usage("clean takes --yes and one file, or --snapshots");
    const std::string file = words.size() > name ? common::from_working_folder(words[name])
                                                 : common::expand_setting_path(common::setting("TEXFILE"), "",
                                                                               common::space_byte());
    if (file.empty())
        return say_usage("there is no current document; name one");
    return client::clean(file, yes);
}

int quit(const Words &words) {
    if (words.size() != 1)
        return say_usage("quit takes nothing more");
    sd_bus *const bus = common::open_session_bus();
    const int status = bus && client::shell_runs(bus) ? client::quit_shell(bus) : client::no_shell();
    sd_bus_flush_close_unref(bus);
    return status;
}

} // namespace

int main(int count, char **values) {
    Words words(values + 1, values + count);
    const std::string first = words.empty() ? "" : words[0];
    if (first == "--version") {
        std::puts("quillon " QUILLON_VERSION);
        return 0;
    }
    if (first == "--help" || first == "-h") {
        std::fputs(usage, stdout);
        return 0;
    }
    if (first == "--headless")
        return headless(words);
    if (first == "--activated" && words.size() == 1)
        return activated();
    if (first == "exec")
        return exec(words);
    if (first == "find" || first == "locate" || first == "formats")
        return ask_shell(words);
    if (first == "problems")
        return problems(words);
    if (first == "watch")
        return watch(words);
    if (first == "clean")
        return clean(words);
    if (first == "quit")
        return quit(words);
    if (first == "edit")
        return edit(words);
    if (first == "--")
        words.erase(words.begin());
    else if (first.size() > 1 && first[0] == '-')
        return say_usage("there is no option " + first);
    return open_or_start(words);
}
