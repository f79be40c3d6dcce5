#include "toolhost/passes.h"

#include <algorithm>
#include <array>
#include <dirent.h>
#include <functional>

#include "common/host_files.h"
#include "common/index_settings.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/search_settings.h"
#include "toolhost/environment.h"
#include "toolhost/format_copies.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::size_t largest_file = std::size_t{64} << 20;
constexpr std::size_t largest_aux = std::size_t{4} << 20;
constexpr int most_aux_files = 2000;

// What engines write and never read.
constexpr std::array<std::string_view, 8> not_read = {".pdf", ".dvi", ".xdv",        ".ps",
                                                      ".log", ".fls", ".synctex.gz", ".synctex"};
// What engines write for other programs alone.
constexpr std::array<std::string_view, 7> for_others = {".idx", ".glo", ".acn",    ".ist",
                                                        ".bcf", ".xml", ".glsdefs"};

template <typename Names> bool ends_with_one(const std::string &path, const Names &names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view end) { return path.ends_with(end); });
}

std::string hash_text(const std::string &text) {
    return std::to_string(std::hash<std::string_view>{}(text));
}

// Takes the next line of TEXT away and returns it.
std::string_view take_line(std::string_view &text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// Returns what stands between the braces behind COMMAND at the head of LINE, empty when it is another
// command.
std::string argument_of(std::string_view line, std::string_view command) {
    if (!line.starts_with(command) || line.size() <= command.size() || line[command.size()] != '{')
        return {};
    line.remove_prefix(command.size() + 1);
    const std::size_t end = line.rfind('}');
    return std::string(line.substr(0, end));
}

// True for an .aux file of a document without labels, contents and the like.
bool has_no_effect(std::string_view aux) {
    while (!aux.empty()) {
        std::string_view line = take_line(aux);
        while (line.ends_with(' '))
            line.remove_suffix(1);
        if (!line.empty() && line != "\\relax" && !line.starts_with("\\gdef \\@abspage@last{"))
            return false;
    }
    return true;
}

std::vector<std::string> words_of(const std::string &list) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : list + ",") {
        if (c != ',') {
            word += c;
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

// What a bibliography program reads of the .aux file AUX and of those that it names.
struct Citations {
    std::string lines; // the commands that concern the bibliography
    std::vector<std::string> databases, styles;
    bool any = false;
};

void read_citations(const std::string &folder, const std::string &aux, Citations &citations, int &left) {
    if (left-- <= 0)
        return;
    const std::string text = common::read_file(aux, largest_aux);
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = take_line(rest);
        if (const std::string inner = argument_of(line, "\\@input"); !inner.empty()) {
            read_citations(folder, common::absolute_path(folder, inner), citations, left);
            continue;
        }
        const std::string data = argument_of(line, "\\bibdata"), style = argument_of(line, "\\bibstyle");
        const bool cites = line.starts_with("\\citation{");
        if (!cites && data.empty() && style.empty())
            continue;
        citations.any = citations.any || cites;
        citations.lines += line;
        citations.lines += '\n';
        for (std::string &name : words_of(data))
            citations.databases.push_back(std::move(name));
        if (!style.empty())
            citations.styles.push_back(style);
    }
}

// Returns the texts between OPEN and CLOSE in TEXT.
std::vector<std::string> enclosed(const std::string &text, const std::string &open,
                                  const std::string &close) {
    std::vector<std::string> found;
    for (std::size_t at = 0; (at = text.find(open, at)) != std::string::npos;) {
        at = text.find('>', at + open.size() - 1);
        const std::size_t end = at == std::string::npos ? at : text.find(close, at);
        if (end == std::string::npos)
            break;
        found.push_back(text.substr(at + 1, end - at - 1));
        at = end;
    }
    return found;
}

std::string makeindex_options() {
    std::string options;
    for (const common::IndexSetting &flag : common::index_flags)
        if (common::setting(flag.key).starts_with('1'))
            options += std::string(" ") + flag.option;
    for (const common::IndexSetting &named : common::index_values)
        if (const std::string value = common::setting(named.key); !value.empty())
            options += std::string(" ") + named.option + " " + value;
    return options;
}

std::string reason_for(const std::string &path) {
    const std::string name = common::leaf_of(path);
    const std::string kind = name.substr(std::min(name.rfind('.'), name.size()));
    const std::pair<std::string_view, const char *> reasons[] = {
        {".bbl", "the bibliography"}, {".ind", "the index"},           {".aux", "labels"},
        {".toc", "the contents"},     {".lof", "the list of figures"}, {".lot", "the list of tables"}};
    for (const auto &[end, what] : reasons)
        if (kind == end)
            return what;
    return name;
}

} // namespace

