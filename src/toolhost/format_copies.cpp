#include "toolhost/format_copies.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

#include "common/background.h"
#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::size_t first_line_limit = 4096;
const char *const search_title = "quillon format search 1";

std::string hex(std::size_t number) {
    char text[20];
    std::snprintf(text, sizeof text, "%016zx", number);
    return text;
}

std::string hash_of(const std::vector<std::string> &fields) {
    return hex(std::hash<std::string>{}(common::joined_fields(fields)));
}

std::string without_extension(std::string name) {
    if (name.ends_with(".fmt"))
        name.resize(name.size() - 4);
    return name;
}

// Returns the format that the first line of the document names, "%&NAME"; empty when it names none.
std::string named_by_first_line(const std::string &main) {
    if (main.empty() || !common::is_regular_file(main))
        return {};
    const std::string head = common::read_file(main, first_line_limit);
    if (!head.starts_with("%&"))
        return {};
    std::string line = head.substr(2, std::min(head.find_first_of("\r\n"), head.size()) - 2);
    for (std::size_t start = line.find_first_not_of(" \t"); start != std::string::npos;) {
        const std::size_t end = std::min(line.find_first_of(" \t", start), line.size());
        if (line[start] != '-')
            return line.substr(start, end - start);
        start = line.find_first_not_of(" \t", end);
    }
    return {};
}

// True when the engine would read NAME as the name of a format in its search path.
bool is_plain_name(const std::string &name) {
    return !name.empty() && name.find('/') == std::string::npos && name.front() != '.';
}

// True when the elements of a search path can name FOLDER.
bool fits_search_path(const std::string &folder) {
    return folder.starts_with('/') && folder.find_first_of(":;,{}$~\"") == std::string::npos &&
           folder.find("//") == std::string::npos;
}

// True when the search goes by more than the one variable for all engines.
bool has_own_variable(const Variables &environment) {
    return std::any_of(environment.begin(), environment.end(), [](const auto &variable) {
        return (variable.first.starts_with("TEXFORMATS") && variable.first != "TEXFORMATS") ||
               variable.first == "KPATHSEA_DEBUG";
    });
}

// True when the folder and the file in it are this user's own, and nobody else can write to the folder.
bool is_private(const std::string &folder, const std::string &file, const std::string &length) {
    struct stat place, copy;
    return lstat(folder.c_str(), &place) == 0 && S_ISDIR(place.st_mode) && place.st_uid == geteuid() &&
           (place.st_mode & 022) == 0 && lstat(file.c_str(), &copy) == 0 && S_ISREG(copy.st_mode) &&
           copy.st_uid == geteuid() && std::to_string(copy.st_size) == length;
}

} // namespace

std::vector<FormatSearch> format_searches(const std::string &program, const std::vector<std::string> &words,
                                          const std::string &main) {
    std::vector<FormatSearch> searches;
    if (words.empty() || !option_value(words, "kpathsea-debug").empty())
        return searches;
    const std::string progname = option_value(words, "progname");
    std::string name = without_extension(option_value(words, "fmt"));
    for (std::size_t i = 1; name.empty() && i < words.size(); i++)
        if (words[i].starts_with('&'))
            name = without_extension(words[i].substr(1));
    if (name.empty() && has_option(words, "ini"))
        return searches;
    if (name.empty())
        name = progname.empty() ? common::leaf_of(words[0]) : progname;
    if (is_plain_name(name))
        searches.push_back({program, progname.empty() ? name : progname, name});
    const std::string named = without_extension(named_by_first_line(main));
    if (is_plain_name(named) && named != name)
        searches.push_back({program, named, named});
    return searches;
}

