// Activation tokens of a Wayland compositor: a plug-in that the front with windows loads on such a display
// alone, so that no other start needs the library of that protocol.
#ifndef QUILLON_DESKTOP_WAYLAND_TOKENS_H
#define QUILLON_DESKTOP_WAYLAND_TOKENS_H

#include <cstddef>

class QWindow;

namespace quillon::desktop {

// Asks the compositor for a token with which another program may bring a window to the front. WINDOW is the
// window of this process that the person used last. APP_ID names the program that gets the token; it is null
// or empty where that is not known. Waits at most MILLISECONDS. Returns 1 with the token, ended by a zero
// byte, in TOKEN, which has room for ROOM bytes; 0, with an empty text there, when the compositor has no such
// protocol, does not answer in time, or has gone, and when the token does not fit.
using TokenProc = int (*)(QWindow *window, const char *app_id, int milliseconds, char *token,
                          std::size_t room);
// The name of that procedure in the plug-in.
inline constexpr const char *token_symbol = "quillon_wayland_token";

} // namespace quillon::desktop

#endif
