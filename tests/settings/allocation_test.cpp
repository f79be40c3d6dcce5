// A value that there is no memory for ends the shell. A sanitizer has its own allocator, which cannot be made
// to refuse one block.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "settings/settings.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

#ifndef __SANITIZE_ADDRESS__

static std::atomic<std::size_t> refused_size = SIZE_MAX;

extern "C" void *__libc_malloc(std::size_t size);

extern "C" void *malloc(std::size_t size) {
    return size == refused_size ? nullptr : __libc_malloc(size);
}

namespace quillon {
namespace {

constexpr std::size_t value_size = 777; // a size that nothing else asks for
constexpr int went_on = 42;

// The exit status of a child that reads a long value when there is no memory for it.
int status_of(void (*read)()) {
    const test::TemporaryHome home;
    const test::RecordingFront recorded;
    home.preferences("LONG=" + std::string(value_size - 1, 'v') + "\n");
    inBackground = 1; // so that no alert is shown
    return test::in_child([read] {
        refused_size = value_size;
        read();
        return went_on;
    });
}

TEST(SettingsAllocation, AValueThatThereIsNoMemoryForEndsTheShell) {
    EXPECT_EQ(status_of([] { myget_string("LONG"); }), 0);
    EXPECT_EQ(status_of([] { get_str_resource("LONG"); }), 0);
    EXPECT_EQ(status_of([] { myget_string("NONE"); }), went_on);
}

} // namespace
} // namespace quillon

#endif
