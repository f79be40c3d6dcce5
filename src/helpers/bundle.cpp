#include "helpers/bundle.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <set>
#include <sys/file.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

#include "common/activation.h"
#include "common/bundle.h"
#include "common/clock.h"
#include "common/event_codec.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/session_bus.h"
#include "helpers/launch.h"

namespace helpers {

namespace {

constexpr std::uint64_t ask_microseconds = 1'000'000;
constexpr std::uint64_t launch_microseconds = 30'000'000;

// Returns the bus names of the processes above this one. They may wait for this one and then cannot answer.
std::set<std::string> ancestors() {
    std::set<std::string> found;
    pid_t pid = getppid();
    while (pid > 1) {
        found.insert(common::application_bus_name(pid));
        std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
        std::string line;
        std::getline(file, line);
        const std::size_t end = line.rfind(')');
        pid = end != std::string::npos && line.size() > end + 4 ? std::atoi(line.c_str() + end + 4) : 0;
    }
    return found;
}

// True when the process behind an application's bus name runs a program of the bundle.
bool started_from(const std::string &name, const std::string &bundle) {
    const std::string pid = name.substr(std::strlen(common::application_name_prefix));
    return common::canonical_path("/proc/" + pid + "/exe").starts_with(bundle + "/Contents/");
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
        sd_bus_message_read(message, "v", "s", &path) > 0 &&
        common::canonical_path(path) == *question->bundle)
        *question->found = question->name;
    return 0;
}

// Returns the bus name of the application that runs from the bundle, empty when none does. Those that do not
// say their path within a second are passed over.
std::string running(sd_bus *bus, const std::string &bundle) {
    const std::set<std::string> cannot_answer = ancestors();
    const std::vector<std::string> names = common::application_names(bus);
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
        if (sd_bus_call_method_async(bus, &question.slot, question.name.c_str(), common::application_path,
                                     common::properties_interface, "Get", on_path, &question, "ss",
                                     common::application_interface, "Path") >= 0)
            open_questions++;
    }
    common::serve_until(bus, common::now_microseconds() + ask_microseconds,
                        [&] { return open_questions == 0 || !found.empty(); });
    for (Question &question : questions)
        sd_bus_slot_unref(question.slot);
    return found;
}

bool send_document(sd_bus *bus, const std::string &name, const std::string &document) {
    sd_bus_message *message = nullptr;
    const int result = common::new_event_call(
        bus, name, {"aevt", "odoc", {common::path_parameter("----", document)}}, &message);
    return common::send_without_reply(bus, message, result) >= 0;
}

// Sends the document as soon as the application that was just started has its bus name, at most 30 seconds
// from now. A process of its own waits here.
void send_when_there(pid_t program, const std::string &document) {
    const std::string name = common::application_bus_name(program);
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
    const std::vector<std::string> names = common::application_names(bus);
    there = there || std::find(names.begin(), names.end(), name) != names.end();
    common::serve_until(bus, common::now_microseconds() + launch_microseconds, [&] { return there; });
    if (there)
        send_document(bus, name, document);
    sd_bus_flush_close_unref(bus);
}

// The note of the process that was started last from a bundle, in the temporary folder. Who holds it has it
// for itself; it is let go at the end of the scope.
class StartNote {
  public:
    explicit StartNote(const std::string &bundle) : bundle_(bundle) {
        const std::string folder = common::temporary_folder();
        if (!common::make_private_folder(folder))
            return;
        const std::string path = folder + "/started-" + std::to_string(std::hash<std::string>{}(bundle));
        descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~StartNote() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    StartNote(const StartNote &) = delete;
    StartNote &operator=(const StartNote &) = delete;

    // Returns the process when it runs a program of the bundle still, else 0.
    pid_t process() const {
        pid_t process = 0;
        if (descriptor_ < 0 || pread(descriptor_, &process, sizeof process, 0) != sizeof process)
            return 0;
        const std::string words = common::words_of_process(process);
        return words.find(bundle_ + "/Contents/") != std::string::npos ? process : 0;
    }
    void keep(pid_t process) const {
        // Without the note a second start is not known; the program itself runs all the same.
        [[maybe_unused]] const ssize_t written =
            descriptor_ >= 0 ? pwrite(descriptor_, &process, sizeof process, 0) : 0;
    }

  private:
    std::string bundle_;
    int descriptor_ = -1;
};

} // namespace

bool open_bundle(const std::string &path, const std::string &document, std::string &problem) {
    const std::string bundle = common::canonical_path(path);
    // Two commands at once start one program: the second finds the first's note of what it has started.
    const StartNote note(bundle);
    sd_bus *const bus = common::open_session_bus();
    const std::string name = bus ? running(bus, bundle) : "";
    const bool sent = !name.empty() && (document.empty() || send_document(bus, name, document));
    if (sent)
        common::send_activate(bus, name, common::application_path, common::own_token());
    sd_bus_flush_close_unref(bus);
    if (sent)
        return true;
    if (!bus) {
        problem = "there is no session bus for " + path;
        return false;
    }
    if (const pid_t starting = note.process(); starting > 0) {
        if (!document.empty())
            work_detached([&] { send_when_there(starting, document); }, -1);
        return true;
    }
    Launch launch;
    pid_t program = 0;
    launch.words = {common::program_of_bundle(path)};
    if (!document.empty())
        launch.after = [&document](pid_t started) { send_when_there(started, document); };
    if (const int error = start_detached(launch, &program); error != 0) {
        problem = "I can't start " + launch.words[0] + ": " + std::strerror(error);
        return false;
    }
    note.keep(program);
    return true;
}

bool open_on_bus(const common::DesktopEntry &entry, const std::string &document) {
    sd_bus *const bus = common::open_session_bus();
    if (!bus)
        return false;
    bool known = common::name_has_owner(bus, entry.id.c_str());
    sd_bus_message *reply = nullptr;
    if (!known &&
        sd_bus_call_method(bus, common::bus_name, common::bus_path, common::bus_interface,
                           "ListActivatableNames", nullptr, &reply, "") >= 0 &&
        sd_bus_message_enter_container(reply, 'a', "s") > 0) {
        const char *name = nullptr;
        while (sd_bus_message_read_basic(reply, 's', &name) > 0)
            known = known || entry.id == name;
    }
    sd_bus_message_unref(reply);
    std::string object = "/" + entry.id;
    std::replace(object.begin(), object.end(), '.', '/');
    std::replace(object.begin(), object.end(), '-', '_');
    bool sent = false;
    if (known && document.empty()) {
        sent = common::send_activate(bus, entry.id, object, common::own_token()) >= 0;
    } else if (known) {
        sd_bus_message *message = nullptr;
        int result = sd_bus_message_new_method_call(bus, &message, entry.id.c_str(), object.c_str(),
                                                    common::desktop_interface, "Open");
        if (result >= 0)
            result = sd_bus_message_append(message, "as", 1, common::file_uri(document).c_str());
        if (result >= 0)
            result = common::append_platform_data(message, common::own_token());
        sent = common::send_without_reply(bus, message, result) >= 0;
    }
    sd_bus_flush_close_unref(bus);
    return sent;
}

} // namespace helpers
