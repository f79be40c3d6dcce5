#include "toolhost/host.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "common/clock.h"
#include "common/session_bus.h"
#include "toolbox/types.h"
#include "toolhost/window/open_window.h"

namespace toolhost {

using common::application_interface;
using common::application_path;
using common::tool_interface;

namespace {

// The window lays out every byte that it shows, which takes longer than printing it; more than this at once
// is read by nobody.
constexpr std::size_t window_text_limit = 32768;
// Stands in the window where text was left out.
constexpr const char *left_out = "\n…";
constexpr std::uint64_t window_delay = 500000; // microseconds
// A program that reads on after so many ends of its input is ended.
constexpr int most_ends_of_input = 100;

int on_answer(sd_bus_message *message, void *self, sd_bus_error *) {
    return static_cast<Host *>(self)->answer(message);
}

int on_follow(sd_bus_message *call, void *self, sd_bus_error *) {
    return static_cast<Host *>(self)->follow(call);
}

int get_waiting(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *self,
                sd_bus_error *) {
    return static_cast<Host *>(self)->get_waiting(reply);
}

const sd_bus_vtable tool_vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Waiting", "b", get_waiting, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_METHOD("Answer", "ay", "", on_answer, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Follow", "b", "", on_follow, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("Output", "ay", 0),
    SD_BUS_VTABLE_END,
};

bool front_is_desktop() {
    if (const char *front = std::getenv("QUILLON_FRONT"))
        return std::strcmp(front, "desktop") == 0;
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
}

} // namespace

Host::Host(const common::Bundle &bundle)
    : bundle_(bundle), object_{bundle.signature, bundle.tool, bundle.path,
                               [this](sd_bus_message *call, sd_bus_error *) { return event(call); }},
      desktop_(front_is_desktop()) {}

Host::~Host() {
    run_.reset();
    sd_event_source_disable_unref(step_);
    sd_bus_message_unref(command_);
    sd_event_source_disable_unref(window_timer_);
    sd_bus_slot_unref(shell_slot_);
    sd_bus_slot_unref(question_);
    followers_.reset();
    sd_bus_flush_close_unref(bus_);
    sd_event_unref(event_);
}

int Host::on_signal(sd_event_source *, const signalfd_siginfo *info, void *self) {
    auto *const host = static_cast<Host *>(self);
    if (info->ssi_signo == SIGTERM)
        host->quit();
    else if (const char *shell = std::getenv("QUILLON_SHELL_PID"); shell && std::atoi(shell) != getppid())
        host->shell_gone();
    return 0;
}

int Host::connect() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGINT, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGTERM);
    sigaddset(&handled, SIGHUP);
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (const char *shell = std::getenv("QUILLON_SHELL_PID")) {
        // A shell that has gone before this point is no longer the parent.
        prctl(PR_SET_PDEATHSIG, SIGHUP);
        if (getppid() != std::atoi(shell))
            return -ESRCH;
    }
    int result = sd_event_new(&event_);
    if (result < 0 || (result = sd_bus_open_user(&bus_)) < 0)
        return result;
    sd_bus_set_exit_on_disconnect(bus_, 1);
    if ((result = common::serve_application(bus_, &object_)) < 0 ||
        (result = sd_bus_add_object_vtable(bus_, nullptr, application_path, tool_interface, tool_vtable,
                                           this)) < 0 ||
        (result = sd_bus_request_name(bus_, common::application_bus_name(getpid()).c_str(), 0)) < 0)
        return result;
    followers_ = std::make_unique<common::Followers>(
        bus_, [this] { decide_prompt(); }, nullptr, false);
    sd_event_add_signal(event_, nullptr, SIGTERM, on_signal, this);
    sd_event_add_signal(event_, nullptr, SIGHUP, on_signal, this);
    return sd_bus_attach_event(bus_, event_, SD_EVENT_PRIORITY_NORMAL);
}

int Host::loop() {
    while (!leaving_) {
        const int result = sd_event_run(event_, UINT64_MAX);
        if (result < 0 || sd_event_get_state(event_) == SD_EVENT_FINISHED)
            break;
        if (!window_wanted_ || window_failed_ || leaving_)
            continue;
        window_wanted_ = false;
        window_failed_ = !open_window(*this);
        if (window_failed_)
            decide_prompt();
    }
    return 0;
}

