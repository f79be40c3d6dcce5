// What a run has to do with the snapshot of its document's preamble.
#include <sys/wait.h>

#include "common/host_files.h"
#include "common/preferences.h"
#include "toolhost/guard.h"
#include "toolhost/run.h"
#include "toolhost/source_links.h"

namespace toolhost {

// Looks for the snapshot of what LAUNCH starts in ENVIRONMENT, which has no copies of formats yet.
void Run::look_for_snapshot(const Launch &launch, const Variables &environment) {
    if (!common::setting("SNAPSHOT").starts_with('1') ||
        (bundle_.signature != "PXET" && bundle_.signature != "PxET"))
        return;
    Preamble preamble;
    if (!read_preamble(main_, &preamble))
        return;
    std::string why = fill_call(launch.program, launch.words, engine_.folder, main_, &snapshot_call_);
    Snapshot found;
    const SnapshotState state =
        why.empty() ? find_snapshot(snapshot_call_, environment, &found) : SnapshotState::refused;
    if (state == SnapshotState::ready && read_texts(found, &snapshot_texts_)) {
        snapshot_ = found;
        snapshot_output_.begin(snapshot_texts_);
        return;
    }
    to_remember_ = state != SnapshotState::refused;
    say_of_snapshot(to_remember_ ? "The preamble is executed; it is not remembered yet."
                                 : "The preamble is executed: " + (why.empty() ? found.reason : why) + ".");
}

void Run::offer_found_snapshot(Variables &environment) const {
    if (!snapshot_.folder.empty())
        offer_snapshot(snapshot_, environment);
}

// Tells the person who wants to see such lines.
void Run::say_of_snapshot(const std::string &what) {
    if (!common::setting("DEBUG").starts_with('1'))
        return;
    const std::string line = what + "\n";
    transcript_.write(line);
    owner_.run_printed(line);
}

// Looks whether the engine passed over the lines that the snapshot has executed. A document that is saved
// between the look for its snapshot and the moment when the engine reads it has others there.
void Run::compare_preamble() {
    Preamble now;
    if (!read_preamble(main_, &now) || now.text != snapshot_.preamble)
        redo_ = main_;
}

// Completes the SyncTeX file. False when the run has come to its end and left one that is none of a run with
// this snapshot, which then is not used again.
bool Run::settle_links() const {
    const std::string path = links_file(output_stem(engine_));
    if (snapshot_texts_.passed_files == 0 || complete_links(path, snapshot_texts_) || !WIFEXITED(status_) ||
        WEXITSTATUS(status_) != 0 || !common::is_regular_file(path))
        return true;
    forget_snapshot(snapshot_);
    return false;
}

// Completes what the run has left, as if the engine had executed the preamble. A snapshot that had gone when
// the engine looked for it leaves a log and a list that are whole already.
void Run::settle_snapshot() {
    if (snapshot_.folder.empty())
        return;
    if (snapshot_output_.looks())
        compare_preamble();
    if (const std::string held = snapshot_output_.finish(); !held.empty())
        pass_output(held);
    complete_log(output_stem(engine_) + ".log", snapshot_texts_);
    const bool used = complete_list(recorder_file(engine_, *parser_), snapshot_, snapshot_texts_);
    if (!used)
        redo_.clear();
    else if (!settle_links())
        redo_ = links_file(output_stem(engine_));
    to_remember_ = !used;
    say_of_snapshot(used ? "The preamble was remembered."
                         : "The preamble was executed: its snapshot has gone.");
}

} // namespace toolhost
