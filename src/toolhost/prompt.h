// Whether a program waits for something to be typed at its terminal.
#ifndef QUILLON_TOOLHOST_PROMPT_H
#define QUILLON_TOOLHOST_PROMPT_H

#include <string>
#include <sys/types.h>

namespace toolhost {

class PromptWatch {
  public:
    // PROGRAM leads the session on TERMINAL (its path).
    void start(pid_t program, const std::string &terminal);
    // True when a process of the program's tree sleeps in a read of the terminal. Where the kernel does not
    // say what a process sleeps in, the answer is a guess: LINE_OPEN, asleep, and no processor time used
    // since the last call.
    bool waits(bool line_open);

  private:
    bool tree_reads(pid_t process, int depth);
    bool reads_terminal(pid_t process);
    void add_time(pid_t process);

    pid_t program_ = 0;
    std::string terminal_;
    bool kernel_says_ = true;
    bool all_asleep_ = true;
    unsigned long long time_ = 0;
    unsigned long long last_time_ = 0;
};

} // namespace toolhost

#endif
