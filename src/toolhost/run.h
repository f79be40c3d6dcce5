// A run: one program on a terminal of its own, from its start to its report.
#ifndef QUILLON_TOOLHOST_RUN_H
#define QUILLON_TOOLHOST_RUN_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <systemd/sd-event.h>
#include <vector>

#include "common/bundle.h"
#include "common/run_notes.h"
#include "toolhost/companion_reader.h"
#include "toolhost/format_copies.h"
#include "toolhost/kept_output.h"
#include "toolhost/prompt.h"
#include "toolhost/recorded_files.h"
#include "toolhost/recorder.h"
#include "toolhost/results.h"
#include "toolhost/run_parser.h"
#include "toolhost/run_report.h"
#include "toolhost/snapshot_use.h"
#include "toolhost/transcript.h"

namespace toolhost {

// How a run ended.
struct Outcome {
    std::int32_t exit_code = 0; // 128 and the signal's number for a program that a signal ended
    bool edit = false;          // the editor is wanted at the error
    std::string message;        // what the engine said about that error
    bool cancelled = false;
    RunReport report;
};

// What a run tells the host that owns it.
class RunOwner {
  public:
    // The program printed BYTES, which are valid during the call.
    virtual void run_printed(std::string_view bytes) = 0;
    // The program began (true) or ceased (false) to wait for an answer.
    virtual void run_waits(bool waits) = 0;
    // The engine ENGINE is about to start on the document MAIN, an absolute path.
    virtual void engine_begins(const EngineRun &engine, const std::string &main) = 0;
    // The run is over. It is called once, and nothing is reported after it.
    virtual void run_ended(const Outcome &outcome) = 0;

  protected:
    ~RunOwner() = default;
};

struct Launch;

class Run {
  public:
    // All must outlive the run. What the program prints is added to TRANSCRIPT, which the owner finishes.
    Run(sd_event *event, const common::Bundle &bundle, RunOwner &owner, Transcript &transcript);
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    // Starts the bundle's program with the words of the command line LINE (any bytes) in FOLDER, an absolute
    // POSIX path. A program that cannot be started ends the run at once with code 127 and a transcript that
    // says why.
    void start(std::string_view line, const std::string &folder);
    // Starts the command that the bundle has for documents on the one at PATH, an absolute POSIX path, in its
    // folder.
    void start_document(const std::string &path);
    // Types BYTES at the program's terminal. What the terminal does not take now is typed later.
    void answer(std::string_view bytes);
    // Types an end of file at the terminal, since nobody can answer the program.
    void end_input();
    // Stops the program: an interrupt, a second later SIGTERM, and another second later SIGKILL for every
    // process of the run. AT_ONCE begins with SIGKILL. The run still ends with its report.
    void cancel(bool at_once);
    // Gives the run up without a report: the guard kills what runs.
    void abandon();
    // Lets programs that make bibliographies and indexes look for their files in FOLDER too, an absolute
    // path.
    void search_too(const std::string &folder) { sources_ = folder; }

    // How the run stands: whether the program waits for an answer, whether the run was cancelled, whether it
    // has ended, and how many pages the engine has made (0 for other programs).
    bool waiting() const { return waiting_; }
    bool cancelled() const { return cancelled_; }
    bool ended() const { return ended_; }
    int pages() const { return parser_ ? parser_->pages() : 0; }
    // Returns the problems so far of a program whose messages are understood, none of any other.
    ProblemList problems() const;
    // Counts the time from the start of an earlier run, MICROSECONDS of the clock, of which this one is a
    // part.
    void count_from(std::uint64_t microseconds) { counted_from_ = microseconds; }
    // Returns the time since the start.
    std::uint64_t milliseconds() const;
    // Return what the engine read and wrote, and the output that it made (empty for none), once it has ended.
    const RecordedFiles &recorded() const { return recorded_; }
    const std::string &output() const { return output_path_; }
    // Returns the command line as it was given.
    const std::string &command() const { return command_; }
    // Returns the call whose preamble could be remembered and is not, null when there is none.
    const SnapshotCall *to_remember() const { return to_remember_ ? &snapshot_call_ : nullptr; }
    // Returns the path of a file because of which a run with a snapshot has to be done again, empty for none:
    // the document, when its preamble was another one already as the engine took it up behind it, or what the
    // run has left that could not be completed.
    const std::string &redo() const { return redo_; }

