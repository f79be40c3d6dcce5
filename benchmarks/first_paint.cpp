// Starts a program and prints the milliseconds until the first paint in a window that it maps, then ends it.
// To be run on a display without a window manager: only the program draws there.
//
//   first_paint COMMAND [ARGUMENT...]      prints "MILLISECONDS KILOBYTES": the time, and the resident size
//   then
#include <X11/Xlib.h>
#include <X11/extensions/Xdamage.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

static constexpr int limit_milliseconds = 20000;

static double now() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

static long resident_kilobytes(pid_t pid) {
    std::FILE *const file = std::fopen(("/proc/" + std::to_string(pid) + "/status").c_str(), "r");
    char line[256];
    long kilobytes = 0;
    while (file && std::fgets(line, sizeof line, file))
        if (std::sscanf(line, "VmRSS: %ld", &kilobytes) == 1)
            break;
    if (file)
        std::fclose(file);
    return kilobytes;
}

// The time of the first damage to a window of some size that was mapped after START; a negative number at the
// limit.
static double wait_for_paint(Display *display, int damage_base, double start) {
    while (now() - start < limit_milliseconds) {
        if (!XPending(display)) {
            pollfd source = {ConnectionNumber(display), POLLIN, 0};
            poll(&source, 1, 1000);
            continue;
        }
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == CreateNotify && event.xcreatewindow.width > 100)
            XDamageCreate(display, event.xcreatewindow.window, XDamageReportNonEmpty);
        XWindowAttributes attributes;
        if (event.type == damage_base + XDamageNotify) {
            const auto *const damage = reinterpret_cast<const XDamageNotifyEvent *>(&event);
            if (XGetWindowAttributes(display, damage->drawable, &attributes) &&
                attributes.map_state == IsViewable && attributes.width > 100)
                return now() - start;
            XDamageSubtract(display, damage->damage, None, None);
        }
    }
    return -1;
}

int main(int argc, char **argv) {
    Display *const display = XOpenDisplay(nullptr);
    int damage_base = 0, damage_error = 0;
    if (argc < 2 || !display || !XDamageQueryExtension(display, &damage_base, &damage_error)) {
        std::fputs("first_paint: a command and a display with the damage extension are needed\n", stderr);
        return 2;
    }
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
    XSync(display, False);
    pid_t pid = 0;
    const double start = now();
    if (posix_spawn(&pid, argv[1], nullptr, nullptr, argv + 1, environ) != 0)
        return 2;
    const double painted = wait_for_paint(display, damage_base, start);
    usleep(300000); // what comes right after the first paint belongs to the size
    std::printf("%.2f %ld\n", painted, resident_kilobytes(pid));
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
    return painted < 0;
}
