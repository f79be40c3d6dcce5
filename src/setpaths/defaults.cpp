#include "setpaths/defaults.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/background.h"
#include "common/host_files.h"
#include "common/offered_applications.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/setting_numbers.h"
#include "setpaths/distribution.h"
#include "setpaths/settings_place.h"
#include "toolbox/resources.h"

namespace setpaths {

namespace {

constexpr const char *tex_cnf =
    "% Variables for every TeX engine that Quillon runs: NAME = VALUE, one a line.\n"
    "% They stand for the same names of the distribution's texmf.cnf. Examples:\n"
    "%\n"
    "% main_memory = 8000000\n"
    "% openout_any = p\n";
constexpr const char *pdftex_cnf =
    "% Variables for pdftex and pdfetex, read after tex.cnf: NAME = VALUE, one a line. Examples:\n"
    "%\n"
    "% pool_size = 8000000\n"
    "% shell_escape_commands = bibtex,makeindex,repstopdf\n";

bool write_new(const std::string &path, const char *text) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0)
        return errno == EEXIST;
    const auto size = static_cast<ssize_t>(std::strlen(text));
    const bool whole = write(file, text, static_cast<std::size_t>(size)) == size;
    close(file);
    return whole;
}

std::string joined(const std::vector<std::string> &elements, unsigned char space) {
    std::string list;
    for (const std::string &element : elements)
        // A folder with a colon cannot be an element of a list.
        if (element.find(':') == std::string::npos)
            list += (list.empty() ? "" : ":") + common::to_unix_path(element, space);
    return list;
}

void add_paths(const Distribution &found, unsigned char space, Values &values) {
    std::vector<std::string> formats = {common::formats_folder()};
    if (const auto path = found.paths.find("TEXFORMATS"); path != found.paths.end())
        formats.insert(formats.end(), path->second.begin(), path->second.end());
    for (const std::string &folder : formats)
        if (access((folder + "/pdflatex.fmt").c_str(), R_OK) == 0) {
            values.emplace_back("PDFTEXFORMAT", "pdflatex");
            break;
        }
    values.emplace_back("TEXMFTREES", joined(found.trees, space));
    if (!found.programs_in_every_path && !found.programs.empty())
        values.emplace_back("TEXBIN", common::to_unix_path(found.programs, space));
    values.emplace_back("TEXFORMATS", joined(formats, space));
    for (const auto &[key, path] : found.paths)
        if (key != "TEXFORMATS")
            values.emplace_back(key, joined(path, space));
}

void add_proposals(const std::string &home, unsigned char space, Values &values) {
    const std::vector<common::DesktopEntry> entries = common::installed_applications();
    for (const auto &[key, use] :
         {std::pair("PDFVIEW", common::Use::pdf_viewer), std::pair("VIEWPS", common::Use::postscript_viewer),
          std::pair("Editor", common::Use::editor), std::pair("DVIPREVIEW", common::Use::dvi_viewer)})
        if (const std::string entry = common::proposed_application(use, entries); !entry.empty())
            values.emplace_back(key, common::to_unix_path(entry, space));
    if (access((home + "/ps2pdf.app/Contents/PkgInfo").c_str(), R_OK) == 0)
        values.emplace_back("PS2PDFEXE", "~/ps2pdf.app");
}

// Writes CHOSEN to the preferences file at PATH, and those of VALUES whose keys are not set there.
bool write_values(const std::string &path, const Values &chosen, const Values &values) {
    std::vector<common::SettingChange> changes;
    for (const auto &[key, value] : chosen)
        changes.push_back({key, value});
    for (const auto &[key, value] : values) {
        char *const set = quillon::RecordRead(path.c_str(), key.c_str(), nullptr);
        const auto is_chosen = [&](const auto &change) { return change.first == key; };
        if (!set && !value.empty() && std::none_of(chosen.begin(), chosen.end(), is_chosen))
            changes.push_back({key, value});
        std::free(set);
    }
    return changes.empty() || common::write_preferences(path, changes);
}