  private:
    bool prepare(std::vector<std::string> words, const std::string &folder);
    void start_words(std::vector<std::string> given, const std::string &folder);
    bool open_terminal(int *slave);
    int open_output();
    void watch(int descriptor, sd_event_source *&source, sd_event_io_handler_t handler);
    bool launch(const std::string &program, int slave);
    void offer_formats(const std::string &program, Variables &environment);
    void settle_formats();
    void look_for_snapshot(const Launch &launch, const Variables &environment);
    void offer_found_snapshot(Variables &environment) const;
    void compare_preamble();
    bool settle_links() const;
    void settle_snapshot();
    void say_of_snapshot(const std::string &what);
    void choose_program();
    void fail(const std::string &reason);
    bool read_terminal();
    bool read_output();
    bool read_all(int descriptor, sd_event_source *&source);
    void await_echo();
    bool has_unread() const;
    void take_output(std::string_view bytes);
    void pass_output(std::string_view bytes);
    void watch_prompt(std::uint64_t milliseconds);
    void look_for_prompt();
    void set_waiting(bool waiting);
    void stop_at_prompt();
    void type(std::string_view bytes);
    void guard_news();
    void guard_gone();
    void dismiss_guard();
    void next_stage();
    void settle_kept_output();
    void ask_for_list(Launch &launch);
    void settle_list();
    void search_sources(Variables &environment) const;
    void close_down();
    void finish();
    RunReport report() const;
    ErrorPlace error_place(bool *edit) const;

    sd_event *event_;
    const common::Bundle &bundle_;
    RunOwner &owner_;
    EngineRun engine_;
    std::string command_;
    std::string main_;        // the path of the document; empty when the words name none
    std::string engine_path_; // of the engine that was started
    std::string program_name_;
    std::string delimiter_;
    std::string sources_;     // a further folder for what programs beside an engine read
    std::string output_path_; // what the engine made
    Transcript &transcript_;
    KeptOutput kept_;
    OwnList list_;
    RecordedFiles recorded_;
    std::vector<FormatCopy> copies_;          // that the engine was offered
    std::vector<FormatSearch> copies_to_ask_; // for searches of which nothing is known
    SnapshotCall snapshot_call_;
    Snapshot snapshot_; // that the engine was offered; its folder is empty for none
    SnapshotTexts snapshot_texts_;
    SnapshotOutput snapshot_output_;
    std::string redo_;
    std::unique_ptr<RunParser> parser_;
    std::unique_ptr<CompanionReader> companion_; // for BibTeX and MakeIndex
    PromptWatch prompt_;
    sd_event_source *terminal_source_ = nullptr;
    sd_event_source *output_source_ = nullptr;
    sd_event_source *channel_source_ = nullptr;
    sd_event_source *prompt_timer_ = nullptr;
    sd_event_source *cancel_timer_ = nullptr;
    std::uint64_t begun_ = 0;
    std::uint64_t counted_from_ = 0; // 0: from begun_
    std::uint64_t prompt_pause_ = 0;
    std::string unsent_; // what was typed and the terminal has not taken yet
    std::string terminal_path_;
    int terminal_ = -1;
    int output_ = -1;          // what the program prints, where it does not print on the terminal
    std::size_t echo_due_ = 0; // bytes typed that the terminal will repeat
    int channel_ = -1;
    int record_ = -1;
    common::RunNote note_;
    pid_t guard_ = 0;
    pid_t program_ = 0;
    int status_ = 0;
    int stage_ = 0; // how many of the stopping signals were sent
    bool is_engine_ = false;
    bool open_line_ = false;
    bool answered_ = false;
    bool may_wait_ = false; // what the last look for a prompt found
    bool waiting_ = false;
    bool cancelled_ = false;
    bool ended_ = false;
    bool told_to_stop_ = false;
    bool to_remember_ = false; // the call of the snapshot that there is none of
};

} // namespace toolhost

#endif
