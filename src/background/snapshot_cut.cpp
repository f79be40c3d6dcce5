#include "background/snapshot_cut.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <string_view>

#include "background/snapshot_search.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "toolhost/recorded_files.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::size_t largest_format = std::size_t{100} << 20;
constexpr const char *page_begins = "quillon page begins\n", *page_ends = "quillon page ends\n";
// What may be on the page behind the preamble: whatsits, and what the driver puts there itself.
constexpr std::string_view on_page[] = {".\\write",
                                        ".\\pdf",
                                        ".\\special",
                                        ".\\openout",
                                        ".\\closeout",
                                        ".\\glue(\\topskip)",
                                        ".\\vbox(0.0+0.0)x0.0"};

bool contains(const std::string &text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// Returns the first line of TEXT from AT on.
std::string line_at(const std::string &text, std::size_t at) {
    return text.substr(at, std::min(text.find('\n', at), text.size()) - at);
}

std::string error_of(const std::string &log) {
    const std::size_t at = log.find("\n! ");
    return at == std::string::npos ? "the dump failed" : line_at(log, at + 3);
}

// Returns what is on the page that cannot be put back.
std::string page_problem(const std::string &log) {
    const std::size_t start = log.find(page_begins), end = log.find(page_ends);
    if (start == std::string::npos)
        return {};
    bool any = false;
    for (std::size_t at = start; at < end && at != std::string::npos; at = log.find('\n', at + 1)) {
        const std::string line = line_at(log, at + 1);
        if (!line.starts_with('.') || line.starts_with(".."))
            continue;
        any = true;
        if (std::none_of(std::begin(on_page), std::end(on_page),
                         [&](std::string_view head) { return line.starts_with(head); }))
            return "its page is not empty: " + line;
    }
    return any ? "" : "its page is not known";
}

// Reads from LOG which files were opened for writing, "\openoutN = `NAME'.", as TeX code that does it again.
bool read_opens(const std::string &log, std::string *opens) {
    opens->clear();
    for (std::size_t at = 0; (at = log.find("\n\\openout", at)) != std::string::npos; at++) {
        const std::string line = line_at(log, at + 1);
        const std::size_t name = line.find(" = `"), end = line.rfind("'.");
        if (name == std::string::npos || end == std::string::npos || end < name)
            return false;
        const std::string file = line.substr(name + 4, end - name - 4);
        if (file.find_first_of(" \"\\{}%#~$^&") != std::string::npos ||
            std::any_of(file.begin(), file.end(), [](char c) { return static_cast<signed char>(c) <= 32; }))
            return false;
        *opens += "\\immediate" + line.substr(0, name) + "=" + file + " ";
    }
    return true;
}

// One try: both dumps of the first LINES lines.
class Cutter {
  public:
    Cutter(const Workshop &shop, const toolhost::Preamble &preamble, const std::vector<std::string> &written)
        : shop_(shop), preamble_(preamble), written_(written) {}

    Dumped try_lines(std::size_t lines) const {
        Dumped result;
        result.lines = lines;
        const std::string text = lines < preamble_.lines.size()
                                     ? preamble_.text.substr(0, preamble_.lines[lines])
                                     : preamble_.text;
        std::string opens, again;
        EngineRun first = dump(shop_, text, lines, "", false);
        result.reason = dump_problem(shop_, first, &opens);
        if (result.reason.empty() && !opens.empty()) {
            first = dump(shop_, text, lines, opens, false);
            result.reason = dump_problem(shop_, first, &again);
        }
        const std::string format = first.output + "/" + shop_.call.job + ".fmt";
        const std::string bytes = common::read_file(format, largest_format);
        if (result.reason.empty())
            result.reason = look_at_searches(first, &result.ground);
        // What changes from here on has no longer the stamp that is kept, so this is the dump that is used.
        if (result.reason.empty()) {
            result.run = dump(shop_, text, lines, opens, true);
            result.reason = dump_problem(shop_, result.run, &again);
        }
        if (result.reason.empty() && common::read_file(format, largest_format) != bytes)
            result.reason = "it depends on the date";
        // An engine that dies without a word, as on a full disk, says nothing about the preamble.
        const EngineRun &last = result.run.output.empty() ? first : result.run;
        result.ended_early = !shop_.goes_on() || (!last.ended && !last.too_long) ||
                             (last.status != 0 && !contains(last.log, "\n! "));
        result.good = result.reason.empty() && !result.ended_early;
        return result;
    }

  private:
    // Adds what RUN has read and looked for to GROUND.
    std::string look_at_searches(const EngineRun &run, toolhost::SnapshotGround *ground) const {
        const toolhost::RecordedFiles recorded = toolhost::read_recorder_list(run.list);
        for (const std::string &path : recorded.read) {
            if (path.starts_with(shop_.scratch + "/") || path.ends_with(".fmt"))
                continue;
            if (is_written(path))
                return "it reads what the run writes: " + common::leaf_of(path);
            ground->places.emplace_back(path, toolhost::snapshot_stamp(path));
        }
        const std::string why = add_searches(run.errors, shop_.call.folder, {shop_.scratch + "/"}, ground);
        if (!why.empty())
            return why;
        for (const auto &[looked, found] : ground->names)
            for (const std::string &path : written_)
                if (looked.folder == common::folder_above(shop_.call.folder + "/" + path) &&
                    std::binary_search(looked.names.begin(), looked.names.end(),
                                       toolhost::folded(common::leaf_of(path))))
                    return "it looks for what the run writes: " + path;
        return {};
    }
    bool is_written(const std::string &path) const {
        return std::any_of(written_.begin(), written_.end(),
                           [&](const std::string &name) { return shop_.call.folder + "/" + name == path; });
    }

    const Workshop &shop_;
    const toolhost::Preamble &preamble_;
    const std::vector<std::string> &written_;
};

// Moves DEPTH by the braces of LINE.
void count_braces(std::string_view line, int *depth) {
    for (std::size_t i = 0; i < line.size() && line[i] != '%'; i++) {
        if (line[i] == '\\')
            i++;
        else if (line[i] == '{')
            ++*depth;
        else if (line[i] == '}')
            --*depth;
    }
}

} // namespace