CopyState find_copy(const FormatSearch &search, const Variables &environment, const std::string &folder,
                    FormatCopy *copy) {
    const std::string cache = copies_folder();
    if (has_own_variable(environment) || !fits_search_path(cache))
        return CopyState::none;
    const std::string leaf = search.name + ".fmt";
    // Most search paths begin with the working folder.
    if (access((folder + "/" + leaf).c_str(), F_OK) == 0)
        return CopyState::none;
    const std::vector<std::string> fields = common::read_fields(search_file(search, environment)),
                                   head = search_head(search);
    if (fields.size() <= head.size() || fields.back() != "end" ||
        !std::equal(head.begin(), head.end(), fields.begin()))
        return CopyState::unknown;
    std::string name, length;
    for (std::size_t i = head.size(); i + 3 <= fields.size(); i += 3) {
        const std::string &kind = fields[i], &what = fields[i + 1], &value = fields[i + 2];
        if (kind == "copy") {
            name = what;
            length = value;
        } else if (kind == "original") {
            copy->original = what;
        }
        if (kind == "variable" ? variable_field(environment, what) != value
                               : kind != "copy" && stamp_of(what) != value)
            return CopyState::unknown;
    }
    if (name.empty())
        return CopyState::none;
    copy->folder = cache + "/" + name;
    if (!is_private(copy->folder, copy->folder + "/" + leaf, length))
        return CopyState::unknown;
    utimensat(AT_FDCWD, copy->folder.c_str(), nullptr, 0);
    return CopyState::ready;
}

void offer_copy(const FormatCopy &copy, Variables &environment) {
    std::string &path = environment["TEXFORMATS"];
    path.insert(0, copy.folder + ":");
}

void name_originals(const std::string &path, const std::vector<FormatCopy> &copies) {
    std::string text = common::read_file(path, SIZE_MAX);
    bool changed = false;
    for (const FormatCopy &copy : copies) {
        const std::string before = "INPUT " + copy.folder + "/" + common::leaf_of(copy.original) + "\n";
        const std::string after = "INPUT " + copy.original + "\n";
        for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos; at += after.size()) {
            text.replace(at, before.size(), after);
            changed = true;
        }
    }
    const std::string fresh = path + ".quillon";
    std::FILE *const file = changed ? std::fopen(fresh.c_str(), "we") : nullptr;
    if (!file)
        return;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !written || std::rename(fresh.c_str(), path.c_str()) != 0)
        unlink(fresh.c_str());
}

void ask_for_copies(const std::string &bundle, const std::vector<FormatSearch> &searches) {
    if (searches.empty() || !common::can_run(common::folder_above(searches[0].program) + "/kpsewhich"))
        return;
    std::vector<std::string> words = {bundle, searches[0].program};
    for (const FormatSearch &search : searches)
        words.insert(words.end(), {search.progname, search.name});
    common::start_in_background(common::above_own_program(1), std::move(words));
}

std::string copies_folder() {
    return common::transcripts_folder() + "/formats";
}

std::string search_file(const FormatSearch &search, const Variables &environment) {
    std::vector<std::string> fields = search_head(search);
    for (const char *name : {"TEXFORMATS", "TEXMFCNF", "HOME"})
        fields.push_back(variable_field(environment, name));
    return copies_folder() + "/" + hash_of(fields) + ".search";
}

std::string stamp_of(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return "-";
    char text[128];
    std::snprintf(
        text, sizeof text, "%llx:%llx:%llx:%lld.%09ld", static_cast<unsigned long long>(status.st_dev),
        static_cast<unsigned long long>(status.st_ino), static_cast<unsigned long long>(status.st_size),
        static_cast<long long>(status.st_mtim.tv_sec), status.st_mtim.tv_nsec);
    return text;
}

std::string copy_name(const std::string &original, const std::string &stamp) {
    return hash_of({original, stamp});
}

std::vector<std::string> search_head(const FormatSearch &search) {
    return {search_title, search.program, search.progname, search.name};
}

std::string variable_field(const Variables &environment, const std::string &name) {
    const auto found = environment.find(name);
    return found == environment.end() ? "" : "-" + found->second;
}

} // namespace toolhost
