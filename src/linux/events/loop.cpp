#include "linux/events/loop.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "common/clock.h"
#include "linux/events/event_sources.h"

namespace quillon {

static sd_event *loop = nullptr;
// The longest that one dispatch goes on in microseconds: a front with a display has to look after that too
// while many clients call at once.
static constexpr std::uint64_t longest_dispatch = 20000;

static int on_leave_signal(sd_event_source *, const struct signalfd_siginfo *, void *) {
    RequestLeave();
    return 0;
}

sd_event *HostLoop() {
    if (loop)
        return loop;
    if (sd_event_new(&loop) < 0) {
        std::fputs("quillon: the host gives no event loop\n", stderr);
        std::exit(71);
    }
    sigset_t leaving;
    sigemptyset(&leaving);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&leaving, number);
    sigprocmask(SIG_BLOCK, &leaving, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sd_event_add_signal(loop, nullptr, number, on_leave_signal, nullptr);
    return loop;
}

int LoopDescriptor() {
    return sd_event_get_fd(HostLoop());
}

int LoopDispatch() {
    sd_event *const events = HostLoop();
    int served = 0;
    const std::uint64_t end = common::now_microseconds() + longest_dispatch;
    while (!served || common::now_microseconds() < end) {
        if (sd_event_get_state(events) == SD_EVENT_FINISHED)
            return served;
        int ready = sd_event_get_state(events) == SD_EVENT_ARMED ? 0 : sd_event_prepare(events);
        if (ready == 0)
            ready = sd_event_wait(events, 0);
        if (ready <= 0)
            break;
        sd_event_dispatch(events);
        served = 1;
    }
    // The last wait or dispatch leaves the loop unprepared; arm it so that its descriptor becomes readable.
    while (sd_event_get_state(events) == SD_EVENT_INITIAL && sd_event_prepare(events) > 0) {
        sd_event_dispatch(events);
        served = 1;
    }
    return served;
}

void LoopSleep(int milliseconds) {
    if (LoopDispatch())
        return;
    const std::uint64_t limit =
        milliseconds < 0 ? UINT64_MAX : static_cast<std::uint64_t>(milliseconds) * 1000;
    if (sd_event_wait(HostLoop(), limit) > 0)
        sd_event_dispatch(HostLoop());
    LoopDispatch();
}

} // namespace quillon
