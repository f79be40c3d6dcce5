#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <chrono>
#include <thread>

#include "support/temporary_home.h"
#include "toolbox/resources.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Resources : public testing::Test {
  protected:
    TemporaryHome home_;
    const std::string path_ = home_.preferences();

    void contents(const std::string &text) { home_.file("config/Quillon Preferences", text); }
    std::string contents() { return home_.read("config/Quillon Preferences"); }
    std::string get(const char *key) { return taken(RecordRead(path_.c_str(), key, nullptr)); }
    int set(const char *key, const std::string &value) {
        const RecordChange change = {key, value.c_str()};
        return RecordWrite(path_.c_str(), &change, 1);
    }
    ino_t inode() {
        struct stat info = {};
        ::stat(path_.c_str(), &info);
        return info.st_ino;
    }
    std::size_t entries() {
        std::size_t count = 0;
        for (const auto &entry : std::filesystem::directory_iterator(home_.path("config")))
            count += !entry.path().empty();
        return count;
    }
};

int times_open(const std::string &path) {
    int count = 0;
    std::error_code none;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(entry, none) == path;
    return count;
}

} // namespace

TEST_F(Resources, MissingFileIsNeverCreated) {
    EXPECT_EQ(RecordFileOpens(path_.c_str()), 0);
    EXPECT_EQ(get("A"), "(null)");
    EXPECT_EQ(set("A", "1"), 0);
    EXPECT_EQ(entries(), 0u);
}

TEST_F(Resources, EmptyFileTakesRecords) {
    contents("");
    EXPECT_EQ(RecordFileOpens(path_.c_str()), 1);
    EXPECT_EQ(get("A"), "(null)");
    EXPECT_EQ(set("A", "1"), 1);
    EXPECT_EQ(contents(), "A=1\n");
}

TEST_F(Resources, CommentsBlankLinesAndOtherLinesAreKept) {
    contents("# head\n\nno record\nA=1\n=none\n#A=7\nB=2\n");
    EXPECT_EQ(set("A", "three"), 1);
    EXPECT_EQ(contents(), "# head\n\nno record\nA=three\n=none\n#A=7\nB=2\n");
    EXPECT_EQ(get("#A"), "(null)");
}

TEST_F(Resources, MissingFinalLineEndIsMended) {
    contents("A=1");
    EXPECT_EQ(get("A"), "1");
    EXPECT_EQ(set("B", "2"), 1);
    EXPECT_EQ(contents(), "A=1\nB=2\n");
    contents("A=1");
    EXPECT_EQ(set("A", "2"), 1);
    EXPECT_EQ(get("A"), "2");
}

TEST_F(Resources, CarriageReturnBeforeTheLineEndBelongsToIt) {
    contents("A=1\r\nB=2\r\n");
    EXPECT_EQ(get("A"), "1");
    EXPECT_EQ(set("A", "9"), 1);
    EXPECT_EQ(contents(), "A=9\r\nB=2\r\n");
}

TEST_F(Resources, FirstRecordOfAKeyCounts) {
    contents("A=1\nA=2\n");
    EXPECT_EQ(get("A"), "1");
    EXPECT_EQ(set("A", "3"), 1);
    EXPECT_EQ(contents(), "A=3\nA=2\n");
}

TEST_F(Resources, EveryByteSurvives) {
    contents("");
    std::string all;
    for (int i = 1; i < 256; i++)
        all += static_cast<char>(i);
    for (const std::string &value :
         {all, std::string("ends blank "), std::string("\\n\\x41\\"), std::string("\xC3\xA9"),
          std::string("a=b=c"), std::string("#x"), std::string("\x1f\xca")}) {
        ASSERT_EQ(set("K", value), 1);
        EXPECT_EQ(get("K"), value);
        EXPECT_EQ(contents().find('\n'), contents().size() - 1);
    }
}

TEST_F(Resources, OnlyABlankAtTheEndIsEscaped) {
    contents("");
    ASSERT_EQ(set("K", " a b\tc "), 1);
    EXPECT_EQ(contents(), "K= a b\tc\\x20\n");
    ASSERT_EQ(set("K", "\x1f\x7f\t"), 1);
    EXPECT_EQ(contents(), "K=\\x1f\\x7f\\x09\n");
}

TEST_F(Resources, EscapesAreRead) {
    contents("A=a\\nb\\rc\\\\d\\x41\\q\\xZZ\\\n");
    EXPECT_EQ(get("A"), "a\nb\rc\\dA\\q\\xZZ\\");
}

TEST_F(Resources, BinaryFileBehaves) {
    std::string junk;
    for (int i = 0; i < 100000; i++)
        junk += static_cast<char>(i * 7919 >> 3);
    contents(junk + "\nA=1\n");
    EXPECT_EQ(get("A"), "1");
    EXPECT_EQ(set("A", "2"), 1);
    EXPECT_EQ(contents(), junk + "\nA=2\n");
}