// Creates the preferences file. It is written under another name and then linked to its own, so that nobody
// reads half of it. A file that somebody else made meanwhile stays.
bool create(const std::string &wanted, const Values &chosen, const Values &values) {
    const std::string path = place_of(wanted);
    const std::string folder = path.substr(0, path.rfind('/'));
    if (!common::make_folders(folder, 0755))
        return false;
    std::string fresh = folder + "/.quillon-preferences-XXXXXX";
    const int file = mkostemp(fresh.data(), O_CLOEXEC);
    if (file < 0)
        return false;
    fchmod(file, 0644);
    close(file);
    bool good = write_values(fresh, chosen, values);
    good = good && (link(fresh.c_str(), path.c_str()) == 0 || errno == EEXIST);
    unlink(fresh.c_str());
    unlink((folder + "/." + fresh.substr(folder.size() + 1) + ".lock").c_str());
    return good;
}

bool make_formats_folder() {
    const std::string folder = common::formats_folder();
    return common::make_folders(folder, 0755) && write_new(folder + "/tex.cnf", tex_cnf) &&
           write_new(folder + "/pdftex.cnf", pdftex_cnf);
}

// Has the formats that runs begin with unpacked, so that the first run is as fast as the others.
void ask_for_copies(const std::string &programs) {
    const std::string home = common::above_own_program(4);
    const std::string chosen = common::setting("PDFTEXFORMAT");
    std::vector<std::string> words = {home + "/pdftex.app", programs + "/pdftex"};
    for (const std::string &name : {chosen.empty() ? std::string("pdflatex") : chosen, std::string("pdftex")})
        words.insert(words.end(), {name, name});
    if (!programs.empty())
        common::start_in_background(home + "/Quillon.app/Contents/Linux", words);
}

} // namespace

Proposal propose(const std::string &home, const std::string &programs) {
    const bool exists = access(common::preferences_path().c_str(), F_OK) == 0;
    // In a preferences file without `SPACECHAR` the byte is 202, and its paths were written with that.
    const unsigned char space =
        exists ? common::space_byte()
               : static_cast<unsigned char>(common::setting_number(
                     nullptr, common::fresh_space, common::least_space, common::greatest_space));
    Proposal proposal;
    proposal.space = space;
    if (!exists)
        proposal.values.emplace_back("SPACECHAR", common::fresh_space);
    for (const char *key :
         {"USEPDFTEX", "AUTOVIEW", "DATABASE", "CONSOLESELECT", "RERUN", "MAGICCOMMENTS", "SNAPSHOT"})
        proposal.values.emplace_back(key, "1");
    proposal.values.emplace_back("DEBUG", "0");
    const Distribution found = find_distribution(programs);
    proposal.programs = found.programs;
    if (!found.programs.empty())
        add_paths(found, space, proposal.values);
    add_proposals(home, space, proposal.values);
    return proposal;
}

bool write_settings(const Values &changes, const Proposal &proposal) {
    const std::string path = common::preferences_path();
    if (!make_formats_folder())
        std::fprintf(stderr, "setpaths: I can't make %s\n", common::formats_folder().c_str());
    if (access(path.c_str(), F_OK) == 0 ? write_values(path, changes, proposal.values)
                                        : create(path, changes, proposal.values)) {
        ask_for_copies(proposal.programs);
        return true;
    }
    std::fprintf(stderr, "setpaths: I can't write %s: %s\n", place_of(path).c_str(), std::strerror(errno));
    return false;
}

bool write_defaults(const std::string &home) {
    const Proposal proposal = propose(home, "");
    if (proposal.programs.empty())
        std::fprintf(stderr, "setpaths: I can't find a TeX distribution\n");
    return write_settings({}, proposal);
}

} // namespace setpaths
