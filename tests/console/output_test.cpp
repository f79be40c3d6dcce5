#include "console/output.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "console/window.h"
#include "core/event_loop.h"
#include "files/paths.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "support/whole_text.h"

namespace quillon {
namespace {

class Console : public ::testing::Test {
  protected:
    std::string text_bytes() const { return test::whole_text(text); }
    FSSpec file_of(const std::string &content) {
        std::ofstream(home_.path("work/log"), std::ios::binary) << content;
        FSSpec spec;
        EXPECT_EQ(UnixToFSS(home_.path("work").c_str(), "log", &spec), 1);
        return spec;
    }
    void type(const std::string &characters) {
        for (const char byte : characters)
            PostEvent(keyDown, static_cast<unsigned char>(byte), 0, {0, 0});
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Console, PrintfTurnsLineFeedsIntoReturnsAndGivesTheLength) {
    EXPECT_EQ(ml_printf("a\nb\n"), 4);
    EXPECT_EQ(text_bytes(), "a\rb\r");
}

// The front's work is asked for where a line begins or ends, not at each piece of a line.
TEST_F(Console, TextIsShownWhenTheNumberOfLinesChanges) {
    static int updates;
    static Front counting;
    counting = *front;
    counting.text_update = [](int) { updates++; };
    front = &counting;
    ml_printf("a\n");
    updates = 0;
    ml_printf("b");
    ml_printf("c");
    EXPECT_EQ(updates, 0);
    ml_printf("d\n");
    EXPECT_EQ(updates, 1);
    ml_printf("e");
    EXPECT_EQ(updates, 1);
    ml_printf("f\ng\n");
    EXPECT_EQ(updates, 2);
}

TEST_F(Console, PutsAddsNoLineEnd) {
    EXPECT_EQ(ml_puts("x"), 1);
    EXPECT_EQ(text_bytes(), "x");
}

TEST_F(Console, FprintfToAFileWritesItUnchanged) {
    const std::string path = home_.path("work/out");
    std::FILE *const file = std::fopen(path.c_str(), "w");
    EXPECT_EQ(ml_fprintf(file, "a%d\n", 7), 3);
    std::fclose(file);
    std::string content;
    std::getline(std::ifstream(path), content, '\0');
    EXPECT_EQ(content, "a7\n");
    EXPECT_EQ(text_bytes(), "");
    EXPECT_EQ(ml_fprintf(stderr, "e\n"), 2);
    EXPECT_EQ(text_bytes(), "e\r");
}

TEST_F(Console, PutcWritesToTheConsoleWhateverTheStreamIs) {
    std::FILE *const file = std::tmpfile();
    EXPECT_EQ(ml_putc('A', file), 'A');
    EXPECT_EQ(std::ftell(file), 0);
    std::fclose(file);
    EXPECT_EQ(ml_fputc('\n', stdout), '\n');
    EXPECT_EQ(ml_putchar(0), 0);
    EXPECT_EQ(text_bytes(), "A\r");
}

TEST_F(Console, AReturnThatIsThereStays) {
    ml_fputs("a\r\nb", stdout);
    EXPECT_EQ(text_bytes(), "a\r\rb");
}

TEST_F(Console, AMessageThatDoesNotFitSaysSo) {
    const std::string huge(30000, 'x');
    EXPECT_EQ(ml_printf("%s", huge.c_str()), 20479);
    const std::string all = text_bytes();
    EXPECT_EQ(all.substr(0, 20479), huge.substr(0, 20479));
    EXPECT_NE(all.find("The rest of this message does not fit."), std::string::npos);
    EXPECT_EQ(ml_puts(huge.c_str()), 30000);
    EXPECT_NE(text_bytes().find(huge), std::string::npos);
}

TEST_F(Console, TextPrintfGivesTheLength) {
    EXPECT_EQ(text_printf("%d\n", 12), 3);
    EXPECT_EQ(text_bytes(), "12\r");
}

TEST_F(Console, ATypedLineComesBackByteByByteAndEndsWithOneEndOfFile) {
    type("ab\r");
    EXPECT_EQ(ml_fgetc(stdin), 'a');
    EXPECT_EQ(ml_fgetc(stdin), 'b');
    EXPECT_EQ(ml_fgetc(stdin), 10);
    EXPECT_EQ(ml_fgetc(stdin), -1);
    type("c d\r");
    for (const char letter : {'c', ' ', 'd'})
        EXPECT_EQ(ml_fgetc(stdin), letter);
    EXPECT_EQ(ml_fgetc(stdin), 10);
    EXPECT_EQ(ml_fgetc(stdin), -1);
}

TEST_F(Console, AByteOf233ComesBackNegative) {
    type("\xE9\r");
    EXPECT_EQ(ml_fgetc(stdin), -23);
    EXPECT_EQ(ml_fgetc(stdin), 10);
    EXPECT_EQ(ml_fgetc(stdin), -1);
}

TEST_F(Console, InputEndsWhenItIsFull) {
    char buffer[8];
    type("abcdefgh\r");
    EXPECT_EQ(ReadCharsFromConsole(buffer, 4), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(get_text, 0);
    EventRecord left;
    while (GetNextEvent(everyEvent, &left))
        ;
}

TEST_F(Console, FgetsReadsOneTypedLine) {
    char buffer[16];
    type("hi\r");
    EXPECT_EQ(ml_fgets(buffer, sizeof buffer, stdin), buffer);
    EXPECT_STREQ(buffer, "hi\n");
}

TEST_F(Console, AToolFileOf1024BytesIsAppendedOnceAndDeleted) {
    const std::string content(1024, 'z');
    FSSpec spec = file_of(content);
    ReadLogFile(&spec);
    EXPECT_EQ(text_bytes(), content);
    EXPECT_FALSE(std::ifstream(home_.path("work/log")).good());
}

TEST_F(Console, AnEmptyToolFileAppendsNothingAndIsDeleted) {
    FSSpec spec = file_of("");
    ReadLogFile(&spec);
    EXPECT_EQ(text_bytes(), "");
    EXPECT_FALSE(std::ifstream(home_.path("work/log")).good());
}

TEST_F(Console, AnInfoFileStays) {
    FSSpec spec = file_of("usage\r");
    ReadInfoFile(&spec);
    EXPECT_EQ(text_bytes(), "usage\r");
    EXPECT_TRUE(std::ifstream(home_.path("work/log")).good());
}

TEST_F(Console, AToolFileThatCannotBeOpenedIsSaid) {
    FSSpec spec = file_of("x");
    std::filesystem::remove(home_.path("work/log"));
    ReadLogFile(&spec);
    EXPECT_EQ(text_bytes(), "can't open data fork\r");
}

TEST_F(Console, WithoutALogNothingIsWrittenAnywhere) {
    EXPECT_EQ(logRef, -1);
    ml_puts("x");
    WriteLogFile();
    CloseLogFile();
    EXPECT_TRUE(std::filesystem::is_empty(home_.path("run")));
}

TEST_F(Console, TheLogGetsWhatTheConsoleGets) {
    ml_puts("before\n");
    OpenLogFile();
    ASSERT_NE(logRef, -1);
    ml_puts("after\n");
    std::string path;
    for (const auto &entry : std::filesystem::directory_iterator(home_.path("run/quillon")))
        path = entry.path();
    std::string content;
    std::getline(std::ifstream(path), content, '\0');
    EXPECT_EQ(content, "after\r");
    WriteLogFile();
    std::getline(std::ifstream(path), content, '\0');
    EXPECT_EQ(content, "before\rafter\r");
    const std::int16_t reference = logRef;
    CloseLogFile();
    EXPECT_EQ(logRef, reference);
    logRef = -1;
}

TEST_F(Console, TheTerminalsHaveNames) {
    EXPECT_STREQ(__ttyname(0), "null device");
    EXPECT_STREQ(__ttyname(2), "null device");
    EXPECT_EQ(__ttyname(3), nullptr);
}

} // namespace
} // namespace quillon
