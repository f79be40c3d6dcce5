// The tool host: one application on the bus that runs its bundle's program on command.
#ifndef QUILLON_TOOLHOST_HOST_H
#define QUILLON_TOOLHOST_HOST_H

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include "common/application_object.h"
#include "common/bundle.h"
#include "common/event_codec.h"
#include "common/followers.h"
#include "toolhost/passes.h"
#include "toolhost/run.h"

namespace toolhost {

class Host : public RunOwner {
  public:
    // BUNDLE must outlive the host.
    explicit Host(const common::Bundle &bundle);
    ~Host();
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    // Connects to the session bus and takes the application's bus name. Returns a negative errno on failure.
    int connect();
    // Serves events until the host is told to quit or the bus goes. Returns the exit status of the process.
    int loop();

    const common::Bundle &bundle() const { return bundle_; }

    // The handlers of the bus: the method Event of the application, the methods Answer and Follow and the
    // property Waiting of the tool. Each returns a negative errno when the message cannot be read or
    // answered.
    int event(sd_bus_message *call);
    int answer(sd_bus_message *message);
    int follow(sd_bus_message *call);
    int get_waiting(sd_bus_message *reply) const;

    // What the window needs: the event loop, the last run (null before the first), and whether the host
    // quits.
    sd_event *events() { return event_; }
    Run *run() { return run_.get(); }
    // True while a command goes on, which may be several runs. Its time since the start; what the run of now
    // is for, empty for the first.
    bool busy() const { return run_ && (!run_->ended() || step_); }
    std::uint64_t milliseconds() const;
    const std::string &step() const { return step_says_; }
    bool leaving() const { return leaving_; }
    // Returns what was printed since the last call. Of a flood only the end is
    // kept (32 to 64 KiB), below a line that stands for the rest.
    std::string take_window_text();

    // What the run reports: see RunOwner.
    void run_printed(std::string_view bytes) override;
    void run_waits(bool waits) override;
    void engine_begins(const EngineRun &engine, const std::string &main) override;
    void run_ended(const Outcome &outcome) override;

  private:
    std::int32_t refusal(const common::Parameter *command, const common::Parameter *folder) const;
    int start_run(sd_bus_message *call, const common::Parameters &parameters);
    int take_documents(sd_bus_message *call, const common::Parameters &parameters);
    void start_document();
    void document_ended(const Outcome &outcome);
    bool is_shell(const char *sender);
    void prepare_command();
    bool goes_on(const Outcome &outcome);
    bool has_next_step(const Outcome &outcome);
    bool has_next_program(const Outcome &outcome, bool is_engine);
    void merge_problems();
    void next_step();
    void say(const std::string &line);
    void report(const Outcome &outcome);
    void keep_record();
    void watch_window();
    int quit();
    common::Parameters outcome_parameters(const Outcome &outcome);
    void watch_shell(const char *sender);
    void shell_gone();
    void ask_shell();
    void take_answerers(sd_bus_message *reply);
    bool is_followed() const;
    void decide_prompt();
    void signal_output(std::string_view bytes);
    void want_window();
    void leave();
    static int on_signal(sd_event_source *source, const signalfd_siginfo *info, void *self);

    const common::Bundle &bundle_;
    common::ApplicationObject object_;
    sd_event *event_ = nullptr;
    sd_bus *bus_ = nullptr;
    sd_bus_slot *shell_slot_ = nullptr;
    sd_bus_slot *question_ = nullptr; // the open question to the shell who can answer the program
    std::unique_ptr<common::Followers> followers_; // those who can answer and are still on the bus
    sd_event_source *window_timer_ = nullptr;
    std::unique_ptr<Transcript> transcript_; // of all runs of a command
    std::unique_ptr<Run> run_;
    std::unique_ptr<Passes> passes_; // null until an engine begins
    common::Bundle beside_; // the bundle of the program beside the engine that runs between two passes
    NextProgram next_;
    Outcome outcome_;             // of the engine
    ProblemList engine_problems_; // of its last pass
    int pages_ = 0;
    std::map<std::string, ProblemList> problems_beside_; // of the last run of each command beside the engine
    RecordedFiles files_;
    SnapshotCall to_remember_; // whose preamble is to be remembered; without a document for none
    std::string output_;       // what the engine made
    std::string engine_command_, engine_folder_;
    std::string step_says_;
    sd_event_source *step_ = nullptr;   // begins the next run of the command
    sd_bus_message *command_ = nullptr; // the call that the last run will answer
    std::uint64_t begun_ = 0;
    std::deque<std::string> documents_; // the paths of those that wait for the command of the bundle
    std::string shell_;                 // the unique bus name of whoever sent the last command
    std::string window_text_;
    std::string held_output_; // what was printed before the shell said who can answer
    int ends_of_input_ = 0;
    bool desktop_ = false;
    bool asked_at_prompt_ = false;
    bool window_wanted_ = false;
    bool window_failed_ = false;
    bool leaving_ = false;
};

} // namespace toolhost

#endif
