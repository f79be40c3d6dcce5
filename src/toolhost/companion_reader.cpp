#include "toolhost/companion_reader.h"

#include <cstdlib>
#include <fstream>

#include "common/host_files.h"
#include "common/path_forms.h"

namespace toolhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::size_t longest_line = 65536;
constexpr long most_index_lines = 1000000;

long number(std::string_view text) {
    return std::strtol(std::string(text.substr(0, 9)).c_str(), nullptr, 10);
}

} // namespace

CompanionReader::CompanionReader(std::string folder, std::string sources)
    : folder_(std::move(folder)), sources_(std::move(sources)) {}

std::string CompanionReader::path(std::string_view name) const {
    const std::string here = common::absolute_path(folder_, std::string(name));
    if (sources_.empty() || common::is_regular_file(here))
        return here;
    const std::string there = common::absolute_path(sources_, std::string(name));
    return common::is_regular_file(there) ? there : here;
}

void CompanionReader::feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        line_.append(bytes.substr(0, end));
        if (end == npos && line_.size() < longest_line)
            return;
        if (line_.ends_with('\r'))
            line_.pop_back();
        line(line_);
        line_.clear();
        if (end == npos)
            return;
        bytes.remove_prefix(end + 1);
    }
}

void CompanionReader::end_warning() {
    if (warning_.empty())
        return;
    const bool reference = warning_.starts_with("I didn't find a database entry for ");
    problems_.add(reference ? ProblemKind::reference : ProblemKind::warning, auxiliary_, 0, warning_);
    warning_.clear();
}

// Reads "TEXT---line 5 of file NAME", where TEXT may stand in the line before, and the place of a warning,
// "--line 5 of file NAME". False for any other line.
bool CompanionReader::place(std::string_view text) {
    constexpr std::string_view of_file = " of file ", reading = "---while reading file ";
    if (const std::size_t at = text.find(reading); at != npos && at > 0) {
        problems_.add(ProblemKind::error, path(text.substr(at + reading.size())), 0, text.substr(0, at));
        return true;
    }
    const std::size_t at = text.find("--line "), of = text.find(of_file, at == npos ? npos : at);
    if (of == npos || number(text.substr(at + 7)) <= 0)
        return false;
    const std::string file = path(text.substr(of + of_file.size()));
    const long where = number(text.substr(at + 7));
    if (at == 0 && !warning_.empty()) {
        problems_.add(ProblemKind::warning, file, where, warning_);
        warning_.clear();
    } else if (at > 0 && text[at - 1] == '-') {
        problems_.add(ProblemKind::error, file, where, at > 1 ? text.substr(0, at - 1) : before_);
    } else {
        return false;
    }
    return true;
}

// Adds a message of biber. "BibTeX subsystem: COPY, line 5, TEXT" is of a line of a copy of the database.
// Which one that was is known of an error, which is said while it is read, and where there is one alone.
void CompanionReader::add_of_biber(ProblemKind kind, std::string_view text) {
    constexpr std::string_view subsystem = "BibTeX subsystem: ", line = ", line ";
    const std::size_t at = text.starts_with(subsystem) ? text.find(line) : npos;
    const std::size_t end = at == npos ? npos : text.find(", ", at + line.size());
    const bool known = databases_ == 1 || (databases_ > 1 && kind == ProblemKind::error);
    // Before it names its control file it has no file that a problem could be in.
    if (auxiliary_.empty())
        return;
    if (text.starts_with("I didn't find a database entry for "))
        problems_.add(ProblemKind::reference, auxiliary_, 0, text);
    else if (end != npos && known)
        problems_.add(kind, database_, number(text.substr(at + line.size())), text.substr(end + 2));
    else
        problems_.add(kind, auxiliary_, 0, text);
}

void CompanionReader::biber_line(std::string_view text) {
    constexpr std::string_view info = "INFO - ", warns = "WARN - ", fails = "ERROR - ";
    constexpr std::string_view reads = "Reading '", found = "Found BibTeX data source '";
    if (text.starts_with(warns))
        add_of_biber(ProblemKind::warning, text.substr(warns.size()));
    else if (text.starts_with(fails))
        add_of_biber(ProblemKind::error, text.substr(fails.size()));
    if (!text.starts_with(info) || !text.ends_with('\''))
        return;
    text = text.substr(info.size(), text.size() - info.size() - 1);
    if (text.starts_with(reads) && auxiliary_.empty())
        auxiliary_ = path(text.substr(reads.size()));
    if (!text.starts_with(found))
        return;
    database_ = path(text.substr(found.size()));
    databases_++;
}

void CompanionReader::line(std::string_view text) {
    biber_line(text);
    constexpr std::string_view warns = "Warning--",
                               reads = "The top-level auxiliary file: ", log = "Transcript written in ";
    const bool placed = place(text);
    end_warning();
    if (!placed && text.starts_with(warns))
        warning_ = text.substr(warns.size());
    else if (text.starts_with(reads))
        auxiliary_ = path(text.substr(reads.size()));
    else if (text.starts_with(log) && text.ends_with('.'))
        index_log_ = path(text.substr(log.size(), text.size() - log.size() - 1));
    if (text.find(" rejected)") != npos && text.find(" 0 rejected)") == npos)
        index_speaks_ = true;
    if (text.find(" warning") != npos && text.find(" 0 warnings)") == npos)
        index_speaks_ = true;
    before_ = text;
}

// Reads "!! Input index error (file = NAME, line = 5):" and "## Warning (input = NAME, line = 5; output ...",
// and the text in the line below.
void CompanionReader::index_line(std::string_view text) {
    const bool error = text.starts_with("!! "), warning = text.starts_with("## Warning ");
    if (error || warning) {
        const std::size_t name = text.find(" = "), line = text.rfind(", line = ", text.find("; output"));
        if (name == npos || line == npos || line < name + 3)
            return;
        index_kind_ = error ? ProblemKind::error : ProblemKind::warning;
        index_file_ = path(text.substr(name + 3, line - name - 3));
        index_line_ = number(text.substr(line + 9));
    } else if (!index_file_.empty()) {
        const std::size_t begin = text.starts_with("   -- ") ? 6 : 0;
        problems_.add(index_kind_, index_file_, index_line_, text.substr(begin));
        index_file_.clear();
    }
}

void CompanionReader::finish() {
    if (!line_.empty())
        line(line_);
    end_warning();
    // Only a regular file is opened, since nothing else ends.
    if (!index_speaks_ || index_log_.empty() || !common::is_regular_file(index_log_))
        return;
    std::ifstream file(index_log_, std::ios::binary);
    std::string text;
    for (long i = 0; i < most_index_lines && std::getline(file, text); i++)
        index_line(text);
}

} // namespace toolhost