void Host::leave() {
    leaving_ = true;
}

int Host::event(sd_bus_message *call) {
    common::Event event;
    int result = common::read_event(call, event);
    if (result < 0)
        return result;
    const std::string name = event.event_class + "/" + event.id;
    if (name == "QUIL/priv")
        return start_run(call, event.parameters);
    if (name == "aevt/odoc")
        return take_documents(call, event.parameters);
    if (name == "aevt/quit") {
        result = common::answer_event(call, quillon::noErr, {});
        quit();
        return result < 0 ? result : 1;
    }
    result =
        common::answer_event(call, name == "aevt/oapp" ? quillon::noErr : quillon::errAEEventNotHandled, {});
    return result < 0 ? result : 1;
}

// Returns the error number for a command event that cannot be run, noErr for one that can.
std::int32_t Host::refusal(const common::Parameter *command, const common::Parameter *folder) const {
    if (!command || !folder)
        return quillon::errAEDescNotFound;
    if (command->type != "TEXT" || command->kind != common::ValueKind::bytes || folder->type != "fss " ||
        folder->kind != common::ValueKind::bytes)
        return quillon::errAECoercionFail;
    if (!folder->bytes.starts_with('/'))
        return quillon::dirNFErr;
    return busy() ? quillon::connectionInvalid : quillon::noErr;
}

int Host::start_run(sd_bus_message *call, const common::Parameters &parameters) {
    const common::Parameter *const command = common::find_parameter(parameters, "----");
    const common::Parameter *const folder = common::find_parameter(parameters, "dest");
    if (const std::int32_t error = refusal(command, folder); error != quillon::noErr) {
        const int result = common::answer_event(call, error, {});
        return result < 0 ? result : 1;
    }
    watch_shell(sd_bus_message_get_sender(call));
    sd_bus_message_unref(command_);
    command_ = sd_bus_message_ref(call);
    prepare_command();
    run_->start(command->bytes, folder->bytes);
    watch_window();
    return 1;
}

void Host::prepare_command() {
    window_text_.clear();
    held_output_.clear();
    asked_at_prompt_ = false;
    if (!shell_.empty())
        ask_shell();
    begun_ = common::now_microseconds();
    step_says_.clear();
    passes_.reset();
    beside_ = {};
    run_.reset();
    transcript_ = std::make_unique<Transcript>();
    run_ = std::make_unique<Run>(event_, bundle_, *this, *transcript_);
}

std::uint64_t Host::milliseconds() const {
    return (common::now_microseconds() - begun_) / 1000;
}

// Shows the window of a run that lasts.
void Host::watch_window() {
    if (!busy())
        return;
    window_timer_ = sd_event_source_disable_unref(window_timer_);
    if (desktop_)
        sd_event_add_time_relative(
            event_, &window_timer_, CLOCK_MONOTONIC, window_delay, 1000,
            [](sd_event_source *, std::uint64_t, void *self) {
                static_cast<Host *>(self)->want_window();
                return 0;
            },
            this);
}

// True when SENDER is the shell that started this host.
bool Host::is_shell(const char *sender) {
    const char *const shell = std::getenv("QUILLON_SHELL_PID");
    sd_bus_creds *creds = nullptr;
    pid_t pid = 0;
    const bool known = shell && sender &&
                       sd_bus_get_name_creds(bus_, sender, SD_BUS_CREDS_PID, &creds) >= 0 &&
                       sd_bus_creds_get_pid(creds, &pid) >= 0;
    sd_bus_creds_unref(creds);
    return known && std::atoi(shell) == pid;
}

// Takes documents for the command that the bundle has for them. They are answered at once and run one after
// the other.
int Host::take_documents(sd_bus_message *call, const common::Parameters &parameters) {
    const common::Parameter *const direct = common::find_parameter(parameters, "----");
    const bool is_list = direct && direct->type == "list";
    std::int32_t error = quillon::noErr;
    if (bundle_.info_or("documents", "").empty())
        error = quillon::errAEEventNotHandled;
    else if (!direct)
        error = quillon::errAEDescNotFound;
    for (const common::Parameter &item : is_list ? direct->items : parameters)
        if (error == quillon::noErr && (is_list || &item == direct)) {
            if (item.type == "fss " && item.bytes.starts_with('/'))
                documents_.push_back(item.bytes);
            else
                error = quillon::errAECoercionFail;
        }
    const int result = common::answer_event(call, error, {});
    if (is_shell(sd_bus_message_get_sender(call)))
        watch_shell(sd_bus_message_get_sender(call));
    start_document();
    return result < 0 ? result : 1;
}

