// A private shell serves one client: it has a copy of the preferences for itself, no well-known name on the
// bus, and ends with the client that started it.
#ifndef QUILLON_LINUX_EVENTS_PRIVATE_SHELL_H
#define QUILLON_LINUX_EVENTS_PRIVATE_SHELL_H

namespace quillon {

// Makes this shell the private one of the client at the other end of CHANNEL, a socket. The shell leaves when
// that end is closed. Copies the preferences, which must not have been read yet. Returns 1, or 0 when there
// is no folder for the copy.
int BecomePrivate(int channel);
// 1 in a private shell, else 0.
int IsPrivate();
// Tells the client the shell's unique name on the bus, an empty line when there is no bus.
void TellClient();

} // namespace quillon

#endif
