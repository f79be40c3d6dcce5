// Path conversion: nothing runs over, what access says is what the conversions and the disk say, and a file
// that is there is found again under the path that it is given.
#include "files/paths.h"

#include <cstring>

#include "fuzz/fuzz.h"
#include "kpath/search_paths.h"
#include "support/temporary_home.h"
#include "toolbox/files.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"/",
                                             "//",
                                             ".",
                                             "..",
                                             "./",
                                             "../",
                                             ":",
                                             "::",
                                             "/:",
                                             "~",
                                             "~/",
                                             "~/../",
                                             "tmp",
                                             "work",
                                             "x",
                                             "a b",
                                             "\xca",
                                             "\x1f",
                                             "\x1e",
                                             "\x1d",
                                             "a\xca"
                                             "b",
                                             "a:b",
                                             "sub",
                                             "link",
                                             std::string(64, 'l'),
                                             std::string(255, 'm'),
                                             std::string(1000, 'n')};
const int fuzz_runs = 2500;

namespace {

const TemporaryHome &home() {
    static const TemporaryHome made;
    return made;
}

void set_up() {
    static const bool done = [] {
        for (const char *const name : {"work/x", "work/a b", "work/a:b", "work/sub/x", "work/..."})
            home().file(name);
        home().file("work/" + std::string(64, 'l'));
        std::filesystem::create_directory_symlink("sub", home().path("work/link"));
        return true;
    }();
    static_cast<void>(done);
    curr_dir.copy(home().path("work"));
    space_char = 31;
}

// The input as the name of a file that is really made.
void round_trip(const std::string &input) {
    std::string name = input.substr(0, 255);
    for (char &c : name)
        if (c == '/' || c == '\x1f')
            c = '_';
    if (name.empty() || name == "." || name == "..")
        return;
    const std::string posix = home().path("work/made/" + name);
    BoundedString<1024> unix_path, back;
    home().file("work/made/" + name);
    FSSpec spec;
    require(FSPathMakeSpec(posix.c_str(), &spec) == noErr, "a file that is there has no location");
    FSSpecToUnixPath(&spec, unix_path);
    if (!unix_path.empty()) {
        // An "..": kept on purpose, a step upwards wherever it stands before a "/"; here none does.
        require(quillon::access(unix_path.c_str(), 4) == 0 || std::strchr(unix_path.c_str(), ':'),
                "a file that is there is not found");
        UnixFileToPosixFile(unix_path.c_str(), back);
        require(back == posix, "a path does not lead back");
    }
    std::filesystem::remove(posix);
}

} // namespace

void fuzz_one(const std::string &input) {
    set_up();
    const std::string text = input.substr(0, input.find('\0'));
    for (const std::string &path : {text, home().path("work/") + text}) {
        BoundedString<1024> absolute, hfs, posix;
        BoundedString<16> small;
        add_current_dir(absolute, path.c_str());
        const int there = convert_path(absolute.c_str(), hfs) && FSFileExists(hfs.c_str());
        const bool fits = path.size() + curr_dir.length() <= 511;
        require((quillon::access(path.c_str(), 4) == 0) == (fits && there),
                "access and the conversions differ");
        add_current_dir(small, path.c_str());
        convert_path(path.c_str(), small);
        UnixFileToPosixFile(path.c_str(), posix);
        UnixFolderToPosixFolder(path.c_str(), posix);
        FSSpec spec;
        UnixToFSS(path.c_str(), nullptr, &spec);
        UnixPathToFolder(path.c_str(), &spec);
        absolute.copy(std::string_view(path).substr(0, 1023));
        simplify_directory(absolute);
        std::free(expand_tilde(path.c_str()));
        std::free(expand_default(path.c_str(), "."));
        std::free(readable(path.c_str()));
    }
    round_trip(text);
}

} // namespace quillon::test
