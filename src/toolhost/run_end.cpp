// The end of a run: what it leaves behind is settled and reported.
#include <csignal>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "toolhost/guard.h"
#include "toolhost/run.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::size_t largest_list = std::size_t{32} << 20;

} // namespace

// Names the format that the engine has read as what it is in the recorder's list, and asks for copies where
// there were none: of what was looked for, and of a format that was made.
void Run::settle_formats() {
    if (!copies_.empty() && has_option(engine_.words, "recorder"))
        name_originals(recorder_file(engine_, *parser_), copies_);
    const std::string made = common::leaf_of(parser_->dumped_format());
    if (made.ends_with(".fmt")) {
        const std::string name = made.substr(0, made.size() - 4);
        copies_to_ask_.push_back({engine_path_, name, name});
    }
}

ErrorPlace Run::error_place(bool *edit) const {
    const ErrorPlace asked = record_ >= 0 ? read_edit_record(record_, engine_.folder) : ErrorPlace();
    *edit = asked.known();
    if (asked.known() || !parser_)
        return asked;
    const ErrorPlace &place = answered_ ? parser_->last_error() : parser_->first_error();
    const bool failed = !WIFEXITED(status_) || WEXITSTATUS(status_) != 0;
    *edit = place.known() && failed && !answered_ && !cancelled_;
    return place;
}

// The output of the run before goes where this run has left a whole one. What an engine closes when it is
// cancelled is cut off.
void Run::settle_kept_output() {
    const bool ended_well =
        WIFEXITED(status_) && (WEXITSTATUS(status_) == 0 || (!cancelled_ && !parser_->output_name().empty()));
    if (!kept_.path.empty() && ended_well && common::is_regular_file(kept_.path))
        drop_kept(kept_);
    else
        give_back(kept_);
    kept_ = {};
}

// Asks the engine to write down which files it reads and writes, where nobody else has. An engine that cannot
// make the list does not start, so there is none in a folder that takes no files.
void Run::ask_for_list(Launch &launch) {
    const std::string path = recorder_file(engine_, *parser_);
    if (has_option(engine_.words, "recorder") || has_option(engine_.words, "ini") ||
        access(common::folder_above(path).c_str(), W_OK | X_OK) != 0)
        return;
    launch.words.insert(launch.words.begin() + 1, "-recorder");
    std::vector<std::string> names = {launch.words[0], option_value(engine_.words, "progname")};
    for (const FormatSearch &search : format_searches(launch.program, engine_.words, main_))
        names.insert(names.end(), {search.progname, search.name});
    list_ = begin_own_list(path, names);
    launch.list = list_;
}

// Reads the list of the engine's files, and takes it away where the person has not asked for it.
void Run::settle_list() {
    if (list_.path.empty() && !has_option(engine_.words, "recorder"))
        return;
    const std::string path = recorder_file(engine_, *parser_);
    recorded_ = read_recorder_list(common::read_file(path, largest_list));
    // The job's name may be known only now.
    if (!list_.path.empty() && list_.older.path.empty())
        list_.path = path;
    take_away(list_, program_);
    list_ = {};
}

// Lets a program beside an engine find what it reads where the document is, when it runs where the engine
// writes.
void Run::search_sources(Variables &environment) const {
    if (sources_.empty() || sources_.find_first_of(":$") != std::string::npos)
        return;
    for (const char *name : {"BIBINPUTS", "BSTINPUTS", "INDEXSTYLE"})
        environment[name] = sources_ + ":" + environment[name];
}

// Lets the guard end, which would give the output back if this process died.
void Run::dismiss_guard() {
    if (guard_ <= 0)
        return;
    send(channel_, &output_is_settled, sizeof output_is_settled, MSG_NOSIGNAL);
    waitpid(guard_, nullptr, 0);
    guard_ = 0;
}

// Reports what the program complained about, where its messages are understood.
RunReport Run::report() const {
    const std::uint64_t time = milliseconds();
    if (parser_)
        return report_run(is_engine_ ? parser_->pages() : 0, parser_->problems(), time);
    return companion_ ? report_run(0, companion_->problems(), time) : RunReport();
}

ProblemList Run::problems() const {
    return parser_ ? parser_->problems() : companion_ ? companion_->problems() : ProblemList();
}

void Run::finish() {
    if (ended_)
        return;
    while (output_source_ && read_output()) {
    }
    while (terminal_source_ && read_terminal()) {
    }
    settle_snapshot();
    ended_ = true;
    waiting_ = false;
    if (parser_)
        parser_->finish();
    else if (companion_)
        companion_->finish();
    Outcome outcome;
    outcome.cancelled = cancelled_;
    outcome.exit_code = WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
    if (parser_)
        settle_kept_output();
    if (is_engine_ && parser_)
        settle_list();
    dismiss_guard();
    common::remove_note(note_);
    const ErrorPlace place = error_place(&outcome.edit);
    if (outcome.edit)
        outcome.message = place.message;
    if (parser_) {
        const bool wrote = outcome.exit_code != 127 || parser_->output_name().size() > 0;
        const bool whole = !cancelled_ && outcome.exit_code == 0;
        output_path_ = is_engine_ && wrote ? engine_output(engine_, *parser_) : std::string();
        write_results(engine_, is_engine_, output_path_, whole, place);
        if (is_engine_ && WIFSIGNALED(status_))
            mend_auxiliary_file(engine_);
        if (is_engine_ && has_option(engine_.words, "ini"))
            stamp_format(engine_, *parser_);
        if (is_engine_)
            settle_formats();
    }
    outcome.report = report();
    close_down();
    owner_.run_ended(outcome);
    ask_for_copies(bundle_.path, copies_to_ask_);
}

} // namespace toolhost
