#include "setpaths/reverse_search.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/desktop_entry.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "setpaths/settings_place.h"

namespace setpaths {

namespace {

constexpr std::size_t largest_file = 16 << 20;
constexpr int most_copies = 1000;

std::string program_in_path(const std::string &name) {
    const char *const search = std::getenv("PATH");
    return common::find_program(name, search ? search : "/usr/bin:/bin", "/");
}

// Returns the name of the viewer's program; empty when the viewer is not installed.
std::string installed_program(const common::ViewerRow &row) {
    for (const std::string &name : row.programs)
        if (!program_in_path(name).empty())
            return name;
    for (const std::string &id : row.desktop_ids)
        if (!common::find_desktop_entry(id).empty())
            return row.programs.empty() ? id : row.programs[0];
    return "";
}

// Returns the value of the variable NAME among VARIABLES (NAME=value, each with a zero byte behind it).
std::string variable(const std::string &variables, const std::string &name) {
    const std::string before = std::string(1, '\0') + variables, mark = std::string(1, '\0') + name + "=";
    const std::size_t at = before.find(mark);
    return at == std::string::npos ? "" : before.c_str() + at + mark.size();
}

// True when the process has its settings in the same folder as this one, or it is not known where.
bool shares_settings(pid_t process) {
    const std::string variables = common::variables_of_process(process);
    const std::string folder = variable(variables, "XDG_CONFIG_HOME"), home = variable(variables, "HOME");
    if (variables.empty() || (!folder.starts_with('/') && home.empty()))
        return true;
    return common::canonical_path(folder.starts_with('/') ? folder : home + "/.config") ==
           common::canonical_path(common::config_folder());
}

bool is_program(pid_t process, const common::Words &names) {
    return common::Contains(names, common::leaf_of(common::program_of_process(process))) ||
           common::Contains(names, common::leaf_of(common::words_of_process(process).c_str()));
}

// True when this user has a process of a program of these names that has its settings where this one has.
bool runs(const common::Words &programs) {
    DIR *const processes = opendir("/proc");
    bool found = false;
    while (const dirent *const entry = processes && !found ? readdir(processes) : nullptr)
        if (const pid_t process = std::atoi(entry->d_name); process > 0)
            found = is_program(process, programs) && shares_settings(process);
    if (processes)
        closedir(processes);
    return found;
}

// True for a path that every viewer's reading of a command leaves as it is.
bool can_stand_in_a_command(const std::string &path) {
    return std::all_of(path.begin(), path.end(), [](unsigned char c) {
        return c >= 128 || std::isalnum(c) || std::strchr("/._-+@:,~ ", c);
    });
}

// Fills in what the file of WANTED holds now.
void look(ReverseSearch &wanted) {
    const std::string text = common::read_file(wanted.file, largest_file);
    wanted.now.clear();
    wanted.is_set = true;
    for (const auto &[key, value] : wanted.values) {
        std::string now;
        const bool some = ini_value(text, wanted.group, key, &now);
        if (some)
            wanted.now.push_back(key + "=" + now);
        wanted.is_set = wanted.is_set && some && now == value;
    }
    wanted.runs = runs(wanted.programs);
}

ReverseSearch reverse_search(const common::ViewerRow &row, const std::string &viewer,
                             const std::string &command) {
    ReverseSearch wanted;
    wanted.viewer = viewer;
    wanted.programs = row.programs;
    wanted.file = common::config_folder() + "/" + row.reverse[1];
    wanted.group = row.reverse[2];
    const common::Words lines =
        common::FilledArguments({row.reverse.begin() + 3, row.reverse.end()}, {{'e', command}, {'q', "\""}});
    for (const std::string &line : lines) {
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        const std::string value = line.substr(equals + 1);
        wanted.values.emplace_back(line.substr(0, equals),
                                   row.reverse[0] == "toolkit" ? toolkit_value(value) : kde_value(value));
    }
    look(wanted);
    return wanted;
}

// Copies TEXT, the contents of the file at PATH, into a new file beside it. Returns its path, empty with
// errno set when it cannot be made.
std::string keep_copy(const std::string &path, const std::string &text, mode_t mode) {
    for (int number = 1; number <= most_copies; number++) {
        const std::string copy = path + ".before-quillon" + (number > 1 ? "." + std::to_string(number) : "");
        const int file =
            open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode & 0777);
        if (file < 0 && errno == EEXIST)
            continue;
        if (file < 0)
            return "";
        const bool whole = write_whole(file, text);
        if (close(file) == 0 && whole)
            return copy;
        unlink(copy.c_str());
        return "";
    }
    errno = EEXIST;
    return "";
}

// Writes TEXT to a new file that takes the place of the one at PATH, with its MODE and, where that may be
// done, its owner.
bool replace(const std::string &path, const std::string &text, const struct stat *old) {
    std::string fresh = path + ".XXXXXX";
    const int file = mkostemp(fresh.data(), O_CLOEXEC);
    if (file < 0)
        return false;
    // Where the owner cannot be kept the file is this user's own, who could write the old one.
    if (old && fchown(file, old->st_uid, old->st_gid) != 0)
        errno = 0;
    const bool whole =
        write_whole(file, text) && fchmod(file, old ? old->st_mode & 07777 : 0644) == 0 && fsync(file) == 0;
    if (close(file) == 0 && whole && rename(fresh.c_str(), path.c_str()) == 0)
        return true;
    const int error = errno;
    unlink(fresh.c_str());
    errno = error;
    return false;
}

bool refuse(const std::string &sentence, std::string *said) {
    *said = sentence;
    return false;
}

} // namespace

