#include "client/run_call.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "client/start.h"
#include "common/session_bus.h"

namespace client {

using common::shell_interface;
using common::shell_path;

namespace {

std::string read_bytes(sd_bus_message *reply) {
    const void *bytes = nullptr;
    std::size_t size = 0;
    std::string text;
    if (sd_bus_message_enter_container(reply, 'v', "ay") > 0) {
        if (sd_bus_message_read_array(reply, 'y', &bytes, &size) > 0)
            text.assign(static_cast<const char *>(bytes), size);
        sd_bus_message_exit_container(reply);
    }
    return text;
}

// Reads what the reply tells beyond the status, and leaves what it does not tell.
void read_details(sd_bus_message *reply, RunResult &result) {
    std::string file;
    const char *message = "", *summary = "";
    int line = 0;
    if (sd_bus_message_enter_container(reply, 'a', "{sv}") <= 0)
        return;
    while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
        const char *name = "";
        sd_bus_message_read_basic(reply, 's', &name);
        const std::string_view key = name;
        if (key == "file")
            file = read_bytes(reply);
        else if (key == "document")
            result.document = read_bytes(reply);
        else if (key == "line")
            sd_bus_message_read(reply, "v", "i", &line);
        else if (key == "message")
            sd_bus_message_read(reply, "v", "s", &message);
        else if (key == "summary")
            sd_bus_message_read(reply, "v", "s", &summary);
        else
            sd_bus_message_skip(reply, "v");
        sd_bus_message_exit_container(reply);
    }
    result.summary = summary;
    if (!file.empty())
        result.first_error = file + ":" + std::to_string(line) + ": " + message;
}

int status_of_error(std::string_view name) {
    return name.ends_with(".Cancelled")                                     ? 128 + SIGINT
           : name.ends_with(".NotRun") || name.ends_with(".UnknownCommand") ? 127
           : name.ends_with(".Busy")                                        ? 75
           : name == SD_BUS_ERROR_INVALID_ARGS                              ? 64
                                                                            : status_unavailable;
}

int on_done(sd_bus_message *reply, void *data, sd_bus_error *) {
    auto &result = *static_cast<RunResult *>(data);
    result.done = true;
    const sd_bus_error *const error = sd_bus_message_get_error(reply);
    if (!error) {
        int status = 1;
        sd_bus_message_read(reply, "i", &status);
        result.ran = true;
        result.status = status & 255;
        if (status != 0 && result.status == 0)
            result.status = 1;
        read_details(reply, result);
        return 0;
    }
    result.status = status_of_error(error->name);
    if (result.status == status_unavailable)
        std::fprintf(stderr, "quillon: the shell has gone\n");
    else
        std::fprintf(stderr, "quillon: %s\n",
                     error->message && *error->message ? error->message : error->name);
    return 0;
}

} // namespace

int send_run(sd_bus *bus, const char *shell, const RunRequest &request, RunResult *result) {
    result->status = status_unavailable;
    sd_bus_message *call = nullptr;
    int sent = sd_bus_message_new_method_call(bus, &call, shell, shell_path, shell_interface, "Run");
    for (const std::string *part : {&request.command, &request.folder})
        if (sent >= 0)
            sent = sd_bus_message_append_array(call, 'y', part->data(), part->size());
    const std::pair<const char *, bool> options[] = {
        {"follow", true},           {"view", request.view},       {"edit", request.edit},
        {"answer", request.answer}, {"summary", request.summary}, {"document", request.document}};
    if (sent >= 0)
        sent = sd_bus_message_open_container(call, 'a', "{sv}");
    for (const auto &[name, value] : options)
        if (sent >= 0 && value)
            sent = sd_bus_message_append(call, "{sv}", name, "b", 1);
    if (sent >= 0)
        sent = sd_bus_message_close_container(call);
    if (sent >= 0)
        sent = sd_bus_call_async(bus, nullptr, call, on_done, result, UINT64_MAX);
    sd_bus_message_unref(call);
    return sent;
}

void cancel_run(sd_bus *bus, const char *shell) {
    sd_bus_message *call = nullptr;
    const int result =
        sd_bus_message_new_method_call(bus, &call, shell, shell_path, shell_interface, "Cancel");
    common::send_without_reply(bus, call, result);
}

} // namespace client
