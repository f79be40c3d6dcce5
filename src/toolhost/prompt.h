// Whether a program waits for something to be typed at its terminal.
#ifndef QUILLON_TOOLHOST_PROMPT_H
#define QUILLON_TOOLHOST_PROMPT_H

#include <string>
#include <sys/types.h>

namespace toolhost {

// Looks at the processes of a program, again and again, for one that reads from the program's terminal.
class PromptWatch {
  public:
    // Watches PROGRAM, the process that leads the session on the terminal with the path TERMINAL.
    void start(pid_t program, const std::string &terminal);
    // True when the program or one of its descendants sleeps in a read of the terminal. A kernel may keep
    // secret what a process sleeps in. Then the answer is a guess: true when LINE_OPEN (the last line printed
    // has no end), all of them are asleep and none has used processor time since the last call.
    bool waits(bool line_open);

  private:
    bool tree_reads(pid_t process, int depth);
    bool reads_terminal(pid_t process);
    void add_time(pid_t process);

    pid_t program_ = 0; // 0 before start
    std::string terminal_;
    bool kernel_says_ = true; // what a process sleeps in
    bool all_asleep_ = true;
    unsigned long long time_ = 0; // the processor time of all, in ticks
    unsigned long long last_time_ = 0;
};

} // namespace toolhost

#endif