std::string dump_problem(const Workshop &shop, const EngineRun &run, std::string *opens) {
    const std::string format = shop.call.job + ".fmt";
    if (!run.ended)
        return run.too_long ? "the dump takes too long" : "the dump was stopped";
    if (run.status != 0 || !common::is_regular_file(run.output + "/" + format))
        return error_of(run.log);
    if (contains(run.log, "runsystem("))
        return "it starts a program";
    std::error_code error;
    for (const auto &entry : files::recursive_directory_iterator(run.output, error)) {
        const std::string leaf = entry.path().filename();
        if (entry.is_directory(error) || leaf == format || leaf == shop.call.job + ".log" ||
            leaf == shop.call.job + ".fls")
            continue;
        if (entry.file_size(error) != 0)
            return "it writes " + leaf;
    }
    if (!read_opens(run.log, opens))
        return "the name of a file that it opens";
    return page_problem(run.log);
}

std::vector<std::size_t> cuts_of(const toolhost::Preamble &preamble) {
    std::vector<std::size_t> cuts;
    bool class_read = false;
    int depth = 0;
    for (std::size_t i = 0; i < preamble.lines.size(); i++) {
        const std::size_t end = i + 1 < preamble.lines.size() ? preamble.lines[i + 1] : preamble.text.size();
        std::string_view line =
            std::string_view(preamble.text).substr(preamble.lines[i], end - preamble.lines[i]);
        const std::size_t head = std::min(line.find_first_not_of(" \t"), line.size());
        if (class_read && depth == 0 && line.substr(head).starts_with('\\'))
            cuts.push_back(i + 1);
        class_read = class_read || line.find("\\documentclass") != std::string_view::npos;
        count_braces(line, &depth);
    }
    return cuts;
}

Dumped find_cut(const Workshop &shop, const toolhost::Preamble &preamble,
                const std::vector<std::string> &written) {
    const Cutter cutter(shop, preamble, written);
    Dumped best = cutter.try_lines(preamble.lines.size());
    if (best.good || best.ended_early)
        return best;
    const std::vector<std::size_t> cuts = cuts_of(preamble);
    std::size_t low = 0, high = cuts.size();
    const std::string reason = best.reason;
    std::size_t good_lines = 0;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const Dumped part = cutter.try_lines(cuts[middle] - 1);
        if (part.ended_early)
            return part;
        if (part.good) {
            good_lines = part.lines;
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    if (good_lines == 0)
        return best;
    // The last one that was tried need not be the longest one that is good.
    best = cutter.try_lines(good_lines);
    if (best.good)
        best.reason = reason;
    return best;
}

} // namespace background
