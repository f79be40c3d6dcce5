// Font alias maps: one entry a bucket, the last one put in; an alias that comes again keeps its first file
// name.
#include "kpath/font_map.h"

#include <map>
#include <utility>

#include "fuzz/fuzz.h"
#include "support/temporary_home.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {
    "ptmr8r", " ",  "\t",       "Times-Roman", "\n",  "% comment", "\r\n",     "%",
    "ab",     "ba", "\xe9\x18", "\x01",        "a.b", "one ab\n",  "two ba\n", std::string(1, '\0')};
const int fuzz_runs = 2000;

namespace {

std::uint32_t bucket_of(const std::string &alias) {
    std::uint32_t sum = 0;
    for (const char c : alias)
        sum += static_cast<std::uint32_t>(static_cast<signed char>(c));
    return sum % 199;
}

std::vector<std::string> tokens(const std::string &line) {
    std::vector<std::string> found;
    for (std::size_t at = 0; (at = line.find_first_not_of(" \t", at)) != std::string::npos;) {
        const std::size_t end = std::min(line.find_first_of(" \t", at), line.size());
        found.push_back(line.substr(at, end - at));
        at = end;
    }
    return found;
}

// By bucket: the alias and its file name.
std::map<std::uint32_t, std::pair<std::string, std::string>> expected_map(const std::string &input) {
    std::map<std::uint32_t, std::pair<std::string, std::string>> expected;
    for (std::size_t at = 0, end; (end = input.find_first_of("\n\r", at)) != std::string::npos;
         at = end + 1) {
        std::string line = input.substr(at, end - at);
        line = line.substr(0, line.find('\0'));
        if (const std::size_t comment = line.rfind('%'); comment != std::string::npos)
            line.resize(comment);
        const std::vector<std::string> found = tokens(line);
        if (found.size() < 2)
            continue;
        auto &bucket = expected[bucket_of(found[1])];
        if (bucket.first != found[1])
            bucket = {found[1], found[0]};
    }
    return expected;
}

} // namespace

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    static auto &maps = *new std::vector<FontMap *>; // a map lives as long as the process
    home.file("work/texfonts.map", input);
    std::string folder = home.path("work/");
    char *list[] = {folder.data(), nullptr};
    maps.push_back(map_create(list));
    for (const auto &[bucket, entry] : expected_map(input)) {
        const std::string &alias = entry.first;
        std::string name = entry.second;
        const std::size_t dot = alias.rfind('.'), slash = alias.rfind('/');
        const std::size_t own_dot = name.rfind('.'), own_slash = name.rfind('/');
        const bool has_suffix =
            own_dot != std::string::npos && (own_slash == std::string::npos || own_dot > own_slash);
        if (dot != std::string::npos && (slash == std::string::npos || dot > slash) && !has_suffix)
            name += alias.substr(dot);
        require(taken(map_lookup(maps.back(), alias.c_str())) == name,
                "an alias is not found under its name");
    }
    std::free(map_lookup(maps.back(), input.c_str()));
}

} // namespace quillon::test
