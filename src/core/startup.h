// The shell starts here, and comes here after a fatal error.
#ifndef QUILLON_CORE_STARTUP_H
#define QUILLON_CORE_STARTUP_H

#include <csetjmp>

namespace quillon {

// DoJump continues here while a DVI file is read (in_dvii is 1).
extern std::jmp_buf state;

// Starts the shell and then handles events until the program ends.
[[noreturn]] void shell_main();
// Starts the shell: reads the settings, makes the console and the menus, finds the tools and the folders.
// Returns 1. Runs once, before any event is handled; ends the program when there is no preferences file.
int initial();
// Takes over what another program has changed in the settings: flags, applications, search paths, formats and
// file databases. Call it while no job runs. Does nothing after a start without preferences.
void reread_settings();
// The single way out after a fatal error; CODE becomes exit_status. -50 means that memory ran out and ends
// the program. While a DVI file is read control goes back to `state`. Otherwise the console reports a serious
// error, all commands but quitting are locked, and events are handled until the person quits.
[[noreturn]] void DoJump(int code);

} // namespace quillon

#endif
