#include "background/format_place.h"

#include <algorithm>
#include <set>

#include "common/command_output.h"
#include "common/host_files.h"
#include "common/path_forms.h"

namespace background {

namespace {

constexpr std::size_t largest_settings = 1 << 20;

bool is_name(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

// Adds the names of the variables that TEXT, a file of settings, mentions.
void add_variables(const std::string &text, std::set<std::string> &names) {
    for (std::size_t at = 0; (at = text.find('$', at)) != std::string::npos;) {
        at++;
        if (at < text.size() && text[at] == '{')
            at++;
        const std::size_t start = at;
        while (at < text.size() && is_name(text[at]))
            at++;
        if (at > start)
            names.insert(text.substr(start, at - start));
    }
}

// Splits a search path as the distribution prints it. False when an element is relative to the working
// folder, or stands for all folders below it.
bool split_path(const std::string &list, std::vector<std::string> &folders, bool on_disk) {
    for (std::string element : common::split_list(list)) {
        const bool in_databases = element.starts_with("!!");
        if (in_databases)
            element.erase(0, 2);
        if (element.empty() || element == "." || element == "./" || (in_databases && on_disk))
            continue;
        if (!element.starts_with('/') || element.find("//", 1) != std::string::npos)
            return false;
        folders.push_back(element);
    }
    return true;
}

// Runs kpsewhich for the search.
class Distribution {
  public:
    Distribution(const toolhost::FormatSearch &search, const toolhost::Variables &environment)
        : program_(common::folder_above(search.program) + "/kpsewhich"),
          options_({"-engine=" + common::leaf_of(search.program), "-progname=" + search.progname}) {
        for (const auto &[name, value] : environment)
            environment_.push_back(name + "=" + value);
    }
    std::string says(std::vector<std::string> words) const {
        words.insert(words.begin(), options_.begin(), options_.end());
        return common::output_of(program_, words, environment_);
    }
    bool there() const { return common::can_run(program_); }

  private:
    std::string program_;
    std::vector<std::string> options_, environment_;
};

} // namespace

bool find_format(const toolhost::FormatSearch &search, const toolhost::Variables &environment,
                 FormatPlace &place) {
    const Distribution distribution(search, environment);
    if (!distribution.there())
        return false;
    std::vector<std::string> settings, databases, folders;
    if (!split_path(distribution.says({"--show-path=cnf"}), settings, false) ||
        !split_path(distribution.says({"--show-path=ls-R"}), databases, false) ||
        !split_path(distribution.says({"--show-path=fmt"}), folders, true) || settings.empty())
        return false;
    for (std::string &folder : settings)
        folder += "/texmf.cnf";
    std::vector<std::string> places = settings;
    for (const std::string &folder : databases)
        for (const char *name : {"/ls-R", "/ls-r", "/aliases"})
            places.push_back(folder + name);
    places.insert(places.end(), folders.begin(), folders.end());
    // What changes from here on no longer has the stamp that is kept.
    for (const std::string &path : places)
        place.stamps.emplace_back(path, toolhost::stamp_of(path));
    std::set<std::string> names = {"HOME", "TEXMFCNF", "TEXFORMATS", "TEXMF", "TEXMFDBS"};
    for (const std::string &path : settings)
        add_variables(common::read_file(path, largest_settings), names);
    // The commands of an editor, which differ from run to run, name no folder.
    names.erase("TEXEDIT");
    names.erase("MPEDIT");
    place.variables.assign(names.begin(), names.end());
    place.path = distribution.says({"-format=fmt", search.name + ".fmt"});
    return place.path.empty() || place.path.starts_with('/');
}

} // namespace background
