#include <gtest/gtest.h>

#include <string>

#include "console/output.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

TEST(Message, The20480thByteIsTheFirstThatDoesNotFit) {
    const test::TemporaryHome home;
    const test::RecordingFront recorded;
    const std::string fits(20479, 'x');
    EXPECT_EQ(ml_printf("%s", fits.c_str()), 20479);
    EXPECT_EQ(recorded->printed, fits);
    recorded->printed.clear();
    EXPECT_EQ(ml_printf("%s", (fits + "x").c_str()), 20479);
    EXPECT_EQ(recorded->printed, fits + "\n[The rest of this message does not fit.]\n");
}

} // namespace
} // namespace quillon
