#include "background/snapshot_maker.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "background/format_place.h"
#include "background/snapshot_cut.h"
#include "background/snapshot_engine.h"
#include "background/snapshot_proof.h"
#include "background/snapshot_store.h"
#include "background/unpack.h"
#include "common/clock.h"
#include "common/command_output.h"
#include "common/document_record.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "toolhost/recorded_files.h"
#include "toolhost/source_links.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::uint64_t longest_work = 300'000'000; // microseconds for one snapshot on a busy machine
constexpr std::size_t longest_texts = 512 << 10;    // bytes of what a preamble has to say
constexpr std::size_t most_files = 2000;            // whose numbers a run passes over
constexpr std::int64_t freshest = 100'000'000;      // nanoseconds
constexpr const char *scratch_prefix = "snapshot-";

// Removes what earlier work left in the temporary folder, and returns a new folder there, empty when there is
// none that TeX can be told.
std::string make_scratch() {
    const std::string place = common::temporary_folder();
    std::error_code error;
    for (const auto &entry : files::directory_iterator(place, error))
        if (entry.path().filename().string().starts_with(scratch_prefix))
            files::remove_all(entry.path(), error);
    const std::string scratch = place + "/" + scratch_prefix + std::to_string(getpid());
    const bool plain = std::all_of(scratch.begin(), scratch.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/' ||
               c == '.' || c == '-' || c == '+' || c == '_';
    });
    return plain && mkdir(scratch.c_str(), 0700) == 0 ? scratch : "";
}

// True when the file at PATH was written or changed just now: the clock of the file system is coarse, so that
// another change may have the same time.
bool is_fresh(const std::string &path) {
    struct stat status;
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (stat(path.c_str(), &status) != 0)
        return false;
    const std::int64_t age =
        (now.tv_sec - status.st_ctim.tv_sec) * 1'000'000'000LL + now.tv_nsec - status.st_ctim.tv_nsec;
    return age < freshest && age > -freshest;
}

// The making of one snapshot.
class Maker {
  public:
    Maker(const toolhost::SnapshotCall &call, const toolhost::Variables &environment,
          const std::string &driver, const std::function<bool()> &goes_on)
        : shop_{call, environment, make_scratch(), {}, {}, {}, {}, 0}, driver_(driver) {
        const std::uint64_t end = common::now_microseconds() + longest_work;
        shop_.goes_on = [goes_on, end] { return common::now_microseconds() < end && goes_on(); };
    }
    ~Maker() {
        std::error_code ignored;
        if (!shop_.scratch.empty())
            files::remove_all(shop_.scratch, ignored);
    }
    Maker(const Maker &) = delete;
    Maker &operator=(const Maker &) = delete;

    std::string make() {
        if (shop_.scratch.empty() || !toolhost::read_preamble(shop_.call.main, &preamble_))
            return "no snapshot: there is no preamble to read";
        if (!copy_driver() || !note_format())
            return "no snapshot: the format is not found";
        note_written();
        std::string reason = starts_programs() ? "shell escape" : typeset_bare();
        if (reason.empty())
            reason = cut();
        if (reason.empty())
            reason = prove();
        if (!shop_.goes_on() || early_)
            return "no snapshot: ended early: " + reason;
        return reason.empty() ? keep() : refuse(reason);
    }

  private:
    // Puts the TeX file where no character of its path means anything to TeX.
    bool copy_driver() {
        std::error_code error;
        shop_.driver = shop_.scratch + "/snapshot.tex";
        return files::copy_file(driver_, shop_.driver, error) && !error;
    }

    // True when the settings of the distribution let a document start any program.
    bool starts_programs() const {
        std::vector<std::string> variables;
        for (const auto &[name, value] : shop_.environment)
            variables.push_back(name + "=" + value);
        const std::string value =
            common::output_of(common::folder_above(shop_.call.search.program) + "/kpsewhich",
                              {"-engine=" + common::leaf_of(shop_.call.search.program),
                               "-progname=" + shop_.call.search.progname, "--var-value=shell_escape"},
                              variables);
        return value.starts_with('t') || value.starts_with('y') || value.starts_with('1');
    }

