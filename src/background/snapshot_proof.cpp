#include "background/snapshot_proof.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "toolhost/gzip.h"
#include "toolhost/source_links.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::size_t largest_file = std::size_t{512} << 20;
constexpr const char *format_words = "(preloaded format=",
                     *memory_words = "\nHere is how much of TeX's memory";

// Returns the sizes of the files below FOLDER that count, by their relative paths.
std::map<std::string, std::uintmax_t> files_below(const std::string &folder, const std::string &job) {
    std::map<std::string, std::uintmax_t> found;
    std::error_code error;
    for (const auto &entry : files::recursive_directory_iterator(folder, error)) {
        const std::string path = entry.path().string().substr(folder.size() + 1);
        if (!entry.is_directory(error) && path != job + ".log" && path != job + ".fls")
            found[path] = entry.file_size(error);
    }
    return found;
}

// True when BARE ends with BEHIND. In a log there may be one blank or line end more: TeX prints it when the
// terminal's line is not empty, and behind the lines of the start it is. Adds to LENGTH how much of BARE it
// is.
bool ends_alike(const std::string &bare, const std::string &behind, bool is_log, std::size_t *length) {
    *length = behind.size();
    if (bare.ends_with(behind))
        return true;
    const std::size_t most = std::min(bare.size(), behind.size());
    std::size_t same = 0;
    while (same < most && bare[bare.size() - 1 - same] == behind[behind.size() - 1 - same])
        same++;
    const std::size_t rest = bare.size() - same;
    ++*length;
    return is_log && rest > 0 && (bare[rest - 1] == ' ' || bare[rest - 1] == '\n') &&
           bare.substr(0, rest - 1).ends_with(behind.substr(0, behind.size() - same));
}

// Finds the piece of BARE in whose place SNAP has the lines of the snapshot's start. JOINS tells that the
// line end before these lines is not in BARE.
bool find_piece(const std::string &bare, const std::string &snap, bool is_log, std::string *piece,
                bool *joins) {
    const std::size_t begins = snap.find(toolhost::snapshot_begins);
    if (begins == std::string::npos)
        return bare == snap;
    const std::size_t last = snap.find(toolhost::snapshot_ends, begins);
    if (last == std::string::npos)
        return false;
    std::string before = snap.substr(0, begins);
    const std::string behind = snap.substr(last + std::strlen(toolhost::snapshot_ends));
    *joins = !bare.starts_with(before) && before.ends_with('\n');
    if (*joins)
        before.pop_back();
    std::size_t length = 0;
    if (!bare.starts_with(before) || !ends_alike(bare, behind, is_log, &length) ||
        bare.size() < before.size() + length)
        return false;
    *piece = bare.substr(before.size(), bare.size() - before.size() - length);
    return true;
}

// Takes the name and date of the format out of the first line of LOG and returns them; cuts the log where it
// counts memory.
std::string take_banner(std::string *log) {
    log->resize(std::min(log->find(memory_words), log->size()));
    const std::size_t start = log->find(format_words), end = log->find(')', start);
    if (start == std::string::npos || end == std::string::npos || start > log->find('\n'))
        return {};
    const std::string banner = log->substr(start, end + 1 - start);
    log->erase(start, end + 1 - start);
    return banner;
}

