#include "setpaths/databases.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "common/search_settings.h"
#include "setpaths/distribution.h"
#include "setpaths/settings_place.h"

namespace setpaths {

namespace {

// The reader of a database takes lines of up to this many bytes whole.
constexpr std::size_t longest_line = 1000;

// Walks through folders and adds their lines to the text. A folder that was met before is passed over.
class Walk {
  public:
    Walk(unsigned char space, std::string &text) : space_(space), text_(text) {}

    // Adds FOLDER, which ends with a slash, and the folders below it when BELOW.
    void folder(const std::string &folder, bool below) {
        struct stat status;
        if (stat(folder.c_str(), &status) != 0 || !seen_.insert({status.st_dev, status.st_ino}).second)
            return;
        DIR *const entries = opendir(folder.c_str());
        if (!entries)
            return;
        std::vector<std::string> files;
        std::vector<std::string> folders;
        while (const dirent *entry = readdir(entries)) {
            const std::string name = entry->d_name;
            if (name == "." || name == ".." || name.find('\n') != std::string::npos)
                continue;
            const unsigned char type = kind(entries, *entry);
            if (type == DT_REG)
                files.push_back(name);
            else if (type == DT_DIR && below && name[0] != '.')
                folders.push_back(name);
        }
        closedir(entries);
        std::sort(files.begin(), files.end());
        std::sort(folders.begin(), folders.end());
        write(folder, files);
        for (const std::string &name : folders)
            this->folder(folder + name + "/", true);
    }

  private:
    static unsigned char kind(DIR *entries, const dirent &entry) {
        if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
            return entry.d_type;
        struct stat status;
        if (fstatat(dirfd(entries), entry.d_name, &status, 0) != 0)
            return DT_UNKNOWN;
        // A link to a folder may lead in a circle, so it is not followed.
        if (S_ISDIR(status.st_mode))
            return entry.d_type == DT_LNK ? DT_UNKNOWN : DT_DIR;
        return S_ISREG(status.st_mode) ? DT_REG : DT_UNKNOWN;
    }

    void write(const std::string &folder, const std::vector<std::string> &files) {
        if (files.empty() || folder.size() > longest_line)
            return;
        text_ += common::to_unix_path(folder, space_) + "\n";
        for (const std::string &name : files)
            // The reader passes over a name that begins with the digit 0.
            if (name[0] != '0' && name.size() <= longest_line)
                text_ += common::to_unix_path(name, space_) + "\n";
    }

    unsigned char space_;
    std::string &text_;
    std::set<std::pair<dev_t, ino_t>> seen_;
};

// Writes TEXT to a new file that then takes the place of PATH. False, with the old file as it was, when the
// disk does not take it.
bool replace_file(const std::string &path, const std::string &text) {
    std::string fresh = path + ".XXXXXX";
    const int file = mkostemp(fresh.data(), O_CLOEXEC);
    if (file < 0)
        return false;
    const bool whole = write_whole(file, text) && fchmod(file, 0644) == 0 && fsync(file) == 0;
    close(file);
    if (whole && rename(fresh.c_str(), path.c_str()) == 0)
        return true;
    unlink(fresh.c_str());
    return false;
}

} // namespace

std::string database_text(const std::vector<std::string> &folders, unsigned char space) {
    std::string text;
    Walk walk(space, text);
    for (std::string folder : folders) {
        const bool below = folder.ends_with("//");
        while (folder.ends_with('/'))
            folder.pop_back();
        if (folder.starts_with('/'))
            walk.folder(folder + "/", below);
    }
    return text;
}

bool write_databases(const std::string &home) {
    const std::string support = common::support_folder();
    const unsigned char space = common::space_byte();
    bool good = true;
    for (const common::SearchSetting &row : common::search_settings) {
        if (row.database == common::no_database)
            continue;
        std::vector<std::string> folders;
        for (const std::string &element : split_paths(common::setting(row.key)))
            folders.push_back(common::expand_setting_path(element, home, space));
        const std::string path = support + "/" + row.key;
        if (replace_file(path, database_text(folders, space)))
            continue;
        std::fprintf(stderr, "setpaths: I can't write %s\n", path.c_str());
        good = false;
    }
    return good;
}

} // namespace setpaths
