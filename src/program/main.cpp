// The shell's program: chooses the front, connects to the session bus, and starts the shell.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "common/places.h"
#include "common/run_notes.h"
#include "common/spawn.h"
#include "core/startup.h"
#include "headless/headless.h"
#include "linux/events/event_sources.h"
#include "linux/events/private_shell.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "toolbox/files.h"
#include "toolbox/received_events.h"
#include "toolbox/text_engine.h"
#include "toolbox/windows.h"

using namespace quillon;

struct Arguments {
    bool headless = false, is_private = false;
    const char *script = nullptr;
    int first_file = 0;
};

static constexpr int exit_usage = 64, exit_no_display = 69, exit_second_shell = 75, exit_configuration = 78;
// How much of the console's text a shell keeps that has neither a window nor a script.
static constexpr std::size_t service_text = 16 * 1024 * 1024;
// What the shell keeps the path of the binaries folder in.
static constexpr std::size_t longest_folder = 255;

static bool parse(int argc, char **argv, Arguments *arguments) {
    int i = 1;
    for (; i < argc && std::strncmp(argv[i], "--", 2) == 0; i++) {
        if (std::strcmp(argv[i], "--headless") == 0)
            arguments->headless = true;
        else if (std::strcmp(argv[i], "--service") == 0)
            continue; // a headless shell without script and files serves until it is told to quit
        else if (std::strcmp(argv[i], "--private") == 0)
            arguments->is_private = arguments->headless = true;
        else if (std::strcmp(argv[i], "--script") == 0 && i + 1 < argc)
            arguments->script = argv[++i];
        else if (std::strcmp(argv[i], "--system") == 0 && i + 1 < argc && std::strcmp(argv[i + 1], "9") == 0)
            SetSystemVersion((i++, 0x0900));
        else
            return false;
    }
    arguments->first_file = i;
    return true;
}

static const Front *desktop_front(int argc, char **argv) {
    void *const library =
        dlopen((common::above_own_program(1) + "/desktop-front.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::fprintf(stderr, "quillon: %s\n", dlerror());
        return nullptr;
    }
    using Maker = const Front *(*)(int, char **);
    const auto make = reinterpret_cast<Maker>(dlsym(library, "quillon_desktop_front"));
    return make ? make(argc, argv) : nullptr;
}

// Queues a document event for each file on the command line; one that is missing is reported.
static void open_files(int argc, char **argv, int first) {
    for (int i = first; i < argc; i++) {
        FSSpec spec;
        // A relative path is taken from the caller's folder.
        const std::string path = std::filesystem::absolute(argv[i]).lexically_normal();
        if (FSPathMakeSpec(path.c_str(), &spec) != noErr) {
            std::fprintf(stderr, "quillon: there is no file %s\n", argv[i]);
            continue;
        }
        AppleEvent event;
        MakeReceivedEvent(four("aevt"), four("odoc"), &event);
        AEPutParamPtr(&event, keyDirectObject, typeFSS, &spec, sizeof spec);
        QueueReceivedEvent(&event, [](OSErr, const AppleEvent *) {});
    }
}

// Ends the program with the status of the last run, as a headless start with files does.
static void exit_with_run_status() {
    std::fflush(stdout);
    std::fflush(stderr);
    // Without preferences nothing ran.
    _exit(havePrefs ? exit_status : 0);
}

static bool start_headless(const Arguments &arguments, bool has_files) {
    front = &headless_front;
    if (arguments.script && !OpenScript(arguments.script)) {
        std::fprintf(stderr, "quillon: I can't open the script %s\n", arguments.script);
        return false;
    }
    if (!arguments.script) {
        nobody_answers = 1;
        job_views = 0;
        LimitText(service_text);
    }
    if (has_files && !arguments.script) {
        OpenScript("/dev/null");
        exit_status = 1;
        std::atexit(exit_with_run_status);
    }
    return true;
}

int main(int argc, char **argv) {
    Arguments arguments;
    if (!parse(argc, argv, &arguments)) {
        std::fputs("usage: quillon-shell [--headless [--script FILE|-] [--service] [--system 9]] [FILE...]\n",
                   stderr);
        return exit_usage;
    }
    if (const std::string folder = common::above_own_program(4); folder.size() > longest_folder) {
        std::fprintf(stderr, "quillon: the path of the programs' folder is too long (%zu bytes of %zu): %s\n",
                     folder.size(), longest_folder, folder.c_str());
        return exit_configuration;
    }
    HostLoop();
    if (arguments.is_private && !BecomePrivate(common::channel_descriptor)) {
        std::fprintf(stderr, "quillon: I can't use the temporary folder %s\n",
                     common::temporary_folder().c_str());
        return exit_configuration;
    }
    if (arguments.headless) {
        if (!start_headless(arguments, arguments.first_file < argc))
            return exit_usage;
    } else if (!(front = desktop_front(argc, argv))) {
        std::fputs("quillon: no display can be opened\n", stderr);
        return exit_no_display;
    }
    if (!ConnectHostBus()) {
        if (HostBus()) {
            std::fputs("quillon: another Quillon runs on this session bus\n", stderr);
            return exit_second_shell;
        }
        std::fputs("quillon: no session bus is reachable; tools cannot be run\n", stderr);
    }
    if (arguments.is_private)
        TellClient();
    common::end_left_runs();
    open_files(argc, argv, arguments.first_file);
    shell_main();
}
