#include "linux/events/private_shell.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "linux/events/event_sources.h"

namespace quillon {

namespace fs = std::filesystem;

static constexpr const char *prefix = "private-"; // the process id of the shell follows
static int client = -1;
static std::string folder;

// Removes the folders of private shells that were killed.
static void remove_left_folders(const std::string &temporary) {
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(temporary, ignored)) {
        const std::string name = entry.path().filename();
        if (!name.starts_with(prefix))
            continue;
        const pid_t process = std::atoi(name.c_str() + std::string(prefix).size());
        if (common::program_of_process(process) != common::own_program())
            fs::remove_all(entry.path(), ignored);
    }
}

static void remove_own_folder() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

static int on_client(sd_event_source *source, int, std::uint32_t, void *) {
    // Nothing is ever sent from there: what can be read is the end.
    sd_event_source_disable_unref(source);
    RequestLeave();
    return 0;
}

int BecomePrivate(int channel) {
    const std::string temporary = common::temporary_folder();
    if (!common::make_private_folder(temporary))
        return 0;
    remove_left_folders(temporary);
    folder = temporary + "/" + prefix + std::to_string(getpid());
    if (!common::make_private_folder(folder))
        return 0;
    std::atexit(remove_own_folder);
    std::error_code ignored;
    fs::copy_file(common::preferences_path(), folder + "/" + common::leaf_of(common::preferences_path()),
                  fs::copy_options::overwrite_existing, ignored);
    setenv(common::private_preferences_variable, folder.c_str(), 1);
    client = channel;
    fcntl(client, F_SETFD, FD_CLOEXEC);
    sd_event_source *source = nullptr;
    sd_event_add_io(HostLoop(), &source, client, EPOLLIN | EPOLLHUP, on_client, nullptr);
    return 1;
}

int IsPrivate() {
    return client >= 0;
}

void TellClient() {
    const char *name = nullptr;
    std::string line = HostBus() && sd_bus_get_unique_name(HostBus(), &name) >= 0 ? name : "";
    line += "\n";
    // A client that has gone is noticed by the loop.
    send(client, line.data(), line.size(), MSG_NOSIGNAL);
}

} // namespace quillon
