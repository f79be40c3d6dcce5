#include "client/shell_calls.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

#include "client/shell.h"
#include "client/start.h"
#include "common/activation.h"
#include "common/path_forms.h"
#include "common/session_bus.h"
#include "common/utf8.h"

namespace client {

using common::shell_interface;
using common::shell_name;
using common::shell_path;

constexpr std::uint64_t quit_microseconds = 30'000'000;

namespace {

int say_error(const sd_bus_error &error) {
    std::fprintf(stderr, "quillon: %s\n", error.message ? error.message : "the shell did not answer");
    return sd_bus_error_has_name(&error, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
                   sd_bus_error_has_name(&error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) ||
                   sd_bus_error_has_name(&error, SD_BUS_ERROR_NO_REPLY)
               ? status_unavailable
               : 1;
}

// Asks the shell to open the file. It waits for no answer, since the shell opens it only after the run that
// is in progress. Returns a negative errno on failure.
int send_open(sd_bus *bus, const std::string &path) {
    const bool text = common::is_utf8(path);
    sd_bus_message *call = nullptr;
    int result = sd_bus_message_new_method_call(bus, &call, shell_name, shell_path, shell_interface,
                                                text ? "Open" : "OpenRaw");
    if (result >= 0)
        result = text ? sd_bus_message_append_basic(call, 's', path.c_str())
                      : sd_bus_message_append_array(call, 'y', path.data(), path.size());
    return common::send_without_reply(bus, call, result);
}

} // namespace

bool shell_runs(sd_bus *bus) {
    return common::name_has_owner(bus, shell_name);
}

bool shell_has_window(sd_bus *bus) {
    int window = 1;
    sd_bus_get_property_trivial(bus, shell_name, shell_path, shell_interface, "Window", nullptr, 'b',
                                &window);
    return window != 0;
}

int no_shell() {
    std::fprintf(stderr, "quillon: the shell is not running; start it with \"quillon\"\n");
    return status_unavailable;
}

int open_files(sd_bus *bus, const std::vector<std::string> &files) {
    int status = 0;
    for (const std::string &file : files) {
        struct stat found;
        const std::string path = common::from_working_folder(file);
        if (stat(path.c_str(), &found) != 0) {
            std::fprintf(stderr, "quillon: %s: %s\n", file.c_str(), std::strerror(errno));
            status = 1;
        } else if (const int result = send_open(bus, path); result < 0) {
            std::fprintf(stderr, "quillon: %s: %s\n", file.c_str(), std::strerror(-result));
            status = 1;
        }
    }
    common::send_activate(bus, shell_name, shell_path, common::own_token());
    return status;
}

namespace {

// Calls METHOD of the shell with NAME, or with nothing when that is null. Returns 0 and the text that comes
// back, or the exit status after a message.
int call_for_text(const Shell &shell, const char *method, const char *name, std::string &text) {
    if (name && !common::is_utf8(name)) {
        std::fprintf(stderr, "quillon: the name is not UTF-8\n");
        return 1;
    }
    sd_bus_message *call = nullptr;
    sd_bus_message *reply = nullptr;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int result = sd_bus_message_new_method_call(shell.bus, &call, shell.name.c_str(), shell_path,
                                                shell_interface, method);
    if (result >= 0 && name)
        result = sd_bus_message_append_basic(call, 's', name);
    if (result >= 0)
        result = sd_bus_call(shell.bus, call, UINT64_MAX, &error, &reply);
    const char *answer = "";
    if (result >= 0)
        sd_bus_message_read_basic(reply, 's', &answer);
    text = answer;
    const int status = result < 0 ? say_error(error) : 0;
    sd_bus_error_free(&error);
    sd_bus_message_unref(call);
    sd_bus_message_unref(reply);
    return status;
}

} // namespace

int locate(const Shell &shell, const char *name) {
    std::string path;
    const int status = call_for_text(shell, "Locate", name, path);
    if (status != 0 || path.empty())
        return status != 0 ? status : 1;
    std::puts(path.c_str());
    return 0;
}

int find(const Shell &shell, const char *name) {
    int status = locate(shell, name);
    std::string text;
    if (status == 0)
        status = call_for_text(shell, "Find", name, text);
    // The file is opened after the answer; the answer to the next question comes after that.
    return status != 0 ? status : call_for_text(shell, "Formats", nullptr, text);
}

int list_formats(const Shell &shell) {
    std::string formats;
    const int status = call_for_text(shell, "Formats", nullptr, formats);
    if (status == 0 && !formats.empty())
        std::puts(formats.c_str());
    return status;
}

int list_problems(const Shell &shell) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = nullptr;
    const int result = sd_bus_call_method(shell.bus, shell.name.c_str(), shell_path, shell_interface,
                                          "Problems", &error, &reply, "");
    const int status = result < 0 ? say_error(error) : 0;
    const char *file = nullptr, *kind = nullptr, *text = nullptr;
    std::uint32_t line = 0;
    if (result >= 0)
        sd_bus_message_enter_container(reply, 'a', "(suss)");
    while (result >= 0 && sd_bus_message_read(reply, "(suss)", &file, &line, &kind, &text) > 0)
        std::printf("%s:%u: %s: %s\n", file, line, kind, text);
    sd_bus_error_free(&error);
    sd_bus_message_unref(reply);
    return status;
}

namespace {

// The shell that was told to quit.
struct Leaving {
    std::string owner;
    bool freed = false;
};

int on_new_owner(sd_bus_message *signal, void *data, sd_bus_error *) {
    auto &shell = *static_cast<Leaving *>(data);
    const char *name, *before, *owner = "";
    if (sd_bus_message_read(signal, "sss", &name, &before, &owner) > 0 && before == shell.owner)
        shell.freed = true;
    return 0;
}

} // namespace

int quit_shell(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    Leaving shell;
    const std::string rule = std::string("type='signal',sender='org.freedesktop.DBus',"
                                         "member='NameOwnerChanged',arg0='") +
                             shell_name + "'";
    sd_bus_add_match(bus, nullptr, rule.c_str(), on_new_owner, &shell);
    shell.owner = common::owner_of_name(bus, shell_name);
    if (shell.owner.empty())
        return 0;
    const int result = sd_bus_call_method(bus, shell.owner.c_str(), shell_path, shell_interface, "Quit",
                                          &error, nullptr, "");
    // A shell that goes away without an answer has quit.
    const bool gone = sd_bus_error_has_name(&error, SD_BUS_ERROR_NO_REPLY);
    const int status = result < 0 && !gone ? say_error(error) : 0;
    sd_bus_error_free(&error);
    if (status == 0)
        common::serve_until(bus, common::now_microseconds() + quit_microseconds, [&] { return shell.freed; });
    return status;
}

} // namespace client
