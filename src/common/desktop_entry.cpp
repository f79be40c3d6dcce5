#include "common/desktop_entry.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <unistd.h>

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
    entry.name = values["Name"];
    entry.icon = values["Icon"];
    entry.exec = values["Exec"];
    entry.folder = values["Path"];
    entry.terminal = values["Terminal"] == "true";
    entry.bus_activatable = values["DBusActivatable"] == "true";
    return true;
}

std::string find_desktop_entry(const std::string &id) {
    const char *const shared = std::getenv("XDG_DATA_DIRS");
    std::string folders = data_folder() + ":";
    folders += shared && *shared ? shared : "/usr/local/share:/usr/share";
    const std::string leaf = id.ends_with(extension) ? id : id + std::string(extension);
    while (true) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        // A "-" in an id may stand for a folder.
        std::string relative = leaf;
        while (end > 0) {
            const std::string path = folders.substr(0, end) + "/applications/" + relative;
            if (access(path.c_str(), R_OK) == 0)
                return path;
            const std::size_t dash = relative.find('-', relative.find_last_of('/') + 1);
            if (dash == std::string::npos)
                break;
            relative[dash] = '/';
        }
        if (end == folders.size())
            return "";
        folders.erase(0, end + 1);
    }
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
