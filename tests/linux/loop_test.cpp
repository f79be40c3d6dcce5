#include "linux/events/loop.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "linux/events/event_sources.h"

namespace quillon {
namespace {

int served = 0;

int on_ready(sd_event_source *, int, std::uint32_t, void *) {
    served++;
    return 0;
}

int is_readable(int descriptor) {
    pollfd source = {descriptor, POLLIN, 0};
    return poll(&source, 1, 0) == 1;
}

TEST(HostLoop, ASourceThatIsAlwaysReadyDoesNotHoldADispatchForEver) {
    const int always = eventfd(1, EFD_CLOEXEC);
    sd_event_source *source = nullptr;
    ASSERT_GE(sd_event_add_io(HostLoop(), &source, always, EPOLLIN, on_ready, nullptr), 0);
    for (int i = 0; i < 3; i++) {
        served = 0;
        EXPECT_EQ(LoopDispatch(), 1);
        EXPECT_GT(served, 1);
        // What is left is told to whoever sleeps on the descriptor.
        EXPECT_TRUE(is_readable(LoopDescriptor()));
    }
    sd_event_source_disable_unref(source);
    close(always);
    LoopDispatch();
    EXPECT_EQ(LoopDispatch(), 0);
    EXPECT_FALSE(is_readable(LoopDescriptor()));
}

} // namespace
} // namespace quillon
