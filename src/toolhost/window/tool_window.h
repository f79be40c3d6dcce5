// The contract between the host and its window, which is a plug-in: plain procedures and data.
#ifndef QUILLON_TOOLHOST_WINDOW_TOOL_WINDOW_H
#define QUILLON_TOOLHOST_WINDOW_TOOL_WINDOW_H

#include <cstddef>
#include <cstdint>

extern "C" {

struct ToolWindowState {
    int running; // 0: the window goes
    int waiting;
    int cancelling;
    int pages;
    std::uint64_t milliseconds;
};

struct ToolWindowHost {
    void *context;
    const char *tool;
    const char *command;
    int answers_are_tex;  // the buttons for TeX's answers are of use
    int event_descriptor; // readable when the host has something to do
    // Lets the host do what it has to do, without waiting.
    void (*step)(void *context);
    void (*state)(void *context, ToolWindowState *state);
    // Copies at most ROOM bytes of what was printed since the last call.
    std::size_t (*take_text)(void *context, char *text, std::size_t room);
    void (*answer)(void *context, const char *bytes, std::size_t size);
    void (*cancel)(void *context);
};

// Shows the window until the run has ended: 1, or 0 when the desktop shows no windows.
using ToolWindowProc = int (*)(const ToolWindowHost *host);
}

constexpr const char *tool_window_symbol = "quillon_tool_window";

#endif
