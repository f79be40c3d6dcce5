#include "linux/files/kept_folders.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <functional>

#include "toolbox/bounded.h"

namespace quillon {

namespace {

constexpr std::size_t slots = 256;
// A folder that is moved while we do not wait is missed for this long at most.
constexpr long long longest_stretch = 10'000'000; // nanoseconds

struct Slot {
    BoundedString<256> folder;
    int descriptor = -1;
};
Slot table[slots];
// The slots that hold a folder, in the order of their filling.
std::size_t filled[slots];
std::size_t filled_count = 0;
long long began;

long long now() {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

void let_go(Slot &slot) {
    if (slot.descriptor >= 0)
        ::close(slot.descriptor);
    slot.descriptor = -1;
}

} // namespace

void ForgetFolders() {
    for (; filled_count > 0; filled_count--) {
        Slot &slot = table[filled[filled_count - 1]];
        let_go(slot);
        slot.folder.clear();
    }
}

int KeptFolder(std::string_view folder) {
    const long long time = now();
    if (filled_count > 0 && time - began > longest_stretch)
        ForgetFolders();
    if (filled_count == 0)
        began = time;
    const std::size_t number = std::hash<std::string_view>{}(folder) % slots;
    Slot &slot = table[number];
    if (slot.folder == folder) {
        if (slot.descriptor < 0)
            slot.descriptor = ::open(slot.folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        return slot.descriptor;
    }
    if (folder.size() >= slot.folder.capacity())
        return -1;
    if (slot.folder.empty())
        filled[filled_count++] = number;
    let_go(slot);
    slot.folder.copy(folder);
    return -1;
}

} // namespace quillon
