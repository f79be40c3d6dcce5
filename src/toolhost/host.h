// The tool host: one application on the bus that runs its bundle's program on command.
#ifndef QUILLON_TOOLHOST_HOST_H
#define QUILLON_TOOLHOST_HOST_H

#include <cstdint>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include "common/application_object.h"
#include "common/bundle.h"
#include "common/event_codec.h"
#include "toolhost/run.h"

namespace toolhost {

class Host : public RunOwner {
  public:
    explicit Host(const common::Bundle &bundle);
    ~Host();
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    // Takes the bus name. Negative errno on failure.
    int connect();
    // Runs until the host is told to go; the process's exit status.
    int loop();

    const common::Bundle &bundle() const { return bundle_; }

    // Events and calls from the bus.
    int event(sd_bus_message *call);
    int answer(sd_bus_message *message);
    int follow(sd_bus_message *call);
    int get_waiting(sd_bus_message *reply) const;

    // For the window.
    sd_event *events() { return event_; }
    Run *run() { return run_.get(); }
    bool leaving() const { return leaving_; }
    // What was printed since the last call, at most the last quarter of a megabyte.
    std::string take_window_text();

    void run_printed(std::string_view bytes) override;
    void run_waits(bool waits) override;
    void run_ended(const Outcome &outcome) override;

  private:
    std::int32_t refusal(const common::Parameter *command, const common::Parameter *folder) const;
    int start_run(sd_bus_message *call, const common::Parameters &parameters);
    int quit();
    common::Parameters outcome_parameters(const Outcome &outcome) const;
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
    sd_bus_slot *question_ = nullptr;   // to the shell: who can answer
    sd_bus_track *followers_ = nullptr; // those who can: the bus drops a name that leaves it
    sd_event_source *window_timer_ = nullptr;
    std::unique_ptr<Run> run_;
    sd_bus_message *command_ = nullptr; // the call that the run will answer
    std::string shell_;
    std::string window_text_;
    std::string held_output_; // printed before the shell said who follows
    int ends_of_input_ = 0;
    bool desktop_ = false;
    bool asked_at_prompt_ = false;
    bool window_wanted_ = false;
    bool window_failed_ = false;
    bool leaving_ = false;
};

} // namespace toolhost

#endif