    // Notes where the format comes from.
    bool note_format() {
        FormatPlace place;
        if (!find_format(shop_.call.search, shop_.environment, place) || place.path.empty())
            return false;
        original_ = place.path;
        for (const auto &[path, stamp] : place.stamps)
            base_.places.emplace_back(path, toolhost::snapshot_stamp(path));
        for (const std::string &path : {original_, shop_.call.search.program, driver_})
            base_.places.emplace_back(path, toolhost::snapshot_stamp(path));
        const toolhost::LookedFor own = {shop_.call.folder,
                                         {toolhost::folded(shop_.call.search.name + ".fmt")}};
        base_.names.emplace_back(own, toolhost::found_names(own));
        if (!base_.names.back().second.empty())
            return false;
        toolhost::FormatCopy copy;
        if (toolhost::find_copy(shop_.call.search, shop_.environment, shop_.call.folder, &copy) ==
            toolhost::CopyState::ready)
            shop_.format_copy = copy.folder;
        return true;
    }

    // Notes which files of the document's folder its runs write, and makes room for them.
    void note_written() {
        const std::string head = shop_.call.folder + "/";
        std::set<std::string> folders;
        for (const std::string &path : common::read_document_record(shop_.call.main).written)
            if (path.starts_with(head)) {
                written_.push_back(path.substr(head.size()));
                if (const std::size_t slash = written_.back().rfind('/'); slash != std::string::npos)
                    folders.insert(written_.back().substr(0, slash));
            }
        shop_.subfolders.assign(folders.begin(), folders.end());
    }

    // Typesets twice without a snapshot.
    std::string typeset_bare() {
        bare_ = typeset(shop_, "", "bare");
        if (!bare_.ended)
            return unended(bare_);
        if (bare_.status != 0)
            return "it does not typeset without error";
        if (bare_.log.find("runsystem(") != std::string::npos ||
            bare_.errors.find("runpopen") != std::string::npos)
            return "it starts a program";
        const toolhost::RecordedFiles recorded = toolhost::read_recorder_list(bare_.list);
        const std::string out = shop_.scratch + "/out/";
        for (const std::string &path : recorded.written)
            if (path.starts_with(out))
                written_.push_back(path.substr(out.size()));
        for (const std::string &path : recorded.read)
            if (!path.starts_with(shop_.scratch + "/") && !path.ends_with(".fmt"))
                body_.emplace_back(path, toolhost::snapshot_stamp(path));
        const EngineRun again = typeset(shop_, "", "again");
        if (!again.ended)
            return unended(again);
        const std::string file = different_file(bare_.output, again.output, shop_.call.job);
        if (again.status != 0 || !file.empty())
            return same_body() ? "it is different at every run: " + file : late("it has changed");
        return toolhost::writes_links(shop_.call.words) ? count_files() : "";
    }

    // Finds how many numbers of files a run with the snapshot must pass over. The document is a file more
    // than the preamble opens at most.
    std::string count_files() {
        shop_.passed_files = files_of_links(shop_, bare_).size();
        return shop_.passed_files == 0           ? "it leaves no SyncTeX file"
               : shop_.passed_files > most_files ? "it reads too many files"
                                                 : "";
    }

    std::string cut() {
        Dumped dumped = find_cut(shop_, preamble_, written_);
        early_ = early_ || dumped.ended_early;
        if (!dumped.good)
            return dumped.reason;
        lines_ = dumped.lines;
        part_ = dumped.reason;
        ground_ = std::move(dumped.ground);
        dump_list_ = std::move(dumped.run.list);
        const std::string packed = dumped.run.output + "/" + shop_.call.job + ".fmt";
        format_ = shop_.scratch + "/format";
        mkdir(format_.c_str(), 0700);
        std::uint64_t length = 0;
        const std::string unpacked = format_ + "/" + shop_.call.search.name + ".fmt";
        return unpack_format(packed, unpacked, "pdftex", shop_.goes_on, &length) == Unpacked::yes
                   ? ""
                   : late("it cannot be unpacked");
    }

    std::string prove() {
        const EngineRun snap = typeset(shop_, format_, "snap");
        if (!snap.ended)
            return unended(snap);
        if (snap.list.find("INPUT " + format_ + "/") == std::string::npos)
            return "the engine does not read it";
        const bool linked = shop_.passed_files == 0 || find_links(shop_, bare_, snap, dump_list_, &texts_);
        std::string file = different_file(bare_.output, snap.output, shop_.call.job);
        if (!linked && file.empty())
            file = toolhost::links_file(shop_.call.job);
        if (snap.status == 0 && file.empty() && find_texts(shop_, bare_, snap, format_, &texts_))
            return texts_.said.size() + texts_.logged.size() > longest_texts ? "it says too much" : "";
        if (!same_body())
            return late("it has changed");
        return "with it the results differ: " + (file.empty() ? "what is printed" : file);
    }

