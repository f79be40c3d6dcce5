// Commands through the real pipe: what they print, how they end, and where they run.
#include "tools/shell_commands.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "front/front.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

std::size_t counted = 0, line_ends = 0, others = 0;

class ShellCommands : public ::testing::Test {
  protected:
    void SetUp() override {
        before_ = std::filesystem::current_path();
        ASSERT_EQ(getMachOCalls(), noErr);
    }
    void TearDown() override {
        std::filesystem::current_path(before_);
        BSDfread = nullptr;
        BSDpopenFunc = nullptr;
        BSDpclose = nullptr;
        BSDfgetc = nullptr;
        BSDfgets = nullptr;
        BSDchdir = nullptr;
    }
    // What the command prints; STATUS becomes InvokeTool's result.
    std::string printed_by(const std::string &command, int *status) {
        front_->printed.clear();
        *status = InvokeTool(command.c_str(), nullptr);
        return front_->printed;
    }

    std::filesystem::path before_;
    test::TemporaryHome home_;
    test::RecordingFront front_;
};

template <typename Function> void *address(Function *function) {
    return reinterpret_cast<void *>(function);
}

} // namespace

TEST_F(ShellCommands, EachNameStandsForTheFunctionOfThatName) {
    void *const library = ::dlopen("libc.so.6", RTLD_LAZY);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(address(BSDfread), ::dlsym(library, "fread"));
    EXPECT_EQ(address(BSDpclose), ::dlsym(library, "pclose"));
    EXPECT_EQ(address(BSDfgetc), ::dlsym(library, "fgetc"));
    EXPECT_EQ(address(BSDfgets), ::dlsym(library, "fgets"));
    EXPECT_EQ(address(BSDchdir), ::dlsym(library, "chdir"));
    // This one is of our own, which finds the helpers.
    EXPECT_NE(BSDpopenFunc, nullptr);
    EXPECT_NE(address(BSDpopenFunc), ::dlsym(library, "popen"));
    ::dlclose(library);
}

TEST_F(ShellCommands, WithoutAFolderACommandRunsInTheCurrentOne) {
    EXPECT_EQ(InvokeTool("pwd -P", nullptr), 1);
    EXPECT_EQ(front_->printed, std::filesystem::canonical(before_).string() + "\n");
    EXPECT_EQ(std::filesystem::current_path(), before_);
}

TEST_F(ShellCommands, AFolderStaysTheCurrentOne) {
    const std::string folder = home_.folder("work/a b"), other = home_.folder("work/c");
    EXPECT_EQ(InvokeTool("pwd", folder.c_str()), 1);
    EXPECT_EQ(std::filesystem::current_path(), folder);
    EXPECT_EQ(InvokeTool("pwd", nullptr), 1);
    EXPECT_EQ(InvokeTool("pwd; exit 1", other.c_str()), 0);
    EXPECT_EQ(InvokeTool("pwd", nullptr), 1);
    EXPECT_EQ(front_->printed, folder + "\n" + folder + "\n" + other + "\n" + other + "\n");
    EXPECT_EQ(std::filesystem::current_path(), other);
}

TEST_F(ShellCommands, AFolderThatIsMissingDoesNotKeepTheCommandFromRunning) {
    EXPECT_EQ(InvokeTool("echo said", home_.path("none").c_str()), 1);
    EXPECT_EQ(front_->printed, "said\n");
    EXPECT_EQ(std::filesystem::current_path(), before_);
}

