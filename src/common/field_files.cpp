#include "common/field_files.h"

#include <cstdio>
#include <unistd.h>

#include "common/host_files.h"

namespace common {

namespace {

constexpr std::size_t largest_file = 1 << 20;

} // namespace

std::vector<std::string> read_fields(const std::string &path) {
    const std::string text = read_file(path, largest_file);
    std::vector<std::string> fields;
    for (std::size_t start = 0, end; (end = text.find('\0', start)) != std::string::npos; start = end + 1)
        fields.push_back(text.substr(start, end - start));
    return fields;
}

std::string joined_fields(const std::vector<std::string> &fields) {
    std::string text;
    for (const std::string &field : fields) {
        text += field;
        text += '\0';
    }
    return text;
}

bool replace_file(const std::string &path, const std::string &text) {
    const std::string fresh = path + "." + std::to_string(getpid());
    std::FILE *const file = std::fopen(fresh.c_str(), "we");
    if (!file)
        return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) == 0 && written && std::rename(fresh.c_str(), path.c_str()) == 0)
        return true;
    unlink(fresh.c_str());
    return false;
}

} // namespace common
