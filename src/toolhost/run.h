// A run: the program on its terminal, its guard, its transcript, its prompts, its cancelling.
#ifndef QUILLON_TOOLHOST_RUN_H
#define QUILLON_TOOLHOST_RUN_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <systemd/sd-event.h>
#include <vector>

#include "common/bundle.h"
#include "toolhost/kept_output.h"
#include "toolhost/prompt.h"
#include "toolhost/results.h"
#include "toolhost/run_parser.h"
#include "toolhost/transcript.h"

namespace toolhost {

struct Outcome {
    std::int32_t exit_code = 0;
    std::string transcript; // empty when nothing was printed, or no file could be made
    std::string unkept;     // then the end of what was printed, with the reason
    bool edit = false;
    std::string message; // of the error that the editor is to show
    bool cancelled = false;
};

// What a run tells the host that owns it.
class RunOwner {
  public:
    virtual void run_printed(std::string_view bytes) = 0;
    // The program began (true) or ceased to wait for an answer.
    virtual void run_waits(bool waits) = 0;
    virtual void run_ended(const Outcome &outcome) = 0;

  protected:
    ~RunOwner() = default;
};

class Run {
  public:
    Run(sd_event *event, const common::Bundle &bundle, RunOwner &owner);
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    // Starts the program for the command line in FOLDER. When it cannot be started the run ends all the same,
    // with a transcript that says why.
    void start(std::string_view line, const std::string &folder);
    // Types BYTES at the program's terminal.
    void answer(std::string_view bytes);
    // The program's input is empty: it reads an end of file now.
    void end_input();
    // Interrupt, then terminate, then kill. AT_ONCE: kill.
    void cancel(bool at_once);

    // Nobody is left to report to: the transcript goes, the guard kills the rest.
    void abandon();

    bool waiting() const { return waiting_; }
    bool cancelled() const { return cancelled_; }
    bool ended() const { return ended_; }
    int pages() const { return parser_ ? parser_->pages() : 0; }
    std::uint64_t milliseconds() const;
    const std::string &command() const { return command_; }

  private:
    bool prepare(std::string_view line, const std::string &folder);
    bool open_terminal(int *slave);
    bool launch(const std::string &program, int slave);
    void choose_program();
    void fail(const std::string &reason);
    bool read_terminal();
    bool read_output();
    bool read_all(int descriptor, sd_event_source *&source);
    void await_echo();
    bool has_unread() const;
    void take_output(std::string_view bytes);
    void watch_prompt(std::uint64_t milliseconds);
    void look_for_prompt();
    void set_waiting(bool waiting);
    void stop_at_prompt();
    void type(std::string_view bytes);
    void guard_news();
    void guard_gone();
    void next_stage();
    void settle_kept_output();
    void close_down();
    void finish();
    ErrorPlace error_place(bool *edit) const;

    sd_event *event_;
    const common::Bundle &bundle_;
    RunOwner &owner_;
    EngineRun engine_;
    std::string command_;
    std::string program_name_;
    std::string delimiter_;
    Transcript transcript_;
    KeptOutput kept_;
    std::unique_ptr<RunParser> parser_;
    PromptWatch prompt_;
    sd_event_source *terminal_source_ = nullptr;
    sd_event_source *output_source_ = nullptr;
    sd_event_source *channel_source_ = nullptr;
    sd_event_source *prompt_timer_ = nullptr;
    sd_event_source *cancel_timer_ = nullptr;
    std::uint64_t begun_ = 0;
    std::uint64_t prompt_pause_ = 0;
    std::string unsent_; // typed, not yet taken by the terminal
    std::string terminal_path_;
    int terminal_ = -1;
    int output_ = -1;          // what the program prints, where it does not print on the terminal
    std::size_t echo_due_ = 0; // bytes typed that the terminal will repeat
    int channel_ = -1;
    int record_ = -1;
    pid_t guard_ = 0;
    int status_ = 0;
    int stage_ = 0;
    bool is_engine_ = false;
    bool printed_ = false;
    bool open_line_ = false;
    bool answered_ = false;
    bool may_wait_ = false; // at the last look
    bool waiting_ = false;
    bool cancelled_ = false;
    bool ended_ = false;
    bool told_to_stop_ = false;
};

} // namespace toolhost

#endif
