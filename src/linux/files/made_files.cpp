#include "toolbox/made_files.h"

#include <string>
#include <sys/stat.h>
#include <vector>

#include "common/clean.h"

namespace quillon {

static std::vector<std::string> files;

static const std::string &path_of(int number) {
    return files[static_cast<std::size_t>(number)];
}

int FindMadeFiles(const char *posix_path) {
    const common::FilesToClean found = common::files_to_clean(posix_path);
    files = found.files;
    return found.known ? static_cast<int>(files.size()) : -1;
}

int GetMadeFile(int number, BoundedBuffer &posix_path, std::int64_t *size) {
    struct stat status;
    *size = ::lstat(path_of(number).c_str(), &status) == 0 ? status.st_size : -1;
    return posix_path.copy(path_of(number));
}

int GoesToTrash(int number) {
    return common::goes_to_trash(path_of(number));
}

OSErr RemoveMadeFile(int number) {
    return common::discard(path_of(number)) ? static_cast<OSErr>(noErr) : static_cast<OSErr>(permErr);
}

} // namespace quillon
