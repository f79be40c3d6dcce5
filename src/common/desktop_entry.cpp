#include "common/desktop_entry.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <unistd.h>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/text.h"

namespace common {

namespace {

constexpr std::string_view extension = ".desktop";

// Replaces the escapes that a value of type string may hold.
std::string unescaped(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            value += text[i];
            continue;
        }
        const char c = text[++i];
        if (c == 's' || c == 'n' || c == 't' || c == 'r' || c == '\\')
            value += c == 's' ? ' ' : c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : '\\';
        else
            value += {'\\', c};
    }
    return value;
}

std::map<std::string, std::string> entry_group(const std::string &path) {
    std::map<std::string, std::string> values;
    std::ifstream file(path);
    std::string line;
    bool inside = false;
    while (std::getline(file, line)) {
        if (line.starts_with('['))
            inside = trimmed(line) == "[Desktop Entry]";
        const std::size_t equals = line.find('=');
        if (inside && equals != std::string::npos && !line.starts_with('#'))
            values.emplace(trimmed(std::string_view(line).substr(0, equals)),
                           unescaped(trimmed(std::string_view(line).substr(equals + 1))));
    }
    return values;
}

// Returns the value of KEY in the person's language (as "fr_CA", else as "fr"), else the common one.
std::string in_own_language(const std::map<std::string, std::string> &values, const std::string &key) {
    std::string locale;
    for (const char *const name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char *const value = std::getenv(name); locale.empty() && value)
            locale = value;
    locale.resize(std::min(locale.find_first_of(".@"), locale.size()));
    for (const std::string &language : {locale, locale.substr(0, locale.find('_'))})
        if (const auto found = values.find(key + "[" + language + "]"); found != values.end())
            return found->second;
    const auto found = values.find(key);
    return found == values.end() ? "" : found->second;
}

bool names_this_desktop(const std::string &list) {
    const char *const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    const std::vector<std::string> named = parts_of(list, ';');
    for (const std::string &desktop : parts_of(desktops ? desktops : "", ':'))
        if (std::find(named.begin(), named.end(), desktop) != named.end())
            return true;
    return false;
}

bool is_shown(std::map<std::string, std::string> &values) {
    const char *const search = std::getenv("PATH");
    const std::string &needed = values["TryExec"];
    return values["NoDisplay"] != "true" && values["Hidden"] != "true" &&
           (values["OnlyShowIn"].empty() || names_this_desktop(values["OnlyShowIn"])) &&
           !names_this_desktop(values["NotShowIn"]) &&
           (needed.empty() || !find_program(needed, search ? search : "/usr/bin:/bin", "/").empty());
}

struct Word {
    std::string text;
    bool quoted = false; // its field codes stay
};

// Splits an Exec line by its quoting rules. False when a quote is left open.
bool split(std::string_view line, std::vector<Word> &words) {
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] == ' ' || line[i] == '\t') {
            i++;
            continue;
        }
        Word word;
        for (; i < line.size() && line[i] != ' ' && line[i] != '\t'; i++) {
            if (line[i] != '"') {
                word.text += line[i];
                continue;
            }
            word.quoted = true;
            for (i++; i < line.size() && line[i] != '"'; i++) {
                if (line[i] == '\\' && i + 1 < line.size() &&
                    std::string_view("\"`$\\").find(line[i + 1]) < 4)
                    i++;
                word.text += line[i];
            }
            if (i == line.size())
                return false;
        }
        words.push_back(std::move(word));
    }
    return true;
}

// Returns one word with its field codes filled in. TAKES_FILE is set when a code stands for the document.
std::string filled(const std::string &word, const DesktopEntry &entry, const std::string &document,
                   bool &takes_file) {
    std::string text;
    for (std::size_t i = 0; i < word.size(); i++) {
        if (word[i] != '%' || i + 1 == word.size()) {
            text += word[i];
            continue;
        }
        switch (word[++i]) {
        case '%':
            text += '%';
            break;
        case 'f':
        case 'F':
            takes_file = true;
            text += document;
            break;
        case 'u':
        case 'U':
            takes_file = true;
            text += document.empty() ? "" : file_uri(document);
            break;
        case 'c':
            text += entry.name;
            break;
        case 'k':
            text += entry.path;
            break;
        default: // deprecated codes stand for nothing
            break;
        }
    }
    return text;
}

} // namespace

bool read_desktop_entry(const std::string &path, DesktopEntry &entry) {
    std::map<std::string, std::string> values = entry_group(path);
    if (values["Type"] != "Application" || (values["Exec"].empty() && values["DBusActivatable"] != "true"))
        return false;
    entry.path = path;
    entry.id = leaf_of(path);
    if (entry.id.ends_with(extension))
        entry.id.resize(entry.id.size() - extension.size());
    entry.name = in_own_language(values, "Name");
    entry.comment = in_own_language(values, "Comment");
    entry.icon = values["Icon"];
    entry.exec = values["Exec"];
    entry.folder = values["Path"];
    entry.terminal = values["Terminal"] == "true";
    entry.bus_activatable = values["DBusActivatable"] == "true";
    entry.types = parts_of(values["MimeType"], ';');
    entry.categories = parts_of(values["Categories"], ';');
    entry.shown = is_shown(values);
    return true;
}

std::vector<std::string> parts_of(std::string_view list, char separator) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        if (end > 0)
            parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

std::vector<std::string> entry_folders() {
    const char *const shared = std::getenv("XDG_DATA_DIRS");
    std::vector<std::string> folders = {data_folder()};
    for (const std::string &folder :
         parts_of(shared && *shared ? shared : "/usr/local/share:/usr/share", ':'))
        folders.push_back(folder);
    for (std::string &folder : folders)
        folder += "/applications";
    return folders;
}

std::string find_desktop_entry(const std::string &id) {
    const std::string leaf = id.ends_with(extension) ? id : id + std::string(extension);
    for (const std::string &folder : entry_folders()) {
        // A "-" in an id may stand for a folder.
        std::string relative = leaf;
        for (std::size_t dash = 0; dash != std::string::npos;) {
            const std::string path = folder + "/" + relative;
            if (access(path.c_str(), R_OK) == 0)
                return path;
            dash = relative.find('-', relative.find_last_of('/') + 1);
            if (dash != std::string::npos)
                relative[dash] = '/';
        }
    }
    return "";
}

std::vector<std::string> entry_command(const DesktopEntry &entry, const std::string &document) {
    std::vector<Word> words;
    std::vector<std::string> command;
    if (!split(entry.exec, words))
        return {};
    bool takes_file = false;
    for (const Word &word : words) {
        const std::string &text = word.text;
        if (word.quoted) {
            command.push_back(text);
        } else if (text == "%i") {
            if (!entry.icon.empty())
                command.insert(command.end(), {"--icon", entry.icon});
        } else {
            std::string value = filled(text, entry, document, takes_file);
            // A code that stands for nothing leaves no empty word.
            if (!value.empty())
                command.push_back(std::move(value));
        }
    }
    if (!takes_file && !document.empty() && !command.empty())
        command.push_back(document);
    return command;
}

} // namespace common
