// Start-up, and the single fatal-error exit.
#ifndef QUILLON_CORE_STARTUP_H
#define QUILLON_CORE_STARTUP_H

#include <csetjmp>

namespace quillon {

// Where DoJump comes back to while a DVI file is read (in_dvii is 1).
extern std::jmp_buf state;

// Never returns: start-up, then the event loop for ever.
[[noreturn]] void shell_main();
// Start-up; returns 1. Runs before any event is handled.
int initial();
// The fatal-error exit. -50 means out of memory; after any other code only quitting is possible.
[[noreturn]] void DoJump(int code);

} // namespace quillon

#endif
