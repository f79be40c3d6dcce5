#include "setpaths/findings.h"

#include <cstdlib>
#include <filesystem>
#include <set>

#include "common/command_output.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "setpaths/distribution.h"

namespace setpaths {

namespace {

constexpr const char *no_distribution =
    "No TeX distribution was found. Install TeX Live (the packages texlive-binaries and texlive-latex-base), "
    "or choose the folder of its programs.";

// A companion program, what it is for, and the package that has it.
struct Companion {
    const char *program, *use, *package;
};
constexpr Companion companions[] = {
    {"tex", "plain TeX", "texlive-binaries"},
    {"bibtex", "bibliographies", "texlive-binaries"},
    {"makeindex", "indexes", "texlive-binaries"},
    {"mpost", "MetaPost figures", "texlive-metapost"},
    {"dvips", "PostScript", "texlive-binaries"},
    {"dvipdfmx", "PDF from DVI files", "texlive-binaries"},
    {"ps2pdf", "PDF from PostScript files", "ghostscript"},
};

// The names of the formats in the folders of the search path, in the order of the alphabet.
std::set<std::string> format_names(const Proposal &proposal) {
    namespace fs = std::filesystem;
    std::set<std::string> names;
    for (const auto &[key, value] : proposal.values) {
        if (key != "TEXFORMATS")
            continue;
        for (const std::string &folder : split_paths(common::to_posix_path(value, proposal.space))) {
            std::error_code error;
            for (fs::directory_iterator files(folder, error), end; !error && files != end;
                 files.increment(error))
                if (files->path().extension() == ".fmt")
                    names.insert(files->path().stem().string());
        }
    }
    return names;
}

std::string listed(const std::set<std::string> &names) {
    std::string list;
    for (const std::string &name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace

std::vector<Finding> findings(const Proposal &proposal) {
    if (proposal.programs.empty())
        return {{false, no_distribution}};
    std::vector<Finding> found;
    std::string version = common::output_of(proposal.programs + "/pdftex", {"--version"});
    found.push_back({true, (version.empty() ? "pdfTeX" : version) + " in " + proposal.programs});
    const std::set<std::string> formats = format_names(proposal);
    found.push_back({!formats.empty(), formats.empty()
                                           ? "There are no formats: install texlive-latex-base, or build "
                                             "one with File > Build Format."
                                           : "Formats: " + listed(formats)});
    if (!formats.empty() && !formats.contains("pdflatex"))
        found.push_back({false, "LaTeX is missing: install the package texlive-latex-base."});
    const char *const search = std::getenv("PATH");
    std::string there;
    for (const Companion &companion : companions) {
        const bool own = common::can_run(proposal.programs + "/" + companion.program);
        if (own || !common::find_program(companion.program, search ? search : "/usr/bin:/bin", "/").empty())
            there += (there.empty() ? "" : ", ") + std::string(companion.program);
        else
            found.push_back({false, std::string(companion.program) + " (" + companion.use +
                                        ") is missing: install the package " + companion.package + "."});
    }
    if (!there.empty())
        found.insert(found.begin() + 2, {true, "Companions: " + there});
    return found;
}

} // namespace setpaths