void Host::start_document() {
    if (documents_.empty() || busy())
        return;
    const std::string path = documents_.front();
    documents_.pop_front();
    prepare_command();
    run_->start_document(path);
    watch_window();
}

// Reports the run on a document to the shell. Without a shell nobody will end this host, so it ends after the
// last document.
void Host::document_ended(const Outcome &outcome) {
    if (!shell_.empty()) {
        sd_bus_message *report = nullptr;
        const int result =
            common::new_event_call(bus_, shell_, {"aevt", "ansr", outcome_parameters(outcome)}, &report);
        common::send_without_reply(bus_, report, result);
    }
    if (!documents_.empty())
        sd_event_add_defer(
            event_, nullptr,
            [](sd_event_source *, void *self) {
                static_cast<Host *>(self)->start_document();
                return 0;
            },
            this);
    else if (shell_.empty())
        leave();
}

int Host::quit() {
    if (step_) {
        step_ = sd_event_source_disable_unref(step_);
        outcome_.cancelled = true;
        report(outcome_);
    } else if (busy()) {
        run_->cancel(false);
    } else {
        leave();
    }
    return 0;
}

common::Parameters Host::outcome_parameters(const Outcome &outcome) {
    common::Parameters parameters = {common::number_parameter("----", outcome.exit_code)};
    // The shell says that a run was cancelled only when the report names a transcript, so a cancelled run has
    // one.
    if (const std::string path = transcript_->finish(outcome.cancelled); !path.empty())
        parameters.push_back(common::path_parameter("logf", path));
    if (const std::string unkept = transcript_->unkept(); !unkept.empty())
        parameters.push_back(common::text_parameter("said", unkept));
    parameters.push_back(common::number_parameter("iden", common::code_number(bundle_.signature)));
    parameters.push_back(common::number_parameter("edit", outcome.edit ? 1 : 0));
    if (!outcome.message.empty())
        parameters.push_back(common::text_parameter("mesg", outcome.message));
    if (!outcome.report.numbers.empty())
        parameters.push_back(common::text_parameter("nums", outcome.report.numbers));
    if (!outcome.report.problems.empty())
        parameters.push_back(common::path_parameter("prbs", outcome.report.problems));
    return parameters;
}

void Host::run_ended(const Outcome &outcome) {
    if (!passes_) {
        report(outcome);
    } else if (!goes_on(outcome)) {
        report(outcome_);
        keep_record();
    }
}

// Reports the end of a command.
void Host::report(const Outcome &outcome) {
    window_timer_ = sd_event_source_disable_unref(window_timer_);
    window_wanted_ = false;
    const common::Parameters parameters = outcome_parameters(outcome);
    if (!outcome.cancelled && !command_) {
        document_ended(outcome);
        return;
    }
    if (!outcome.cancelled) {
        common::answer_event(command_, quillon::noErr, parameters);
        command_ = sd_bus_message_unref(command_);
        return;
    }
    sd_bus_message *notice = nullptr;
    const int result = common::new_event_call(bus_, shell_, {"QUIL", "exit", parameters}, &notice);
    common::send_without_reply(bus_, notice, result);
    leave();
}

void Host::watch_shell(const char *sender) {
    if (!sender || shell_ == sender)
        return;
    shell_ = sender;
    shell_slot_ = sd_bus_slot_unref(shell_slot_);
    const std::string rule = "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                             "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                             shell_ + "'";
    sd_bus_add_match_async(
        bus_, &shell_slot_, rule.c_str(),
        [](sd_bus_message *, void *self, sd_bus_error *) {
            static_cast<Host *>(self)->shell_gone();
            return 0;
        },
        nullptr, this);
}

// Ends the host when the shell has gone. The guard kills what runs as soon as this process ends.
void Host::shell_gone() {
    if (busy()) {
        run_->abandon();
        if (const std::string path = transcript_->finish(); !path.empty())
            unlink(path.c_str());
    }
    leave();
}

