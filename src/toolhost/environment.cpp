#include "toolhost/environment.h"

#include <algorithm>
#include <cctype>
#include <unistd.h>

#include "common/activation.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/search_settings.h"
#include "toolhost/guard.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::size_t largest_cnf = 1000000;

// Joins ELEMENTS (from own_elements) with what VARIABLE holds already. Where it holds nothing, the empty
// element in ELEMENTS stands for the distribution's default.
void put_search_path(Variables &variables, const std::string &variable, const std::string &elements) {
    const auto own = variables.find(variable);
    if (own == variables.end() || own->second.empty())
        variables[variable] = elements;
    else if (elements.ends_with(':'))
        own->second = elements + own->second;
    else
        own->second += elements;
}

void put_search_paths(Variables &variables, const std::string &home, unsigned char space) {
    std::vector<std::string> trees;
    for (const std::string &tree : common::split_list(common::setting("TEXMFTREES"))) {
        std::string path = common::expand_setting_path(tree, home, space);
        while (path.size() > 1 && path.ends_with('/'))
            path.pop_back();
        trees.push_back(path);
    }
    for (const common::SearchSetting &row : common::search_settings) {
        const std::string elements = own_elements(common::setting(row.key), trees, home, space);
        if (!elements.empty())
            put_search_path(variables, row.engine, elements);
    }
}

void put_options(Variables &variables, const common::Bundle &bundle) {
    if (is_engine(bundle.signature) || bundle.signature == "DVPS" || bundle.signature == "DPDF") {
        if (const std::string mode = common::setting("PDFTEXMODE"); !mode.empty())
            variables["MODE"] = mode;
        if (const std::string make = common::setting("PDFMAKEFONT"); !make.empty())
            variables["MKTEXPK"] = make[0] == '1' ? "1" : "0";
    }
    if (bundle.signature == "MPST" && common::setting("MPTEXFORMAT").starts_with('2'))
        variables["TEX"] = "latex";
}

} // namespace

bool lies_in(const std::string &path, const std::vector<std::string> &trees) {
    for (const std::string &tree : trees)
        if (!tree.empty() && path.starts_with(tree) &&
            (path.size() == tree.size() || path[tree.size()] == '/'))
            return true;
    return false;
}

bool is_engine(const std::string &signature) {
    return signature == "*Xet" || signature == "eXet" || signature == "PXET" || signature == "PxET" ||
           signature == "LUAX" || signature == "XELX";
}

std::string own_elements(std::string_view value, const std::vector<std::string> &trees,
                         const std::string &home, unsigned char space) {
    std::string result;
    bool any = false;
    bool preset_last = true;
    const std::vector<std::string> elements = common::split_list(value);
    for (std::size_t i = 0; i < elements.size(); i++) {
        if (elements[i].empty()) {
            // An empty element at the head asks for the default before the others.
            if (i == 0 && elements.size() > 1)
                preset_last = false;
            continue;
        }
        std::string path = common::expand_setting_path(elements[i], home, space);
        // The distribution reads these characters in its own way, so such a folder cannot be named.
        if (path.find_first_of(":$") != std::string::npos || lies_in(path, trees))
            continue;
        any = any || (path != "." && path != "./");
        if (!result.empty())
            result += ':';
        result += path;
    }
    if (!any)
        return {};
    return preset_last ? result + ":" : ":" + result;
}

void read_cnf(std::string_view text, Variables &variables) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line = line.substr(0, line.find_first_of("%#"));
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            continue;
        std::string name;
        bool good = true;
        for (const char c : line.substr(0, equals)) {
            if (c == ' ' || c == '\t')
                continue;
            good = good && (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.');
            name += c;
        }
        std::string_view value = line.substr(equals + 1);
        const std::size_t first = value.find_first_not_of(" \t");
        const std::size_t last = value.find_last_not_of(" \t\r");
        value = first == std::string_view::npos ? std::string_view() : value.substr(first, last - first + 1);
        if (good && !name.empty() && !std::isdigit(static_cast<unsigned char>(name[0])))
            variables[name] = value;
    }
}

std::string edit_command(const std::string &delimiter) {
    const std::string out = ">&" + std::to_string(edit_descriptor);
    return "{ echo %d; cat; } " + out + " <<'" + delimiter + "'\n%s\n" + delimiter + "\n";
}

Variables run_environment(const common::Bundle &bundle, const std::vector<std::string> &words,
                          unsigned char space, const std::string &delimiter) {
    Variables variables;
    for (char **variable = environ; *variable; variable++) {
        const std::string_view text = *variable;
        const std::size_t equals = text.find('=');
        // The activation token is for the window of the run.
        if (equals != std::string_view::npos && !text.starts_with("QUILLON_") &&
            !common::is_token_variable(text.substr(0, equals)))
            variables[std::string(text.substr(0, equals))] = text.substr(equals + 1);
    }
    if (const std::string place = common::expand_setting_path(common::setting("TEXBIN"), bundle.home, space);
        !place.empty())
        variables["PATH"] = place + ":" + variables["PATH"];
    put_search_paths(variables, bundle.home, space);
    put_options(variables, bundle);
    const std::string own = bundle.path + "/Contents/Resources/texmf";
    if (has_option(words, "ini") && access(own.c_str(), R_OK) == 0 &&
        own.find_first_of(":$") == std::string::npos) {
        std::string &inputs = variables["TEXINPUTS"];
        inputs = own + ":" + inputs;
    }
    if (is_engine(bundle.signature)) {
        read_cnf(common::read_file(common::formats_folder() + "/tex.cnf", largest_cnf), variables);
        if (bundle.signature == "PXET" || bundle.signature == "PxET")
            read_cnf(common::read_file(common::formats_folder() + "/pdftex.cnf", largest_cnf), variables);
    }
    // The engine breaks no line, so that the names in its output stay whole.
    variables["max_print_line"] = "1000000";
    variables["TERM"] = "dumb";
    variables["TEXEDIT"] = edit_command(delimiter);
    variables["MPEDIT"] = variables["TEXEDIT"];
    return variables;
}

} // namespace toolhost
