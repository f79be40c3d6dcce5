// Names of the host and of the shell: colons and long names.
//
// A name that an FSSpec cannot hold gets a shortened one: its first bytes, byte 29, a number, and its
// extension. Names of the host that hold byte 29 or 30 themselves are shortened too, so that each name leads
// back to one file only.
#include <cstdio>
#include <cstring>
#include <unordered_map>

#include "common/path_forms.h"
#include "linux/files/host.h"

namespace quillon {

namespace {

constexpr char shortened_mark = 29;
constexpr std::size_t leaf_limit = 63, extension_limit = 12;

std::unordered_map<std::string, std::string> &shortened_names() {
    static std::unordered_map<std::string, std::string> names;
    return names;
}

std::unordered_map<std::string, std::string> &whole_names() {
    static std::unordered_map<std::string, std::string> names;
    return names;
}

// The first bytes of TEXT, at most LENGTH of them, which do not end inside a UTF-8 character.
std::string_view cut_text(std::string_view text, std::size_t length) {
    if (text.size() <= length)
        return text;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        length--;
    return text.substr(0, length);
}

std::string shorten(std::string_view host_name) {
    const auto known = shortened_names().find(std::string(host_name));
    if (known != shortened_names().end())
        return known->second;
    const std::size_t dot = host_name.rfind('.');
    std::string extension;
    if (dot != std::string_view::npos && host_name.size() - dot <= extension_limit)
        extension = host_name.substr(dot);
    char number[16];
    std::snprintf(number, sizeof number, "%c%zx", shortened_mark, shortened_names().size() + 1);
    std::string name(cut_text(host_name, leaf_limit - extension.size() - std::strlen(number)));
    for (std::string *const part : {&name, &extension})
        for (char &c : *part)
            if (c == ':' || c == common::colon_byte || c == shortened_mark)
                c = common::colon_byte;
    name += number + extension;
    shortened_names().emplace(host_name, name);
    whole_names().emplace(name, host_name);
    return name;
}

} // namespace

std::string HostName(std::string_view name) {
    if (name.find(shortened_mark) != std::string_view::npos) {
        const auto whole = whole_names().find(std::string(name));
        if (whole != whole_names().end())
            return whole->second;
    }
    std::string host_name(name);
    for (char &c : host_name)
        if (c == common::colon_byte)
            c = ':';
    return host_name;
}

std::string ShellName(std::string_view host_name) {
    if (host_name.size() > leaf_limit || host_name.find(common::colon_byte) != std::string_view::npos ||
        host_name.find(shortened_mark) != std::string_view::npos)
        return shorten(host_name);
    std::string name(host_name);
    for (char &c : name)
        if (c == ':')
            c = common::colon_byte;
    return name;
}

void from_pascal(const unsigned char *name, BoundedBuffer &text) {
    const std::string_view stored(reinterpret_cast<const char *>(name + 1), name[0]);
    text.clear();
    if (stored.find(shortened_mark) != std::string_view::npos) {
        std::string whole = HostName(stored);
        const bool ambiguous = whole.find(common::colon_byte) != std::string::npos ||
                               whole.find(shortened_mark) != std::string::npos;
        for (char &c : whole)
            if (c == ':')
                c = common::colon_byte;
        if (!ambiguous && text.copy(whole))
            return;
    }
    text.copy(stored);
}

} // namespace quillon