int Host::get_waiting(sd_bus_message *reply) const {
    const int waiting = run_ && run_->waiting() ? 1 : 0;
    return sd_bus_message_append_basic(reply, 'b', &waiting);
}

int Host::answer(sd_bus_message *message) {
    const void *bytes = nullptr;
    std::size_t size = 0;
    const int result = sd_bus_message_read_array(message, 'y', &bytes, &size);
    if (result < 0)
        return result;
    if (!run_ || run_->ended())
        return sd_bus_reply_method_errorf(message, "org.quillon.Error.NotRun", "Nothing runs.");
    // Whoever answers once may do so again.
    followers_->add(sd_bus_message_get_sender(message));
    run_->answer({static_cast<const char *>(bytes), size});
    return sd_bus_reply_method_return(message, "");
}

void Host::run_printed(std::string_view bytes) {
    if (question_)
        held_output_ += bytes;
    else if (is_followed())
        signal_output(bytes);
    if (!desktop_ || window_failed_)
        return;
    window_text_ += bytes;
    if (window_text_.size() <= 2 * window_text_limit)
        return;
    const std::size_t cut = window_text_.size() - window_text_limit, line = window_text_.find('\n', cut);
    window_text_.replace(0, line == std::string::npos ? cut : line, left_out);
}

std::string Host::take_window_text() {
    std::string text = std::move(window_text_);
    window_text_.clear();
    return text;
}

void Host::signal_output(std::string_view bytes) {
    followers_->send(application_path, tool_interface, "Output", bytes.size(), [&](sd_bus_message *signal) {
        return sd_bus_message_append_array(signal, 'y', bytes.data(), bytes.size());
    });
    // Waiting for the bus keeps a flood of output from piling up here.
    sd_bus_flush(bus_);
}

void Host::run_waits(bool waits) {
    sd_bus_emit_properties_changed(bus_, application_path, tool_interface, "Waiting", nullptr);
    if (!waits)
        return;
    if (desktop_ && !window_failed_)
        want_window();
    if (!asked_at_prompt_)
        ask_shell();
    asked_at_prompt_ = true;
    decide_prompt();
}

void Host::want_window() {
    if (busy() && !run_->cancelled())
        window_wanted_ = true;
}

int Host::follow(sd_bus_message *call) {
    int on = 0;
    const int result = sd_bus_message_read(call, "b", &on);
    if (result < 0)
        return result;
    if (on)
        followers_->add(sd_bus_message_get_sender(call));
    else
        followers_->remove(sd_bus_message_get_sender(call));
    decide_prompt();
    return sd_bus_reply_method_return(call, "");
}

bool Host::is_followed() const {
    return followers_ && followers_->any();
}

// Asks the shell who can answer the program. What is printed until the reply comes is held back, so that
// those who follow the run miss nothing.
void Host::ask_shell() {
    if (question_)
        return;
    sd_bus_call_method_async(
        bus_, &question_, shell_.c_str(), common::shell_path, common::shell_interface, "Answerers",
        [](sd_bus_message *reply, void *self, sd_bus_error *) {
            static_cast<Host *>(self)->take_answerers(reply);
            return 0;
        },
        this, "");
}

// Takes the shell's reply. An error as reply counts as "nobody".
void Host::take_answerers(sd_bus_message *reply) {
    question_ = sd_bus_slot_unref(question_);
    int person = 0;
    const char *name = nullptr;
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "b", &person) > 0 &&
        sd_bus_message_enter_container(reply, 'a', "s") > 0) {
        // Where a person sits at the shell, the tool's window asks.
        desktop_ = person != 0;
        while (sd_bus_message_read_basic(reply, 's', &name) > 0)
            followers_->add(name);
    }
    if (is_followed() && !held_output_.empty())
        signal_output(held_output_);
    held_output_.clear();
    decide_prompt();
}

// Ends the program's input when it waits at a prompt and nobody can answer: no window shows the prompt, and
// nobody follows the run.
void Host::decide_prompt() {
    if (!run_ || !run_->waiting() || question_ || (desktop_ && !window_failed_) || is_followed())
        return;
    if (++ends_of_input_ > most_ends_of_input)
        run_->cancel(true);
    else
        run_->end_input();
}

} // namespace toolhost
