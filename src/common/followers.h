// Those who follow a stream of text over the bus, each with its own copy, so that one that does not read can
// be let go and neither the sender nor the bus keeps a heap of text for it.
#ifndef QUILLON_COMMON_FOLLOWERS_H
#define QUILLON_COMMON_FOLLOWERS_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>

namespace common {

class Followers {
  public:
    // How much a follower may be behind, in bytes. One that is further behind, and has answered none of the
    // questions that are sent between the pieces for a while, is let go; so is one that is not waited for
    // when it is FAR_BEHIND, since what it has not read stands in the sender's memory.
    static constexpr std::size_t most_behind = 8 * 1024 * 1024, far_behind = 64 * 1024 * 1024;

    // CHANGED is called when a follower has left the bus or was let go. SERVE serves the bus while one is
    // behind: for a moment when WAITS is set, so that it can catch up; without waiting otherwise. Either may
    // be empty; without SERVE the caller's own loop does it.
    Followers(sd_bus *bus, std::function<void()> changed, std::function<void()> serve, bool waits);
    ~Followers();
    Followers(const Followers &) = delete;
    Followers &operator=(const Followers &) = delete;

    // NAME is a name on the bus. False, and nothing is done, when it follows already.
    bool add(const char *name);
    void remove(const char *name);
    bool any() const { return !all_.empty(); }
    // Sends every follower the signal MEMBER of INTERFACE at the object PATH; APPEND puts SIZE bytes into it.
    void send(const char *path, const char *interface, const char *member, std::size_t size,
              const std::function<int(sd_bus_message *)> &append);

  private:
    struct Follower;
    void ask(Follower &follower);
    bool keeps_up(const std::string &name);
    static int on_answer(sd_bus_message *reply, void *context, sd_bus_error *error);
    static int on_gone(sd_bus_track *track, void *context);

    sd_bus *bus_;
    std::function<void()> changed_, serve_;
    bool waits_;
    std::map<std::string, std::unique_ptr<Follower>> all_;
};

} // namespace common

#endif