void Passes::begin(const EngineRun &engine, const std::string &main, const std::string &home, bool rerun) {
    engine_ = engine;
    main_ = main;
    home_ = home;
    stem_ = output_stem(engine);
    folder_ = common::folder_above(stem_);
    record_ = common::read_document_record(main);
    rerun_ = rerun;
    tried_.clear();
    if (rerun_)
        note_contents();
}

Passes::Content Passes::content_of(const std::string &path) {
    const std::string text = common::read_file(path, largest_file);
    if (text.empty() || (path.ends_with(".aux") && has_no_effect(text)))
        return {};
    return {text.size(), std::hash<std::string_view>{}(text)};
}

// Takes note of what the files hold that a pass may read before it writes them: those of the document's name,
// the .aux files that its own names, and those that an earlier run has read and written.
void Passes::note_contents() {
    before_.clear();
    const std::string head = common::leaf_of(stem_) + ".";
    DIR *const folder = opendir(folder_.c_str());
    while (const dirent *const entry = folder ? readdir(folder) : nullptr) {
        const std::string path = folder_ + "/" + entry->d_name;
        if (std::string_view(entry->d_name).starts_with(head) && !ends_with_one(path, not_read) &&
            path != main_)
            before_[path] = content_of(path);
    }
    if (folder)
        closedir(folder);
    const std::string aux = common::read_file(stem_ + ".aux", largest_aux);
    for (std::string_view rest = aux; !rest.empty();)
        if (const std::string inner = argument_of(take_line(rest), "\\@input"); !inner.empty()) {
            const std::string path = common::absolute_path(folder_, inner);
            before_[path] = content_of(path);
        }
    for (const std::vector<std::string> *paths : {&record_.carried, &files_.carried, &files_.written})
        for (const std::string &path : *paths)
            if (!before_.contains(path) && !ends_with_one(path, not_read))
                before_[path] = content_of(path);
}

// True when the file at PATH, which the last pass or a program after it wrote, holds something else than the
// last pass found, and the next pass reads it.
bool Passes::has_changed(const std::string &path) const {
    if (ends_with_one(path, not_read) || ends_with_one(path, for_others))
        return false;
    const auto known = before_.find(path);
    const Content before = known == before_.end() ? Content() : known->second;
    // The recorder does not tell of a file that was looked for in vain. A new one of the document's own name
    // is taken for one that the next pass will find.
    const bool is_new = before == Content() && (path.starts_with(stem_ + ".") || path.ends_with(".aux"));
    // What another program made the engine reads, or has looked for in vain.
    const bool is_made = std::find(made_.begin(), made_.end(), path) != made_.end();
    return (files_.carries(path) || is_made || is_new) && content_of(path) != before;
}

void Passes::engine_ended(const RecordedFiles &files) {
    files_ = files;
    made_.clear();
    products_.clear();
    if (rerun_)
        plan_programs();
}

void Passes::plan_programs() {
    const std::string control = stem_ + ".bcf";
    if (files_.wrote(control))
        plan_biber(control);
    for (const std::string &path : files_.written)
        if (path.ends_with(".aux") && !files_.wrote(control))
            plan_bibliography(path);
        else if (path.ends_with(".idx"))
            plan_index(path);
}

// Plans to run TOOL for the file that has the path STEM and EXTENSION, unless that was made from STATE
// before.
void Passes::plan(const char *tool, const std::string &options, const std::string &stem,
                  const char *extension, const char *reason, const std::string &state) {
    const std::string product = stem + extension;
    const auto made = record_.made.find(product);
    if (made != record_.made.end() && made->second == state && common::is_regular_file(product))
        return;
    if (const auto tried = tried_.find(product); tried != tried_.end() && tried->second == state)
        return;
    std::string name = common::leaf_of(stem);
    if (name.find_first_of(" \t") != std::string::npos)
        name = "\"" + name + "\"";
    NextProgram program;
    program.tool = tool;
    program.command = tool + options + " " + name;
    program.folder = common::folder_above(stem);
    program.sources = program.folder == engine_.folder ? "" : engine_.folder;
    program.reason = reason;
    products_.push_back({program, product, state});
}

