#include "setpaths/ini_text.h"

#include <algorithm>
#include <cstdio>

#include "common/text.h"
#include "common/utf8.h"

namespace setpaths {

namespace {

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

std::string_view line_end_of(std::string_view line) {
    return line.ends_with("\r\n") ? "\r\n" : "\n";
}

// The name of the group that LINE begins. False when it begins none.
bool begins_group(std::string_view line, std::string *name) {
    const std::string text = common::trimmed(line.substr(0, line.find('\n')));
    if (!text.starts_with('[') || !text.ends_with(']'))
        return false;
    *name = text.substr(1, text.size() - 2);
    return true;
}

// True for a line of that key. A key may have options in brackets behind it that begin with a dollar sign.
bool has_key(std::string_view line, std::string_view key) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        return false;
    std::string name = common::trimmed(line.substr(0, equals));
    if (const std::size_t options = name.find("[$"); options != std::string::npos && name.ends_with(']'))
        name = common::trimmed(name.substr(0, options));
    return name == key;
}

// Puts the value into the lines: in the place of the key's own, else behind the last line of the group that
// is not empty. False when there is no such group.
bool put(std::vector<std::string> &lines, const std::string &group, const std::string &key,
         const std::string &value) {
    std::string name;
    bool inside = false, replaced = false;
    std::size_t place = 0;
    for (std::size_t i = 0; i < lines.size(); i++) {
        std::string &line = lines[i];
        if (begins_group(line, &name)) {
            inside = name == group;
            if (inside)
                place = i + 1;
        } else if (inside && has_key(line, key)) {
            line = key + "=" + value + std::string(line_end_of(line));
            replaced = true;
        } else if (inside && line.find_first_not_of(" \t\r\n") != std::string::npos) {
            place = i + 1;
        }
    }
    if (replaced || place == 0)
        return replaced;
    std::string &above = lines[place - 1];
    const std::string end(line_end_of(place > 1 ? lines[place - 2] : above));
    if (!above.ends_with('\n'))
        above += end;
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place), key + "=" + value + end);
    return true;
}

// Returns the code of the character that the LENGTH bytes (2 to 4) at AT encode.
unsigned code_of(std::string_view text, std::size_t at, std::size_t length) {
    unsigned code = static_cast<unsigned char>(text[at]) & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; i++)
        code = code << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    return code;
}

// Appends the character CODE as the toolkit's settings hold one outside ASCII.
void append_escape(std::string &raw, unsigned code) {
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\x%x", code);
    raw += escape;
}

} // namespace

bool ini_value(std::string_view text, std::string_view group, std::string_view key, std::string *value) {
    std::string name;
    bool inside = false, found = false;
    for (const std::string &line : lines_of(text)) {
        if (begins_group(line, &name))
            inside = name == group;
        else if (inside && has_key(line, key)) {
            *value = common::trimmed(line.substr(line.find('=') + 1, line.find('\n') - line.find('=') - 1));
            found = true;
        }
    }
    return found;
}

std::string with_ini_values(std::string_view text, const std::string &group, const IniValues &values) {
    std::vector<std::string> lines = lines_of(text);
    for (const auto &[key, value] : values) {
        if (put(lines, group, key, value))
            continue;
        const std::string end = lines.empty() ? "\n" : std::string(line_end_of(lines.back()));
        if (!lines.empty() && !lines.back().ends_with('\n'))
            lines.back() += end;
        if (!lines.empty())
            lines.push_back(end);
        lines.push_back("[" + group + "]" + end);
        lines.push_back(key + "=" + value + end);
    }
    std::string changed;
    for (const std::string &line : lines)
        changed += line;
    return changed;
}

std::string kde_value(std::string_view value) {
    std::string raw;
    for (const char c : value)
        raw += c == '\\' ? "\\\\" : std::string(1, c);
    return raw;
}

std::string toolkit_value(std::string_view value) {
    std::string raw;
    bool after_escape = false;
    for (std::size_t i = 0; i < value.size();) {
        const std::size_t length = common::utf8_length(value, i);
        const char c = value[i];
        if (length > 1) {
            unsigned code = code_of(value, i, length);
            // Beyond 16 bits it takes two.
            if (code > 0xFFFF) {
                append_escape(raw, 0xD800 + ((code - 0x10000) >> 10));
                code = 0xDC00 + ((code - 0x10000) & 0x3FF);
            }
            append_escape(raw, code);
            after_escape = true;
        } else if (after_escape && common::hex_digit(c) >= 0) {
            append_escape(raw, static_cast<unsigned char>(c));
        } else {
            raw += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
            after_escape = false;
        }
        i += length ? length : 1;
    }
    const bool quoted = value.find_first_of(";,=") != std::string_view::npos || value.starts_with(' ') ||
                        value.ends_with(' ');
    return quoted ? "\"" + raw + "\"" : raw;
}

} // namespace setpaths
