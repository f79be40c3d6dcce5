#include "common/document_record.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"

namespace common {

namespace {

constexpr const char *title = "document 1";
constexpr std::size_t most_records = 1000, largest_record = 1 << 20;

std::string records_folder() {
    return transcripts_folder() + "/documents";
}

std::string record_path(const std::string &main) {
    static const char digits[] = "0123456789abcdef";
    std::string name;
    for (std::size_t hash = std::hash<std::string>{}(main), i = 0; i < 16; i++, hash >>= 4)
        name += digits[hash & 15];
    return records_folder() + "/" + name;
}

// Removes the records that were written first where there are as many as are kept.
void make_room() {
    DIR *const folder = opendir(records_folder().c_str());
    if (!folder)
        return;
    std::vector<std::pair<time_t, std::string>> records;
    while (const dirent *const entry = readdir(folder)) {
        struct stat status;
        if (fstatat(dirfd(folder), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode))
            records.emplace_back(status.st_mtime, entry->d_name);
    }
    if (records.size() >= most_records) {
        // A tenth at once, so that this is not done for every new document.
        std::sort(records.begin(), records.end());
        records.resize(records.size() - most_records * 9 / 10);
        for (const auto &[time, name] : records)
            unlinkat(dirfd(folder), name.c_str(), 0);
    }
    closedir(folder);
}

std::vector<std::string> fields_of(const std::string &main, const DocumentRecord &record) {
    std::vector<std::string> fields = {title, main};
    const struct {
        const char *kind;
        const std::vector<std::string> &paths;
    } lists[] = {{"read", record.read},
                 {"written", record.written},
                 {"carried", record.carried},
                 {"output", record.outputs}};
    for (const auto &[kind, paths] : lists)
        for (const std::string &path : paths)
            fields.insert(fields.end(), {kind, path});
    for (const auto &[path, state] : record.made)
        fields.insert(fields.end(), {"made", path, state});
    fields.push_back("end");
    return fields;
}

} // namespace

DocumentRecord read_document_record(const std::string &main) {
    DocumentRecord record;
    const std::vector<std::string> fields = read_fields(record_path(main));
    if (fields.size() < 3 || fields[0] != title || fields[1] != main || fields.back() != "end")
        return record;
    for (std::size_t i = 2; i + 1 < fields.size(); i += 2) {
        const std::string &kind = fields[i], &path = fields[i + 1];
        if (kind == "made" && i + 2 < fields.size()) {
            record.made[path] = fields[i + 2];
            i++;
        } else if (kind == "read") {
            record.read.push_back(path);
        } else if (kind == "written") {
            record.written.push_back(path);
        } else if (kind == "carried") {
            record.carried.push_back(path);
        } else if (kind == "output") {
            record.outputs.push_back(path);
        }
    }
    return record;
}

bool keep_document_record(const std::string &main, const DocumentRecord &record) {
    const std::string path = record_path(main);
    const std::vector<std::string> fields = fields_of(main, record);
    if (read_fields(path) == fields)
        return true;
    const std::string text = joined_fields(fields);
    if (text.size() > largest_record || !make_private_folder(transcripts_folder()) ||
        !make_private_folder(records_folder()))
        return false;
    if (!is_regular_file(path))
        make_room();
    return replace_file(path, text);
}

} // namespace common