TEST_F(Resources, HugeFileIsStreamed) {
    const std::string line(1000, 'z');
    {
        std::ofstream out(path_, std::ios::binary);
        for (int i = 0; i < 50000; i++)
            out << "KEY" << i << "=" << line << "\n";
    }
    const auto size = std::filesystem::file_size(path_);
    // A process of its own, whose greatest memory use is then known: a small part of the file's 50 MB.
    EXPECT_EQ(in_child([&] {
                  rusage before = {}, after = {};
                  ::getrusage(RUSAGE_SELF, &before);
                  const bool right =
                      get("KEY49999") == line && set("KEY49998", "short") && get("KEY49998") == "short";
                  ::getrusage(RUSAGE_SELF, &after);
                  return right && after.ru_maxrss - before.ru_maxrss < 16 * 1024 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(get("KEY49999"), line);
    EXPECT_EQ(std::filesystem::file_size(path_), size - 995);
}

TEST_F(Resources, SameValueWritesNothing) {
    contents("A=1\nB=2\n");
    const ino_t before = inode();
    EXPECT_EQ(set("A", "1"), 1);
    EXPECT_EQ(inode(), before);
    EXPECT_EQ(set("A", "2"), 1);
    EXPECT_NE(inode(), before);
}

TEST_F(Resources, SeveralChangesAreOneTransaction) {
    contents("A=1\nB=2\n");
    const RecordChange changes[] = {{"A", "x"}, {"C", "y"}, {"B", "2"}, {"A", "z"}};
    EXPECT_EQ(RecordWrite(path_.c_str(), changes, 4), 1);
    EXPECT_EQ(contents(), "A=z\nB=2\nC=y\n");
}

TEST_F(Resources, KeysThatNoLineCanHoldAreRefused) {
    contents("A=1\n");
    for (const char *const key : {"", "#A", "A=B", "A\nB"})
        EXPECT_EQ(set(key, "1"), 0);
    EXPECT_EQ(contents(), "A=1\n");
}

TEST_F(Resources, SymbolicLinkIsRewrittenWhereItPoints) {
    home_.file("work/real", "A=1\n");
    std::filesystem::create_symlink(home_.path("work/real"), path_);
    EXPECT_EQ(set("A", "2"), 1);
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_EQ(home_.read("work/real"), "A=2\n");
}

TEST_F(Resources, TwoNamesOfOneFileMeetTheSameLock) {
    const std::string real = home_.file("work/real", "A=1\n");
    std::filesystem::remove(path_);
    std::filesystem::create_symlink(real, path_);
    // Each of two writers reaches the file by its own name; no record of either is lost.
    constexpr int rounds = 200;
    const pid_t other = ::fork();
    if (other == 0) {
        for (int i = 1; i <= rounds; i++) {
            const std::string value = std::to_string(i);
            const RecordChange change = {"OTHER", value.c_str()};
            if (!RecordWrite(real.c_str(), &change, 1))
                ::_exit(1);
        }
        ::_exit(0);
    }
    for (int i = 1; i <= rounds; i++) {
        const std::string value = std::to_string(i);
        const RecordChange change = {"OWN", value.c_str()};
        ASSERT_EQ(RecordWrite(path_.c_str(), &change, 1), 1);
        ASSERT_EQ(get("OWN"), value);
    }
    int status = 0;
    ::waitpid(other, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(get("OWN"), "200");
    EXPECT_EQ(get("OTHER"), "200");
    EXPECT_FALSE(std::filesystem::exists(home_.path("config/.Quillon Preferences.lock")));
}

TEST_F(Resources, DanglingLinkAndFolderAndPipeAreNoFile) {
    std::filesystem::create_symlink(home_.path("work/none"), path_);
    EXPECT_EQ(set("A", "2"), 0);
    EXPECT_FALSE(std::filesystem::exists(home_.path("work/none")));
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_EQ(RecordFileOpens(path_.c_str()), 0);
    EXPECT_EQ(set("A", "2"), 0);
    std::filesystem::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(RecordFileOpens(path_.c_str()), 0);
    EXPECT_EQ(get("A"), "(null)");
    EXPECT_EQ(set("A", "2"), 0);
}

TEST_F(Resources, ModeAndOwnerAreKept) {
    contents("A=1\n");
    ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
    give_away(path_);
    struct stat before = {}, after = {};
    ::stat(path_.c_str(), &before);
    EXPECT_EQ(set("A", "2"), 1);
    ::stat(path_.c_str(), &after);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
}

TEST_F(Resources, ReadOnlyFolderFailsTheWrite) {
    contents("A=1\n");
    give_away(path_);
    give_away(home_.path("config"));
    ASSERT_EQ(::chmod(home_.path("config").c_str(), 0555), 0);
    EXPECT_EQ(
        as_ordinary_user([&] { return get("A") == "1" && set("A", "2") == 0 && set("A", "1") == 0 ? 0 : 1; }),
        0);
    ASSERT_EQ(::chmod(home_.path("config").c_str(), 0755), 0);
    EXPECT_EQ(contents(), "A=1\n");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(Resources, ReadOnlyFileIsNotReplaced) {
    contents("A=1\n");
    give_away(path_);
    give_away(home_.path("config"));
    ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
    EXPECT_EQ(as_ordinary_user([&] { return get("A") == "1" && set("A", "2") == 0 ? 0 : 1; }), 0);
    EXPECT_EQ(contents(), "A=1\n");
}

TEST_F(Resources, UnreadableFileReadsAsNotSet) {
    contents("A=1\n");
    give_away(path_);
    ASSERT_EQ(::chmod(path_.c_str(), 0), 0);
    EXPECT_EQ(as_ordinary_user([&] {
                  return RecordFileOpens(path_.c_str()) == 0 && get("A") == "(null)" && set("A", "2") == 0
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(Resources, LockOfAnotherProgramFailsTheWriteAfterTwoSeconds) {
    contents("A=1\n");
    const std::string lock = home_.path("config/.Quillon Preferences.lock");
    const int held = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(set("A", "2"), 0);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_GE(seconds, 1.9);
    EXPECT_LT(seconds, 4);
    EXPECT_EQ(get("A"), "1"); // reading waits for nobody
    ::close(held);
    EXPECT_EQ(set("A", "2"), 1);
}

TEST_F(Resources, WriteWaitsForALockThatIsGivenBack) {
    contents("A=1\n");
    const int held =
        ::open(home_.path("config/.Quillon Preferences.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    // Given back once the writer has the lock's file open too.
    std::thread other([&] {
        while (times_open(home_.path("config/.Quillon Preferences.lock")) < 2)
            std::this_thread::yield();
        ::close(held);
    });
    EXPECT_EQ(set("A", "2"), 1);
    other.join();
}

TEST_F(Resources, ChangeOfAnotherProgramIsSeenAtOnce) {
    contents("A=1\n");
    EXPECT_EQ(get("A"), "1");
    EXPECT_EQ(in_child([&] { return set("A", "2") ? 0 : 1; }), 0);
    EXPECT_EQ(get("A"), "2");
}

TEST_F(Resources, LeftOverNewFileIsReplaced) {
    contents("A=1\n");
    home_.file("config/.Quillon Preferences.new", "half of it");
    EXPECT_EQ(set("A", "2"), 1);
    EXPECT_EQ(contents(), "A=2\n");
    EXPECT_FALSE(std::filesystem::exists(home_.path("config/.Quillon Preferences.new")));
}

TEST_F(Resources, CarriageReturnAtTheVeryEndIsALineEnd) {
    contents("A=1\nB=2\r");
    EXPECT_EQ(get("B"), "2");
    EXPECT_EQ(set("C", "3"), 1);
    EXPECT_EQ(contents(), "A=1\nB=2\r\nC=3\n");
    EXPECT_EQ(get("B"), "2");
    contents("B=2\r");
    EXPECT_EQ(set("B", "4"), 1);
    EXPECT_EQ(contents(), "B=4\r");
}

// Two programs write one counter each; one of them is killed again and again. Every count that was reported
// as written must still be there, and the file must be whole.
TEST_F(Resources, KilledWritersNeitherTearNorLoseRecords) {
    contents("# head\nSTEADY=0\nKILLED=0\n");
    constexpr int writes = 1000;
    // On a machine with much else to do the lock may not be had in time; such a write is asked for again.
    const auto must_set = [this](const char *key, int value) {
        for (int tries = 0; tries < 30; tries++)
            if (set(key, std::to_string(value)))
                return;
        ::_exit(1);
    };
    const pid_t steady = ::fork();
    if (steady == 0) {
        for (int i = 1; i <= writes; i++) {
            must_set("STEADY", i);
            if (get("STEADY") != std::to_string(i))
                ::_exit(1);
        }
        ::_exit(0);
    }
    int written = 0, status = 0;
    bool steady_runs = true;
    for (int round = 0; steady_runs; round++) {
        int report[2];
        ASSERT_EQ(::pipe2(report, O_CLOEXEC), 0);
        const pid_t killed = ::fork();
        if (killed == 0) {
            for (int i = written + 1;; i++) {
                must_set("KILLED", i);
                if (::write(report[1], &i, sizeof i) != sizeof i)
                    ::_exit(1);
            }
        }
        ::close(report[1]);
        // Killed at a moment that differs from round to round, after at least one write.
        int last = 0;
        ASSERT_EQ(::read(report[0], &last, sizeof last), static_cast<ssize_t>(sizeof last));
        const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(round * 137 % 3000);
        while (std::chrono::steady_clock::now() < until)
            continue;
        ::kill(killed, SIGKILL);
        ::waitpid(killed, &status, 0);
        while (::read(report[0], &last, sizeof last) == static_cast<ssize_t>(sizeof last))
            continue;
        ::close(report[0]);
        const int found = std::atoi(get("KILLED").c_str());
        ASSERT_GE(found, last);
        ASSERT_LE(found, last + 1);
        written = found;
        steady_runs = ::waitpid(steady, &status, WNOHANG) == 0;
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(contents(), "# head\nSTEADY=1000\nKILLED=" + std::to_string(written) + "\n");
}