    // Returns WHY of something that says nothing about the document.
    std::string late(const std::string &why) {
        early_ = true;
        return why;
    }
    // Returns why RUN has not ended.
    std::string unended(const EngineRun &run) {
        return run.too_long ? "it takes too long" : late("a run was stopped");
    }
    // True when no file that the document reads has changed meanwhile.
    bool same_body() const {
        return std::all_of(body_.begin(), body_.end(), [](const auto &file) {
            return toolhost::snapshot_stamp(file.first) == file.second;
        });
    }
    // Puts together what the result rests on. False when something of it has changed since, or may change
    // without a sign.
    bool settle_ground() {
        ground_.preamble = preamble_.text;
        ground_.places.insert(ground_.places.begin(), base_.places.begin(), base_.places.end());
        ground_.names.insert(ground_.names.begin(), base_.names.begin(), base_.names.end());
        toolhost::Preamble now;
        return toolhost::read_preamble(shop_.call.main, &now) && now.text == preamble_.text &&
               toolhost::still_holds(ground_) &&
               std::none_of(ground_.places.begin(), ground_.places.end(),
                            [](const auto &place) { return place.second != "-" && is_fresh(place.first); });
    }

    std::string keep() {
        if (!settle_ground())
            return "no snapshot: something has changed";
        const std::string name =
            keep_snapshot(shop_.call, format_ + "/" + shop_.call.search.name + ".fmt", texts_);
        if (name.empty() ||
            !toolhost::write_note(shop_.call, shop_.environment, ground_, name, original_, ""))
            return "no snapshot: it cannot be kept";
        const std::string all = std::to_string(preamble_.lines.size());
        return "snapshot: " + std::to_string(lines_) + " of " + all + " lines" +
               (part_.empty() ? "" : " (" + part_ + ")");
    }

    std::string refuse(const std::string &reason) {
        // A refusal rests on all that the document reads, since the reason may lie behind the preamble. What
        // the runs write themselves changes each time.
        for (const auto &[path, stamp] : body_)
            if (path != shop_.call.main &&
                std::none_of(written_.begin(), written_.end(), [&path = path, this](const std::string &name) {
                    return shop_.call.folder + "/" + name == path;
                }))
                ground_.places.emplace_back(path, stamp);
        if (!settle_ground())
            return "no snapshot: something has changed";
        if (!toolhost::write_note(shop_.call, shop_.environment, ground_, "", original_, reason))
            return "no snapshot: it cannot be kept: " + reason;
        return "refused: " + reason;
    }

    Workshop shop_;
    toolhost::Preamble preamble_;
    std::string driver_, original_, format_, part_;
    std::string dump_list_;                                 // the recorder's list of the dump
    std::vector<std::string> written_;                      // relative to the document's folder
    std::vector<std::pair<std::string, std::string>> body_; // what the document reads, with stamps
    toolhost::SnapshotGround base_, ground_;
    toolhost::SnapshotTexts texts_;
    EngineRun bare_;
    std::size_t lines_ = 0;
    bool early_ = false;
};

} // namespace

std::string make_snapshot(const toolhost::SnapshotCall &call, const toolhost::Variables &environment,
                          const std::string &driver, const std::function<bool()> &goes_on) {
    toolhost::Snapshot known;
    if (!tidy_snapshots())
        return "no snapshot: there is no folder for it";
    switch (toolhost::find_snapshot(call, environment, &known)) {
    case toolhost::SnapshotState::ready:
        return "the snapshot holds";
    case toolhost::SnapshotState::refused:
        return "refused before: " + known.reason;
    case toolhost::SnapshotState::unknown:
        break;
    }
    if (!work_is_left())
        return "no snapshot: an hour of work has been done today";
    const std::uint64_t begun = common::now_microseconds();
    std::string result = Maker(call, environment, driver, goes_on).make();
    note_work((common::now_microseconds() - begun) / 1'000'000 + 1);
    return result;
}

} // namespace background
