#include "helpers/bundle.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <set>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

#include "helpers/launch.h"
#include "wire.h"

namespace helpers {

namespace {

constexpr const char *name_prefix = "org.quillon.App.p";
constexpr const char *app_path = "/org/quillon/App";
constexpr const char *app_interface = "org.quillon.App1";
constexpr std::uint64_t ask_microseconds = 1'000'000;
constexpr std::uint64_t launch_microseconds = 30'000'000;

std::string canonical(const std::string &path) {
    char *const resolved = realpath(path.c_str(), nullptr);
    const std::string text = resolved ? resolved : path;
    std::free(resolved);
    return text;
}

std::uint64_t now() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(time.tv_nsec) / 1000;
}

// The processes that wait for this one: they cannot answer.
std::set<std::string> ancestors() {
    std::set<std::string> found;
    pid_t pid = getppid();
    while (pid > 1) {
        found.insert(name_prefix + std::to_string(pid));
        std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
        std::string line;
        std::getline(file, line);
        const std::size_t end = line.rfind(')');
        pid = end != std::string::npos && line.size() > end + 4 ? std::atoi(line.c_str() + end + 4) : 0;
    }
    return found;
}

// Whether the process behind an application's name was started from the bundle.
bool started_from(const std::string &name, const std::string &bundle) {
    const std::string pid = name.substr(std::strlen(name_prefix));
    return canonical("/proc/" + pid + "/exe").starts_with(bundle + "/Contents/");
}

struct Question {
    std::string name;
    const std::string *bundle;
    std::string *found;
    int *open_questions;
    sd_bus_slot *slot;
};

int on_path(sd_bus_message *message, void *context, sd_bus_error *) {
    auto *const question = static_cast<Question *>(context);
    const char *path = nullptr;
    --*question->open_questions;
    if (!sd_bus_message_is_method_error(message, nullptr) &&
        sd_bus_message_read(message, "v", "s", &path) > 0 && canonical(path) == *question->bundle)
        *question->found = question->name;
    return 0;
}

std::vector<std::string> application_names(sd_bus *bus) {
    std::vector<std::string> names;
    sd_bus_message *reply = nullptr;
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                           "ListNames", nullptr, &reply, "") >= 0 &&
        sd_bus_message_enter_container(reply, 'a', "s") > 0) {
        const char *name = nullptr;
        while (sd_bus_message_read_basic(reply, 's', &name) > 0)
            if (std::string_view(name).starts_with(name_prefix))
                names.emplace_back(name);
    }
    sd_bus_message_unref(reply);
    return names;
}

// The bus name of the application that runs from the bundle; empty when none does.
std::string running(sd_bus *bus, const std::string &bundle) {
    const std::set<std::string> cannot_answer = ancestors();
    const std::vector<std::string> names = application_names(bus);
    std::vector<Question> questions;
    std::string found;
    int open_questions = 0;
    for (const std::string &name : names) {
        if (started_from(name, bundle))
            return name;
        if (!cannot_answer.contains(name))
            questions.push_back({name, &bundle, &found, &open_questions, nullptr});
    }
    for (Question &question : questions) {
        if (sd_bus_call_method_async(bus, &question.slot, question.name.c_str(), app_path,
                                     "org.freedesktop.DBus.Properties", "Get", on_path, &question, "ss",
                                     app_interface, "Path") >= 0)
            open_questions++;
    }
    const std::uint64_t end = now() + ask_microseconds;
    while (open_questions > 0 && found.empty() && now() < end)
        if (const int result = sd_bus_process(bus, nullptr); result < 0)
            break;
        else if (result == 0)
            sd_bus_wait(bus, end - std::min(end, now()));
    for (Question &question : questions)
        sd_bus_slot_unref(question.slot);
    return found;
}

// Nobody waits for the answer.
bool send(sd_bus *bus, sd_bus_message *message, int result) {
    if (result >= 0)
        result = sd_bus_message_set_expect_reply(message, 0);
    if (result >= 0)
        result = sd_bus_send(bus, message, nullptr);
    if (result >= 0)
        result = sd_bus_flush(bus);
    sd_bus_message_unref(message);
    return result >= 0;
}

bool send_document(sd_bus *bus, const std::string &name, const std::string &document) {
    sd_bus_message *message = nullptr;
    int result =
        sd_bus_message_new_method_call(bus, &message, name.c_str(), app_path, app_interface, "Event");
    if (result >= 0)
        result = sd_bus_message_append(message, "ss", "aevt", "odoc");
    if (result >= 0)
        result = toolhost::append_parameters(message, {{"----", toolhost::path_parameter(document)}});
    return send(bus, message, result);
}

