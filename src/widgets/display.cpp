#include "widgets/display.h"

#include <QDir>
#include <QLibraryInfo>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace widgets {

namespace {

bool is_set(const char *name) {
    const char *const value = std::getenv(name);
    return value && *value;
}

bool has_plugin(const QString &pattern) {
    const QDir folder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !folder.entryList({pattern}, QDir::Files).isEmpty();
}

bool wayland_opens() {
    if (!is_set("WAYLAND_DISPLAY") || !has_plugin(QStringLiteral("libqwayland*")))
        return false;
    std::string path = std::getenv("WAYLAND_DISPLAY");
    if (path[0] != '/' && is_set("XDG_RUNTIME_DIR"))
        path = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/" + path;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return false;
    const bool opens = connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    close(descriptor);
    return opens;
}

// The library is loaded by name, so that programs do not depend on it; the X11 plug-in loads it too.
bool x11_opens() {
    if (!is_set("DISPLAY"))
        return false;
    void *const library = dlopen("libxcb.so.1", RTLD_NOW);
    if (!library)
        return false;
    const auto connect_to = reinterpret_cast<void *(*)(const char *, int *)>(dlsym(library, "xcb_connect"));
    const auto has_error = reinterpret_cast<int (*)(void *)>(dlsym(library, "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<void (*)(void *)>(dlsym(library, "xcb_disconnect"));
    if (!connect_to || !has_error || !disconnect)
        return false;
    void *const connection = connect_to(nullptr, nullptr);
    const bool opens = has_error(connection) == 0;
    disconnect(connection);
    return opens;
}

} // namespace

bool display_opens() {
    if (is_set("QT_QPA_PLATFORM"))
        return std::strncmp(std::getenv("QT_QPA_PLATFORM"), "xcb", 3) != 0 || x11_opens();
    return wayland_opens() || x11_opens();
}

} // namespace widgets
