#include "desktop/activation.h"

#include <QGuiApplication>
#include <QWindow>
#include <dlfcn.h>
#include <string>

#include "common/places.h"
#include "desktop/main_window.h"
#include "desktop/wayland/tokens.h"

namespace quillon::desktop {

namespace {

// How long a start waits for the compositor, in milliseconds.
constexpr int patience = 100;
constexpr std::size_t longest_token = 1024;

TokenProc load() {
    const std::string plug_in = common::above_own_program(1) + "/wayland-tokens.so";
    void *const library = dlopen(plug_in.c_str(), RTLD_NOW | RTLD_LOCAL);
    return library ? reinterpret_cast<TokenProc>(dlsym(library, token_symbol)) : nullptr;
}

// The window that the person used last: that of the keyboard, else the main window.
QWindow *used_window() {
    QWindow *const window = QGuiApplication::focusWindow();
    if (window && window->isVisible())
        return window;
    return main_window() ? main_window()->windowHandle() : nullptr;
}

} // namespace

int activation_token(const char *app_id, BoundedBuffer &token) {
    token.clear();
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return 0;
    static const TokenProc ask = load();
    char given[longest_token];
    return ask && ask(used_window(), app_id, patience, given, sizeof given) && token.copy(given);
}

} // namespace quillon::desktop
