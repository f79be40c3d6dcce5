// A command may be several runs: the engine until the document is stable, and the programs beside it.
#include <unistd.h>

#include "common/preferences.h"
#include "toolhost/environment.h"
#include "toolhost/host.h"

namespace toolhost {

void Host::engine_begins(const EngineRun &engine, const std::string &main) {
    if (passes_)
        return;
    engine_command_ = run_->command();
    engine_folder_ = engine.folder;
    passes_ = std::make_unique<Passes>();
    passes_->begin(engine, main, bundle_.home, common::setting("RERUN").starts_with('1'));
}

// Prints LINE as if the programs had said it.
void Host::say(const std::string &line) {
    const std::string text = "\n" + line + "\n";
    transcript_->write(text);
    run_printed(text);
}

// Decides what comes after a run that ended with OUTCOME. False when the command has ended.
bool Host::goes_on(const Outcome &outcome) {
    const bool more = has_next_step(outcome);
    if (!more)
        merge_problems();
    return more;
}

// Adds what the programs beside the engine complained about to what the engine did in its last pass.
void Host::merge_problems() {
    if (problems_beside_.empty())
        return;
    for (const auto &[command, problems] : problems_beside_)
        engine_problems_.add_those_of(problems);
    problems_beside_.clear();
    unlink(outcome_.report.problems.c_str());
    outcome_.report = report_run(pages_, engine_problems_, milliseconds());
}

// Asks the passes what a run that ended with OUTCOME makes necessary. False for nothing.
bool Host::has_next_program(const Outcome &outcome, bool is_engine) {
    if (outcome.cancelled || (is_engine && (outcome.exit_code != 0 || outcome.edit)))
        return false;
    if (is_engine)
        passes_->engine_ended(files_);
    else
        passes_->program_ended(outcome.exit_code == 0);
    if (passes_->next(&next_))
        return true;
    if (!passes_->unstable().empty())
        say("Still not stable after " + std::to_string(Passes::most) + " passes: " + passes_->unstable() +
            " changes each time.");
    return false;
}

bool Host::has_next_step(const Outcome &outcome) {
    const bool is_engine = beside_.tool.empty();
    if (is_engine) {
        outcome_ = outcome;
        files_ = run_->recorded();
        output_ = run_->output();
        engine_problems_ = run_->problems();
        pages_ = run_->pages();
        if (const SnapshotCall *const call = run_->to_remember())
            to_remember_ = *call;
        else
            to_remember_ = {};
    } else {
        unlink(outcome.report.problems.c_str());
        problems_beside_[next_.folder + "\n" + next_.command] = run_->problems();
    }
    outcome_.cancelled = outcome.cancelled;
    const bool again = is_engine && !run_->redo().empty() && !outcome.cancelled && !outcome.edit &&
                       passes_->run_again(run_->redo(), &next_);
    if (!again && !has_next_program(outcome, is_engine))
        return false;
    // Only the problems of the last pass are reported.
    if (next_.tool.empty()) {
        unlink(outcome_.report.problems.c_str());
        outcome_.report.problems.clear();
    }
    // The run that has just ended is still at work.
    sd_event_add_defer(
        event_, &step_,
        [](sd_event_source *, void *self) {
            static_cast<Host *>(self)->next_step();
            return 0;
        },
        this);
    return true;
}

// Begins the next run of the command.
void Host::next_step() {
    step_ = sd_event_source_disable_unref(step_);
    beside_ = {};
    if (next_.tool.empty()) {
        step_says_ = "Pass " + std::to_string(passes_->pass()) + ": " + next_.reason + " changed";
        say(step_says_);
        run_ = std::make_unique<Run>(event_, bundle_, *this, *transcript_);
        run_->count_from(begun_);
        run_->start(engine_command_, engine_folder_);
        return;
    }
    if (!common::read_bundle(bundle_.home + "/" + next_.tool + ".app", next_.tool, beside_))
        beside_.tool = next_.tool;
    beside_.home = bundle_.home;
    step_says_ = next_.tool + ": " + next_.reason + " changed";
    say(next_.command + ": " + next_.reason + " changed");
    run_ = std::make_unique<Run>(event_, beside_, *this, *transcript_);
    run_->search_too(next_.sources);
    run_->start(next_.command, next_.folder);
}

void Host::keep_record() {
    if (!files_.read.empty())
        passes_->keep_record(files_, output_, outcome_.exit_code == 0 && !outcome_.cancelled);
    // After a clean run the preamble is remembered for the next one, which needs the record.
    if (!to_remember_.main.empty() && outcome_.exit_code == 0 && !outcome_.edit && !outcome_.cancelled)
        ask_for_snapshot(bundle_.path, to_remember_);
    to_remember_ = {};
}

} // namespace toolhost
