#include <gtest/gtest.h>
#include <unistd.h>

#include "headless/headless.h"
#include "headless/script_lines.h"
#include "headless/script_steps.h"
#include "linux/events/event_sources.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

std::vector<std::uint32_t> taken_messages() {
    std::vector<std::uint32_t> messages;
    const auto any = [](const EventRecord &, const void *) { return 1; };
    for (EventRecord event; TakeFromQueue(any, nullptr, &event);)
        messages.push_back(event.message);
    return messages;
}

TEST(ScriptSteps, AMenuTakesTwoNumbersThatItCanHave) {
    taken_messages();
    for (const char *const refused :
         {"", "129", "129 x", "4294967425 1", "129 4294967297", "-1 1", "129 65537"})
        TakeStep("menu", refused);
    EXPECT_TRUE(taken_messages().empty());
    TakeStep("menu", "129 2");
    EXPECT_EQ(taken_messages(), std::vector<std::uint32_t>{129u << 16 | 2});
}

TEST(ScriptSteps, AnAnswerNamesAControlThatThereCanBe) {
    const test::TemporaryHome home;
    const std::string script =
        home.file("work/script", "dialog dvips\n press 4294967297\n check 5 8589934593\n"
                                 " set 4 a  b\n check 5 1\n press 1\nquit\n");
    ASSERT_EQ(OpenScript(script.c_str()), 1);
    std::string word, rest;
    ASSERT_TRUE(PeekStep(&word, &rest));
    DropLine();
    EXPECT_EQ(TakeStep(word, rest), 0);
    std::vector<DialogStep> steps;
    ASSERT_EQ(NextDialogAnswer("dvips", &steps), 1);
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[0].text, "a  b");
    EXPECT_EQ(steps[1].value, 1);
    EXPECT_EQ(steps[2].kind, DialogStep::press);
    EXPECT_EQ(NextDialogAnswer("dvips", &steps), 0);
    ASSERT_TRUE(PeekStep(&word, &rest));
    EXPECT_EQ(word, "quit");
}

} // namespace
} // namespace quillon