// Returns the lines of a recorder's list as they are outside the scratch folder. The format that was read,
// whichever it is, is left without its folder.
std::vector<std::string> list_lines(std::string text, const Workshop &shop, const std::string &format) {
    const std::string out = shop.scratch + "/out/";
    for (std::size_t at = 0; (at = text.find(out, at)) != std::string::npos;)
        text.erase(at, out.size());
    std::vector<std::string> lines;
    for (std::size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    const std::string leaf = "/" + shop.call.search.name + ".fmt";
    for (std::string &line : lines)
        if (line == "INPUT " + format + leaf || (line.starts_with("INPUT /") && line.ends_with(leaf)))
            line = "INPUT " + leaf;
    return lines;
}

bool find_list(const std::vector<std::string> &bare, const std::vector<std::string> &snap,
               toolhost::SnapshotTexts *texts) {
    const std::size_t most = std::min(bare.size(), snap.size());
    std::size_t head = 0, tail = 0;
    while (head < most && bare[head] == snap[head])
        head++;
    while (tail < most - head && bare[bare.size() - 1 - tail] == snap[snap.size() - 1 - tail])
        tail++;
    const auto at = static_cast<std::ptrdiff_t>(head), end = static_cast<std::ptrdiff_t>(tail);
    texts->list_at = head;
    texts->list.assign(bare.begin() + at, bare.end() - end);
    texts->start.assign(snap.begin() + at, snap.end() - end);
    const std::string empty = std::string("INPUT ") + toolhost::empty_file;
    return std::all_of(texts->start.begin(), texts->start.end(), [&](const std::string &line) {
        return line == empty || std::find(texts->list.begin(), texts->list.end(), line) != texts->list.end();
    });
}

// Returns which files were read behind FILE by the recorder's list TEXT, as often as it says so.
std::vector<std::string> read_after(const std::string &text, const std::string &file) {
    const std::string head = "INPUT ";
    std::vector<std::string> names;
    bool begun = false;
    for (std::size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        if (text.compare(start, head.size(), head) != 0)
            continue;
        const std::string name = text.substr(start + head.size(), end - start - head.size());
        if (begun)
            names.push_back(name);
        begun = begun || name == file;
    }
    return names;
}

// True when the two files have the same bytes, or the same bytes compressed in them.
bool same_bytes(const std::string &one, const std::string &other, bool compressed) {
    std::string first, second;
    if (compressed)
        return toolhost::read_gzip(one, toolhost::largest_links, &first) &&
               toolhost::read_gzip(other, toolhost::largest_links, &second) && first == second;
    return common::read_file(one, largest_file) == common::read_file(other, largest_file);
}

std::string path_of_links(const Workshop &shop, const EngineRun &run) {
    return toolhost::links_file(run.output + "/" + shop.call.job);
}

} // namespace

std::vector<std::string> files_of_links(const Workshop &shop, const EngineRun &run) {
    std::string text;
    toolhost::read_gzip(path_of_links(shop, run), toolhost::largest_links, &text);
    return toolhost::linked_files(text);
}

std::string different_file(const std::string &one, const std::string &other, const std::string &job) {
    const auto first = files_below(one, job), second = files_below(other, job);
    for (const auto &[path, size] : second)
        if (!first.contains(path))
            return path;
    for (const auto &[path, size] : first) {
        const auto found = second.find(path);
        const bool links = path == toolhost::links_file(job);
        if (found == second.end() || (found->second != size && !links) || size > largest_file ||
            !same_bytes(one + "/" + path, other + "/" + path, links))
            return path;
    }
    return {};
}

bool find_texts(const Workshop &shop, const EngineRun &bare, const EngineRun &snap, const std::string &format,
                toolhost::SnapshotTexts *texts) {
    std::string bare_log = bare.log, snap_log = snap.log;
    texts->banner = take_banner(&bare_log);
    take_banner(&snap_log);
    return !texts->banner.empty() &&
           find_piece(bare.said, snap.said, false, &texts->said, &texts->said_joins) &&
           find_piece(bare_log, snap_log, true, &texts->logged, &texts->logged_joins) &&
           find_list(list_lines(bare.list, shop, format), list_lines(snap.list, shop, format), texts);
}

bool find_links(const Workshop &shop, const EngineRun &bare, const EngineRun &snap, const std::string &dump,
                toolhost::SnapshotTexts *texts) {
    const std::vector<std::string> of_dump = read_after(dump, shop.scratch + "/lines.tex"),
                                   of_bare = read_after(bare.list, common::leaf_of(shop.call.main));
    if (of_dump.size() > of_bare.size() || !std::equal(of_dump.begin(), of_dump.end(), of_bare.begin()))
        return false;
    const std::vector<std::string> bare_files = files_of_links(shop, bare),
                                   snap_files = files_of_links(shop, snap);
    const std::size_t others = snap_files.size() - std::min(snap_files.size(), shop.passed_files);
    if (others == 0 || others > bare_files.size())
        return false;
    // The document is the first in both.
    const auto last = bare_files.begin() + static_cast<std::ptrdiff_t>(1 + bare_files.size() - others);
    texts->passed_files = shop.passed_files;
    texts->preamble_files.assign(bare_files.begin() + 1, last);
    // What lies in the scratch folder lies elsewhere in another run.
    return std::none_of(texts->preamble_files.begin(), texts->preamble_files.end(),
                        [&](const std::string &name) { return name.starts_with(shop.scratch + "/"); }) &&
           toolhost::complete_links(path_of_links(shop, snap), *texts);
}

} // namespace background
