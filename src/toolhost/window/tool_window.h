// The contract between the host and its window, which is a plug-in: plain procedures and data. The host fills
// it in, and it stays valid until the window has gone.
#ifndef QUILLON_TOOLHOST_WINDOW_TOOL_WINDOW_H
#define QUILLON_TOOLHOST_WINDOW_TOOL_WINDOW_H

#include <cstddef>
#include <cstdint>

extern "C" {

// How the run stands. The rest is 0 when it does not run any more.
struct ToolWindowState {
    int running;                // 0 when the run has ended or the host quits
    int waiting;                // 1 while the program waits for an answer
    int cancelling;             // 1 once the run was cancelled
    int pages;                  // that an engine has made
    std::uint64_t milliseconds; // since the start
    const char *step;           // what the run of now is for, empty for the first; valid until the next call
};

struct ToolWindowHost {
    void *context;        // what every procedure below is called with
    const char *tool;     // the tool's name
    const char *command;  // the command line
    int answers_are_tex;  // 1 when the program takes TeX's answers (e, h, s, ...)
    int event_descriptor; // readable when the host has something to do
    // Lets the host do what it has to do, without waiting.
    void (*step)(void *context);
    // Fills STATE.
    void (*state)(void *context, ToolWindowState *state);
    // Copies at most ROOM bytes of what was printed and not taken yet to TEXT. Returns how many.
    std::size_t (*take_text)(void *context, char *text, std::size_t room);
    // Types SIZE bytes at the program's terminal, or cancels the run. Without a run nothing happens.
    void (*answer)(void *context, const char *bytes, std::size_t size);
    void (*cancel)(void *context);
};

// Shows the window until the run has ended. Returns 1, or 0 at once when the desktop shows no windows.
using ToolWindowProc = int (*)(const ToolWindowHost *host);
}

// The name of that procedure in the plug-in.
constexpr const char *tool_window_symbol = "quillon_tool_window";

#endif