// Returns what tells the states of the files NAMES that stand in the document's folders or in those that a
// setting names. The distribution's own do not change.
std::string Passes::states_of_sources(const std::vector<std::string> &names, const char *extension) {
    const char *const key = std::string_view(extension) == ".bib" ? "BIBINPUTS" : "BSTINPUTS";
    std::vector<std::string> folders = {engine_.folder, folder_};
    for (const std::string &element : common::split_list(common::setting(key))) {
        std::string folder = common::expand_setting_path(element, home_, engine_.space);
        while (folder.size() > 1 && folder.ends_with('/'))
            folder.pop_back();
        if (!folder.empty())
            folders.push_back(folder);
    }
    std::string states;
    for (const std::string &name : names) {
        const std::string leaf = name.ends_with(extension) ? name : name + extension;
        std::string found;
        for (const std::string &folder : folders)
            if (const std::string path = common::absolute_path(folder, leaf);
                found.empty() && common::is_regular_file(path))
                found = path;
        if (!found.empty())
            sources_.insert(found);
        states += leaf + "\n" + (found.empty() ? "" : found + "\n" + stamp_of(found)) + "\n";
    }
    return states;
}

void Passes::plan_bibliography(const std::string &aux) {
    Citations citations;
    int left = most_aux_files;
    read_citations(folder_, aux, citations, left);
    if (!citations.any || citations.databases.empty())
        return;
    const std::string options = common::setting("BIBTEXOPTIONS");
    const std::string state = citations.lines + options + "\n" +
                              states_of_sources(citations.databases, ".bib") +
                              states_of_sources(citations.styles, ".bst");
    plan("bibtex", options.empty() ? "" : " " + options, aux.substr(0, aux.size() - 4), ".bbl", "citations",
         hash_text(state));
}

void Passes::plan_biber(const std::string &control) {
    const std::string text = common::read_file(control, largest_file);
    const std::string state =
        text + states_of_sources(enclosed(text, "<bcf:datasource ", "</bcf:datasource>"), ".bib");
    plan("biber", "", stem_, ".bbl", "citations", hash_text(state));
}

void Passes::plan_index(const std::string &index) {
    const std::string text = common::read_file(index, largest_file), options = makeindex_options();
    if (!text.empty())
        plan("makeindex", options, index.substr(0, index.size() - 4), ".ind", "index entries",
             hash_text(options + "\n" + text));
}

void Passes::program_ended(bool well) {
    if (products_.empty())
        return;
    const Product &product = products_.front();
    record_.made[product.path] = well ? product.state : "failed";
    tried_[product.path] = product.state;
    made_.push_back(product.path);
    products_.pop_front();
}

bool Passes::next(NextProgram *next) {
    unstable_.clear();
    if (!rerun_)
        return false;
    if (!products_.empty()) {
        *next = products_.front().program;
        return true;
    }
    std::string changed;
    for (const std::vector<std::string> *paths : {&made_, &files_.written})
        for (const std::string &path : *paths)
            if (changed.empty() && has_changed(path))
                changed = path;
    if (changed.empty())
        return false;
    if (pass_ == most) {
        unstable_ = common::leaf_of(changed);
        return false;
    }
    begin_pass(reason_for(changed), next);
    return true;
}

bool Passes::run_again(const std::string &path, NextProgram *next) {
    if (pass_ == most)
        return false;
    begin_pass(common::leaf_of(path), next);
    return true;
}

void Passes::begin_pass(const std::string &reason, NextProgram *next) {
    pass_++;
    *next = {};
    next->reason = reason;
    note_contents();
}

void Passes::keep_record(const RecordedFiles &files, const std::string &output, bool whole) {
    if (main_.empty())
        return;
    std::vector<std::string> trees = {"/usr", "/etc", "/var/lib/texmf", common::transcripts_folder()};
    for (const std::string &tree : common::split_list(common::setting("TEXMFTREES")))
        if (!tree.empty())
            trees.push_back(common::expand_setting_path(tree, home_, engine_.space));
    std::vector<std::string> read;
    for (const std::string &path : files.read)
        if (!lies_in(path, trees))
            read.push_back(path);
    read.insert(read.end(), sources_.begin(), sources_.end());
    // A run that did not come to its end has not read the rest.
    for (const std::string &path : record_.read)
        if (!whole && std::find(read.begin(), read.end(), path) == read.end())
            read.push_back(path);
    record_.read = std::move(read);
    // What earlier runs wrote and this one did not is still theirs.
    std::vector<std::string> written = files.written;
    for (const std::string &path : record_.written)
        if (!files.wrote(path) && !record_.made.contains(path) && common::is_regular_file(path))
            written.push_back(path);
    record_.written = std::move(written);
    record_.carried = files.carried;
    for (const auto &[path, state] : record_.made)
        record_.written.push_back(path);
    record_.outputs.clear();
    if (!output.empty())
        record_.outputs.push_back(output);
    common::keep_document_record(main_, record_);
}

} // namespace toolhost