int append_token(sd_bus_message *message) {
    const char *token = std::getenv("XDG_ACTIVATION_TOKEN");
    if (!token)
        token = std::getenv("DESKTOP_STARTUP_ID");
    if (!token)
        return sd_bus_message_append(message, "a{sv}", 0);
    return sd_bus_message_append(message, "a{sv}", 2, "activation-token", "s", token, "desktop-startup-id",
                                 "s", token);
}

bool activate(sd_bus *bus, const std::string &name, const std::string &object) {
    sd_bus_message *message = nullptr;
    int result = sd_bus_message_new_method_call(bus, &message, name.c_str(), object.c_str(),
                                                "org.freedesktop.Application", "Activate");
    if (result >= 0)
        result = append_token(message);
    return send(bus, message, result);
}

// In the process beside the one that was started: sends the document once the application's name is there.
void send_when_there(pid_t program, const std::string &document) {
    const std::string name = name_prefix + std::to_string(program);
    sd_bus *bus = nullptr;
    bool there = false;
    if (sd_bus_open_user(&bus) < 0)
        return;
    const std::string rule =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'";
    sd_bus_add_match(
        bus, nullptr, rule.c_str(),
        [](sd_bus_message *, void *seen, sd_bus_error *) { return *static_cast<bool *>(seen) = true, 0; },
        &there);
    const std::vector<std::string> names = application_names(bus);
    there = there || std::find(names.begin(), names.end(), name) != names.end();
    const std::uint64_t end = now() + launch_microseconds;
    while (!there && now() < end)
        if (const int result = sd_bus_process(bus, nullptr); result < 0)
            break;
        else if (result == 0)
            sd_bus_wait(bus, end - std::min(end, now()));
    if (there)
        send_document(bus, name, document);
    sd_bus_flush_close_unref(bus);
}

sd_bus *session_bus() {
    sd_bus *bus = nullptr;
    const char *unique = nullptr;
    if (sd_bus_open_user(&bus) < 0)
        return nullptr;
    return sd_bus_get_unique_name(bus, &unique) < 0 ? sd_bus_close_unref(bus) : bus;
}

} // namespace

bool open_bundle(const std::string &path, const std::string &document, std::string &problem) {
    sd_bus *const bus = session_bus();
    const std::string name = bus ? running(bus, canonical(path)) : "";
    const bool sent = !name.empty() && (document.empty() || send_document(bus, name, document));
    if (sent)
        activate(bus, name, app_path);
    sd_bus_flush_close_unref(bus);
    if (sent)
        return true;
    if (!bus) {
        problem = "there is no session bus for " + path;
        return false;
    }
    const std::string leaf = path.substr(path.find_last_of('/') + 1);
    Launch launch;
    launch.words = {path + "/Contents/Linux/" + leaf.substr(0, leaf.find_last_of('.'))};
    if (!document.empty())
        launch.after = [&document](pid_t program) { send_when_there(program, document); };
    if (const int error = start_detached(launch); error != 0) {
        problem = "I can't start " + launch.words[0] + ": " + std::strerror(error);
        return false;
    }
    return true;
}

bool open_on_bus(const DesktopEntry &entry, const std::string &document) {
    sd_bus *const bus = session_bus();
    if (!bus)
        return false;
    int owned = 0;
    bool known = false;
    for (const char *method : {"NameHasOwner", "ListActivatableNames"}) {
        sd_bus_message *reply = nullptr;
        const bool lists = std::strcmp(method, "ListActivatableNames") == 0;
        if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               method, nullptr, &reply, lists ? "" : "s", entry.id.c_str()) >= 0) {
            const char *name = nullptr;
            if (!lists && sd_bus_message_read(reply, "b", &owned) > 0 && owned)
                known = true;
            if (lists && sd_bus_message_enter_container(reply, 'a', "s") > 0)
                while (sd_bus_message_read_basic(reply, 's', &name) > 0)
                    known = known || entry.id == name;
        }
        sd_bus_message_unref(reply);
    }
    std::string object = "/" + entry.id;
    std::replace(object.begin(), object.end(), '.', '/');
    std::replace(object.begin(), object.end(), '-', '_');
    bool sent = false;
    if (known && document.empty()) {
        sent = activate(bus, entry.id, object);
    } else if (known) {
        sd_bus_message *message = nullptr;
        int result = sd_bus_message_new_method_call(bus, &message, entry.id.c_str(), object.c_str(),
                                                    "org.freedesktop.Application", "Open");
        if (result >= 0)
            result = sd_bus_message_append(message, "as", 1, file_uri(document).c_str());
        if (result >= 0)
            result = append_token(message);
        sent = send(bus, message, result);
    }
    sd_bus_flush_close_unref(bus);
    return sent;
}

} // namespace helpers
