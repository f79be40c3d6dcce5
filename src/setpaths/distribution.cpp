#include "setpaths/distribution.h"

#include <algorithm>
#include <cstdlib>
#include <glob.h>
#include <unistd.h>

#include "common/command_output.h"
#include "common/host_files.h"
#include "common/search_settings.h"

namespace setpaths {

namespace {

std::string without_slashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

std::string usual_place() {
    std::string found;
    for (const char *pattern :
         {"/usr/local/texlive/*/bin/*", "/opt/texlive/*/bin/*", "/opt/texlive/bin/*", "/opt/texbin",
          "/usr/local/texlive/bin", "~/texlive/*/bin/*", "~/bin/texlive"}) {
        glob_t places{};
        if (glob(pattern, GLOB_TILDE, nullptr, &places) == 0)
            // The last in the order of names is the newest release.
            for (std::size_t i = 0; i < places.gl_pathc; i++)
                if (access((std::string(places.gl_pathv[i]) + "/pdftex").c_str(), X_OK) == 0)
                    found = places.gl_pathv[i];
        globfree(&places);
        if (!found.empty())
            break;
    }
    return found;
}

// Returns "<tree>/tex//" for an element "<tree>/tex/latex//", and any other element as it is. The shell looks
// the inputs of every format up along one list.
std::string widened(const std::string &element, const std::vector<std::string> &trees) {
    for (const std::string &tree : trees)
        if (element.starts_with(tree + "/tex/") && element.ends_with("//"))
            return tree + "/tex//";
    return element;
}

void read_path(const std::string &kpsewhich, const common::SearchSetting &row, const std::string &own_tree,
               Distribution &found) {
    const std::string key = row.key;
    const bool formats = key == "TEXFORMATS";
    const std::string list = common::output_of(kpsewhich, {"-progname=pdflatex", "-engine=pdftex",
                                                           formats ? "-expand-path" : "-expand-braces",
                                                           "$" + std::string(row.distribution)});
    if (list.starts_with('$'))
        return;
    std::vector<std::string> &path = found.paths[key];
    for (const std::string &element : split_paths(list)) {
        const std::string place = key == "TEXINPUTS" ? widened(element, found.trees) : element;
        const bool here = place == "." || place == "./";
        const std::string folder = without_slashes(place);
        // The folders of the person's own tree are taken even when they do not exist yet.
        const bool own = !own_tree.empty() && folder.starts_with(own_tree + "/") &&
                         (key == "TEXINPUTS" || key == "BIBINPUTS" || key == "BSTINPUTS");
        if ((!here && !own && !common::is_folder(folder)) ||
            std::find(path.begin(), path.end(), place) != path.end())
            continue;
        path.push_back(here ? "." : place);
        const bool known =
            here || std::any_of(found.trees.begin(), found.trees.end(), [&](const std::string &tree) {
                return folder == tree || folder.starts_with(tree + "/");
            });
        // A folder that the distribution names outside its trees counts as one of them.
        if (!known)
            found.trees.push_back(folder);
    }
    if (path.empty() || (path.size() == 1 && path[0] == "."))
        found.paths.erase(key);
}

} // namespace

std::vector<std::string> split_paths(const std::string &list) {
    std::vector<std::string> elements;
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        std::string element = list.substr(start, end - start);
        if (element.starts_with("!!"))
            element.erase(0, 2);
        while (element.ends_with("///"))
            element.pop_back();
        if (!element.empty())
            elements.push_back(element);
        start = end + 1;
    }
    return elements;
}

Distribution find_distribution(const std::string &programs) {
    Distribution found;
    found.programs = without_slashes(programs);
    if (programs.empty()) {
        const char *const search = std::getenv("PATH");
        const std::string engine = common::find_program("pdftex", search ? search : "/usr/bin:/bin", "/");
        found.programs = engine.empty() ? usual_place() : engine.substr(0, engine.rfind('/'));
    }
    // A program that the desktop starts may have another PATH than a terminal.
    for (const char *const folder : {"/usr/bin", "/bin", "/usr/local/bin"})
        found.programs_in_every_path |= found.programs == folder;
    const std::string kpsewhich = found.programs + "/kpsewhich";
    if (found.programs.empty() || access(kpsewhich.c_str(), X_OK) != 0)
        return found;
    for (const std::string &tree : split_paths(common::output_of(kpsewhich, {"-expand-braces", "$TEXMF"})))
        found.trees.push_back(without_slashes(tree));
    const std::string own_tree = without_slashes(common::output_of(kpsewhich, {"-var-value", "TEXMFHOME"}));
    for (const common::SearchSetting &row : common::search_settings)
        if (row.distribution)
            read_path(kpsewhich, row, own_tree, found);
    return found;
}

} // namespace setpaths
