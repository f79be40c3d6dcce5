#include "common/path_forms.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

#include "common/text.h"

namespace common {

std::string to_unix_path(std::string_view posix, unsigned char space) {
    std::string path(posix);
    for (char &c : path)
        c = c == ' ' ? static_cast<char>(space) : c == ':' ? colon_byte : c;
    return path;
}

std::string to_posix_path(std::string_view unix_path, unsigned char space) {
    std::string path(unix_path);
    for (char &c : path)
        c = static_cast<unsigned char>(c) == space ? ' ' : c == colon_byte ? ':' : c;
    return path;
}

std::string expand_setting_path(std::string_view value, const std::string &home, unsigned char space) {
    std::string rest = to_posix_path(value, space);
    if (rest == "~")
        return home;
    if (rest.starts_with("~/../"))
        return folder_above(home) + rest.substr(4);
    if (rest.starts_with("~/"))
        return home + rest.substr(1);
    return rest;
}

std::string absolute_path(const std::string &folder, std::string path) {
    while (path.starts_with("./"))
        path.erase(0, path.find_first_not_of('/', 1));
    if (path.starts_with('/'))
        return path;
    return folder.ends_with('/') ? folder + path : folder + "/" + path;
}

std::string from_working_folder(const std::string &path) {
    char *const folder = path.starts_with('/') ? nullptr : get_current_dir_name();
    const std::string here = folder ? folder : "/";
    std::free(folder);
    return absolute_path(here, path);
}

std::string canonical_path(const std::string &path) {
    char *const resolved = realpath(path.c_str(), nullptr);
    const std::string text = resolved ? resolved : path;
    std::free(resolved);
    return text;
}

std::string leaf_of(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

std::string folder_above(std::string path, int levels) {
    for (int level = 0; level < levels; level++) {
        const std::size_t slash = path.rfind('/');
        path.resize(slash == std::string::npos ? 0 : slash);
    }
    return path;
}

std::vector<std::string> split_list(std::string_view list) {
    std::vector<std::string> elements;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        elements.emplace_back(list.substr(start, end - start));
        start = end + 1;
    }
    return elements;
}

std::string file_uri(std::string_view path) {
    constexpr std::string_view plain = "-._~/!$&'()*+,;=:@";
    std::string uri = "file://";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
            plain.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            uri += '%';
            uri += "0123456789ABCDEF"[byte >> 4];
            uri += "0123456789ABCDEF"[byte & 15];
        }
    }
    return uri;
}

std::string path_of_uri(std::string_view uri) {
    constexpr std::string_view scheme = "file://";
    const std::size_t slash = uri.starts_with(scheme) ? uri.find('/', scheme.size()) : std::string_view::npos;
    std::string path;
    for (std::size_t i = slash; i < uri.size(); i++) {
        const bool encoded =
            uri[i] == '%' && i + 2 < uri.size() && hex_digit(uri[i + 1]) >= 0 && hex_digit(uri[i + 2]) >= 0;
        path += encoded ? static_cast<char>(hex_digit(uri[i + 1]) * 16 + hex_digit(uri[i + 2])) : uri[i];
        i += encoded ? 2 : 0;
    }
    return path;
}

} // namespace common