std::vector<ReverseSearch> reverse_searches(const std::string &home) {
    const std::string command = home + "/Quillon.app/Contents/Helpers/edit";
    std::vector<ReverseSearch> found;
    if (!can_stand_in_a_command(command))
        return found;
    for (const common::ViewerRow &row : common::ViewerRows()) {
        const std::string viewer = row.reverse.empty() ? "" : installed_program(row);
        const auto is_that = [&](const ReverseSearch &other) { return other.viewer == viewer; };
        if (!viewer.empty() && std::none_of(found.begin(), found.end(), is_that))
            found.push_back(reverse_search(row, viewer, command));
    }
    return found;
}

std::string described(const ReverseSearch &wanted) {
    std::string text = wanted.file + "\n\n[" + wanted.group + "]\n";
    for (const auto &[key, value] : wanted.values)
        text += key + "=" + value + "\n";
    text += "\n";
    if (wanted.is_set)
        return text + "The file says so already.\n";
    if (!wanted.now.empty()) {
        text += "These lines take the place of:\n";
        for (const std::string &line : wanted.now)
            text += line + "\n";
        text += "\n";
    }
    text += common::is_regular_file(wanted.file)
                ? "Every other line stays, and a copy of the file as it is now is kept beside it.\n"
                : "The file is not there yet and is made.\n";
    if (wanted.runs)
        text += wanted.viewer +
                " runs. It would write its own settings over these when it ends, so end it first.\n";
    return text;
}

bool write_reverse_search(const ReverseSearch &wanted, std::string *said) {
    if (runs(wanted.programs))
        return refuse(wanted.viewer + " runs and would write its own settings over these. End it first.",
                      said);
    const std::string path = place_of(wanted.file);
    struct stat status;
    const bool there = stat(path.c_str(), &status) == 0;
    const auto fail = [&](const std::string &what) {
        return refuse("I can't write " + what + ": " + std::strerror(errno) + ".", said);
    };
    if (there && !S_ISREG(status.st_mode))
        return refuse(path + " is no file, so nothing was written.", said);
    const std::string text = there ? common::read_file(path, largest_file) : "";
    if (there && static_cast<off_t>(text.size()) != status.st_size)
        return refuse("I can't read " + path + " as a whole, so nothing was written.", said);
    if (there && access(path.c_str(), W_OK) != 0)
        return fail(path);
    const std::string changed = with_ini_values(text, wanted.group, wanted.values);
    if (there && changed == text) {
        *said = path + " says so already.";
        return true;
    }
    if (!common::make_folders(common::folder_above(path), 0700))
        return fail(common::folder_above(path));
    const std::string copy = there ? keep_copy(path, text, status.st_mode) : "";
    if (there && copy.empty())
        return fail("a copy of " + path);
    if (!replace(path, changed, there ? &status : nullptr))
        return fail(path);
    *said = path + " is written" + (there ? "; the file as it was is " + copy + "." : ".");
    return true;
}

} // namespace setpaths
