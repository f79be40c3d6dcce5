#include "common/followers.h"

#include <algorithm>
#include <deque>
#include <malloc.h>
#include <utility>
#include <vector>

#include "common/clock.h"

namespace common {

namespace {

constexpr std::size_t question_distance = 256 * 1024; // bytes between two questions
// How long a follower may have answered nothing, in microseconds; longer where its answers are looked at only
// between the bursts of text.
constexpr std::uint64_t patience = 250'000, long_patience = 2'000'000;

} // namespace

struct Followers::Follower {
    Followers *owner = nullptr;
    std::string name;
    sd_bus_track *track = nullptr;
    // The questions on their way, which are answered in turn.
    struct Question {
        sd_bus_slot *slot;
        std::uint64_t sent_before;
    };
    std::deque<Question> questions;
    std::uint64_t sent = 0, asked = 0, read = 0; // bytes
    std::uint64_t heard_at = 0; // when it last answered or had nothing to answer, in microseconds

    ~Follower() {
        for (const Question &question : questions)
            sd_bus_slot_unref(question.slot);
        sd_bus_track_unref(track);
    }
};

Followers::Followers(sd_bus *bus, std::function<void()> changed, std::function<void()> serve, bool waits)
    : bus_(sd_bus_ref(bus)), changed_(std::move(changed)), serve_(std::move(serve)), waits_(waits) {}

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

bool Followers::add(const char *name) {
    auto &entry = all_[name];
    if (entry)
        return false;
    entry = std::make_unique<Follower>();
    entry->owner = this;
    entry->name = name;
    if (sd_bus_track_new(bus_, &entry->track, on_gone, entry.get()) < 0 ||
        sd_bus_track_add_name(entry->track, name) < 0)
        all_.erase(name);
    return true;
}

void Followers::remove(const char *name) {
    // What was kept for it is given back to the system.
    if (all_.erase(name) > 0)
        malloc_trim(0);
}

int Followers::on_answer(sd_bus_message *, void *context, sd_bus_error *) {
    auto *const follower = static_cast<Follower *>(context);
    follower->read = follower->questions.front().sent_before;
    follower->heard_at = now_microseconds();
    sd_bus_slot_unref(follower->questions.front().slot);
    follower->questions.pop_front();
    return 0;
}

// Asks the follower something that every program on the bus answers, in turn with what was sent before.
void Followers::ask(Follower &follower) {
    if (follower.sent - follower.asked < question_distance)
        return;
    sd_bus_message *call = nullptr;
    sd_bus_slot *slot = nullptr;
    if (sd_bus_message_new_method_call(bus_, &call, follower.name.c_str(), "/", "org.freedesktop.DBus.Peer",
                                       "Ping") >= 0 &&
        sd_bus_call_async(bus_, &slot, call, on_answer, &follower, UINT64_MAX) >= 0) {
        if (follower.questions.empty())
            follower.heard_at = now_microseconds();
        follower.questions.push_back({slot, follower.sent});
        follower.asked = follower.sent;
    }
    sd_bus_message_unref(call);
}

// False when the follower is too far behind and has answered nothing for too long. It may have gone
// meanwhile.
bool Followers::keeps_up(const std::string &name) {
    // What it has answered may not have been looked at for a while.
    const std::uint64_t start = waits_ ? now_microseconds() : 0;
    bool served = false;
    for (auto found = all_.find(name); found != all_.end(); found = all_.find(name)) {
        const Follower &follower = *found->second;
        if (follower.sent - follower.read <= most_behind || follower.questions.empty())
            return true;
        if (served || !serve_) {
            const std::uint64_t silence = now_microseconds() - std::max(follower.heard_at, start);
            if (silence > (serve_ ? patience : long_patience))
                return false;
            if (!waits_)
                return follower.sent - follower.read <= far_behind;
        }
        if (serve_)
            serve_();
        served = true;
    }
    return false;
}

void Followers::send(const char *path, const char *interface, const char *member, std::size_t size,
                     const std::function<int(sd_bus_message *)> &append) {
    std::vector<std::string> names;
    bool left_behind = false;
    for (const auto &follower : all_)
        names.push_back(follower.first);
    for (const std::string &name : names) {
        if (!keeps_up(name)) {
            remove(name.c_str());
            left_behind = true;
            continue;
        }
        Follower &follower = *all_.at(name);
        sd_bus_message *signal = nullptr;
        if (sd_bus_message_new_signal(bus_, &signal, path, interface, member) >= 0 && append(signal) >= 0)
            sd_bus_send_to(bus_, signal, name.c_str(), nullptr);
        sd_bus_message_unref(signal);
        follower.sent += size;
        ask(follower);
    }
    if (left_behind && changed_)
        changed_();
}

} // namespace common
