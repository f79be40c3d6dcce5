// Writes a million lines into the console with its window shown, as a run's output comes: line by line.
// Prints "BYTES-A-SECOND BYTES-KEPT-A-BYTE".
#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "console/output.h"
#include "console/window.h"
#include "core/event_loop.h"
#include "front/front.h"

using namespace quillon;

static long resident_bytes() {
    long pages = 0, resident = 0;
    std::FILE *const file = std::fopen("/proc/self/statm", "r");
    if (file && std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
        resident = 0;
    if (file)
        std::fclose(file);
    return resident * sysconf(_SC_PAGESIZE);
}

int main(int argc, char **argv) {
    void *const library = dlopen(QUILLON_DESKTOP_FRONT, RTLD_NOW);
    using Maker = const Front *(*)(int, char **);
    const auto make = library ? reinterpret_cast<Maker>(dlsym(library, "quillon_desktop_front")) : nullptr;
    front = make ? make(argc, argv) : nullptr;
    if (!front || !SetUpTextWindow("Console", 1)) {
        std::fputs("console_speed: no window can be opened\n", stderr);
        return 2;
    }
    for (int i = 0; i < 30; i++)
        main_event(mask_waiting);
    static constexpr int lines = 1000000;
    char line[62];
    std::memset(line, 'x', sizeof line);
    line[60] = '\r';
    const long before = resident_bytes();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < lines; i++)
        WriteCharsToConsole(line, 61);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double bytes = 61.0 * lines;
    std::printf("%.0f %.3f\n", bytes / seconds, static_cast<double>(resident_bytes() - before) / bytes);
    return 0;
}
