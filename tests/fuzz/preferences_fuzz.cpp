// The records of the preferences file: whatever it holds, reading ends, and a write changes its own record
// alone.
#include <cstdlib>
#include <optional>

#include "fuzz/fuzz.h"
#include "support/temporary_home.h"
#include "toolbox/resources.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"KEY=",  "OTHER=",      "EMPTY=\n", "=",     "\n",  "\r",
                                             "\\",    "\\n",         "\\x41",    "\\xZZ", "\\x", "# note\n",
                                             "value", "KEY=value\n", "\\r\\\\",  " "};
const int fuzz_runs = 1500;

namespace {

constexpr const char *keys[] = {"KEY", "OTHER", "EMPTY", "NONE", "value"};

using Values = std::vector<std::optional<std::string>>;

std::optional<std::string> read(const std::string &path, const char *key) {
    std::size_t size = 0;
    char *const value = RecordRead(path.c_str(), key, &size);
    if (!value)
        return std::nullopt;
    std::string text(value, size);
    std::free(value);
    return text;
}

Values read_all(const std::string &path) {
    Values values;
    for (const char *const key : keys)
        values.push_back(read(path, key));
    return values;
}

// In memory where there is such a place: the writes are synced.
std::string folder() {
    return std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
}

} // namespace

void fuzz_one(const std::string &input) {
    static const std::string path = folder() + "/quillon-fuzz-" + std::to_string(::getpid());
    // Half a line end at the file's end becomes a whole one by the first line that follows it.
    std::ofstream(path, std::ios::binary) << input << (input.ends_with('\r') ? "\n" : "");
    Values before = read_all(path);
    const std::string whole = input.substr(0, input.find('\0'));
    const RecordChange change = {"OTHER", whole.c_str()};
    require(RecordWrite(path.c_str(), &change, 1) != 0, "a record was not written");
    Values after = read_all(path);
    require(after[1] == whole, "a record is not what was written");
    before[1] = after[1];
    require(after == before, "another record has changed");
    const RecordChange removed = {"OTHER", ""};
    require(RecordWrite(path.c_str(), &removed, 1) != 0, "a record was not emptied");
    after = read_all(path);
    require(!after[1] || after[1]->empty(), "a record is not empty");
    std::filesystem::remove(path);
    std::filesystem::remove(folder() + "/." + path.substr(path.rfind('/') + 1) + ".lock");
}

} // namespace quillon::test
