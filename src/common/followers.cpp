#include "common/followers.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace common {

namespace {

constexpr std::size_t question_distance = 256 * 1024; // bytes between two questions

} // namespace

struct Followers::Follower {
    Followers *owner = nullptr;
    std::string name;
    sd_bus_track *track = nullptr;
    sd_bus_slot *question = nullptr; // one is on its way
    std::uint64_t sent = 0, asked = 0, read = 0;

    ~Follower() {
        sd_bus_slot_unref(question);
        sd_bus_track_unref(track);
    }
};

Followers::Followers(sd_bus *bus, std::function<void()> changed)
    : bus_(sd_bus_ref(bus)), changed_(std::move(changed)) {}

Followers::~Followers() {
    all_.clear();
    sd_bus_unref(bus_);
}

int Followers::on_gone(sd_bus_track *, void *context) {
    auto *const follower = static_cast<Follower *>(context);
    Followers *const owner = follower->owner;
    owner->remove(std::string(follower->name).c_str());
    if (owner->changed_)
        owner->changed_();
    return 1; // with 0 the library would call again and again
}

void Followers::add(const char *name) {
    auto &entry = all_[name];
    if (entry)
        return;
    entry = std::make_unique<Follower>();
    entry->owner = this;
    entry->name = name;
    if (sd_bus_track_new(bus_, &entry->track, on_gone, entry.get()) < 0 ||
        sd_bus_track_add_name(entry->track, name) < 0)
        all_.erase(name);
}

void Followers::remove(const char *name) {
    all_.erase(name);
}

int Followers::on_answer(sd_bus_message *, void *context, sd_bus_error *) {
    auto *const follower = static_cast<Follower *>(context);
    follower->question = sd_bus_slot_unref(follower->question);
    follower->read = follower->asked;
    return 0;
}

// Asks the follower something that every program on the bus answers, in turn with what was sent before.
void Followers::ask(Follower &follower) {
    if (follower.question || follower.sent - follower.read < question_distance)
        return;
    follower.asked = follower.sent;
    sd_bus_message *call = nullptr;
    if (sd_bus_message_new_method_call(bus_, &call, follower.name.c_str(), "/", "org.freedesktop.DBus.Peer",
                                       "Ping") >= 0)
        sd_bus_call_async(bus_, &follower.question, call, on_answer, &follower, UINT64_MAX);
    sd_bus_message_unref(call);
}

void Followers::send(const char *path, const char *interface, const char *member, std::size_t size,
                     const std::function<int(sd_bus_message *)> &append) {
    std::vector<std::string> left_behind;
    for (const auto &[name, follower] : all_) {
        if (follower->sent - follower->read + size > most_behind && follower->sent > follower->read) {
            left_behind.push_back(name);
            continue;
        }
        sd_bus_message *signal = nullptr;
        if (sd_bus_message_new_signal(bus_, &signal, path, interface, member) >= 0 && append(signal) >= 0)
            sd_bus_send_to(bus_, signal, name.c_str(), nullptr);
        sd_bus_message_unref(signal);
        follower->sent += size;
        ask(*follower);
    }
    for (const std::string &name : left_behind)
        remove(name.c_str());
    if (!left_behind.empty() && changed_)
        changed_();
}

} // namespace common