TEST_F(ShellCommands, ACommandThatPrintsNothingAndEndsWellYieldsOneAndPrintsNothing) {
    EXPECT_EQ(InvokeTool("true", nullptr), 1);
    EXPECT_EQ(InvokeTool("", nullptr), 1);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(ShellCommands, AnyOtherStatusYieldsZeroAndTheOutputIsPrinted) {
    int status = 1;
    EXPECT_EQ(printed_by("echo out; echo err >&2; exit 3", &status), "out\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(printed_by("(echo out; echo err >&2; exit 1) 2>&1", &status), "out\nerr\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(printed_by("echo out; kill -KILL $$", &status), "out\n");
    EXPECT_EQ(status, 0);
}

TEST_F(ShellCommands, ALineOfAnyLengthArrivesWhole) {
    int status = 0;
    for (const std::size_t length : {1u, 1022u, 1023u, 1024u, 1025u, 2046u, 2047u, 5000u}) {
        SCOPED_TRACE(length);
        std::string line;
        for (std::size_t i = 0; i < length; i++)
            line += static_cast<char>('a' + i % 26);
        home_.file("work/line", line + "\nlast\n");
        EXPECT_EQ(printed_by("cat " + home_.path("work/line"), &status), line + "\nlast\n");
        home_.file("work/line", line);
        EXPECT_EQ(printed_by("cat " + home_.path("work/line"), &status), line);
        EXPECT_EQ(status, 1);
    }
}

TEST_F(ShellCommands, NoLineEndIsAddedAtTheEnd) {
    int status = 0;
    EXPECT_EQ(printed_by("printf 'one\\ntwo'", &status), "one\ntwo");
    EXPECT_EQ(printed_by("printf '\\n\\n'", &status), "\n\n");
}

TEST_F(ShellCommands, OutputIsPrintedWhileTheCommandRuns) {
    static int answers;
    static Front answering;
    const std::string queue = home_.path("work/queue");
    ASSERT_EQ(::mkfifo(queue.c_str(), 0600), 0);
    answers = ::open(queue.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(answers, 0);
    answering = *front;
    answering.text_appended = [](const void *data, std::size_t size) {
        test::RecordingFront::record().printed.append(static_cast<const char *>(data), size);
        EXPECT_EQ(::write(answers, "two\n", 4), 4);
    };
    front = &answering;
    // The command gets the second line from the console, once that has printed the first.
    EXPECT_EQ(InvokeTool(("echo one; timeout 60 head -n 1 " + queue).c_str(), nullptr), 1);
    EXPECT_EQ(front_->printed, "one\rtwo\r");
    ::close(answers);
}

TEST_F(ShellCommands, AHundredMegabytesArrive) {
    static Front counting;
    counting = *front;
    counting.text_appended = [](const void *data, std::size_t size) {
        const char *const bytes = static_cast<const char *>(data);
        counted += size;
        const std::size_t ends = static_cast<std::size_t>(std::count(bytes, bytes + size, '\r'));
        line_ends += ends;
        others += size - ends - static_cast<std::size_t>(std::count(bytes, bytes + size, 'x'));
    };
    front = &counting;
    counted = line_ends = others = 0;
    // Lines of 1,499 bytes and their end, of which the last one is cut.
    EXPECT_EQ(InvokeTool("yes \"$(head -c 1499 /dev/zero | tr '\\0' x)\" | head -c 100000000", nullptr), 1);
    EXPECT_EQ(counted, 100000000u);
    EXPECT_EQ(line_ends, 66666u);
    EXPECT_EQ(others, 0u);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(ShellCommands, ACommandThatIsNotThereYieldsZeroAndTheReasonIsPrinted) {
    int status = 1;
    const std::string printed = printed_by("/none/such-command 2>&1", &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(printed.find("/none/such-command: not found"), std::string::npos) << printed;
}

TEST_F(ShellCommands, APipeThatCannotBeOpenedYieldsZeroAndPrintsNothing) {
    rlimit kept = {}, none = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &kept), 0);
    none.rlim_max = kept.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const int status = InvokeTool("echo said", home_.path("work").c_str());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &kept), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(front_->printed, "");
    EXPECT_EQ(std::filesystem::current_path(), home_.path("work"));
    EXPECT_EQ(InvokeTool("true", nullptr), 1);
}

} // namespace quillon
