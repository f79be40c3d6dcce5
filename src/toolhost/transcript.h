// The transcript: a file with what the program printed, in which every line end is one carriage return.
#ifndef QUILLON_TOOLHOST_TRANSCRIPT_H
#define QUILLON_TOOLHOST_TRANSCRIPT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace toolhost {

// Turns line ends (CR LF, LF) into CR, also where a pair is split between two calls. Other bytes stay.
class LineEnds {
  public:
    // Appends the converted BYTES to OUT.
    void convert(std::string_view bytes, std::string &out);

  private:
    bool after_return_ = false;
};

// Makes a file of this process in the transcripts folder. MARK stands in its name. Returns the descriptor,
// and sets PATH to its absolute path; -1 with errno, which is 0 where there is no such folder. The next
// host's shell removes what a host that has gone left behind.
int make_transcript_file(std::string_view mark, std::string *path);

// The file of one run. It is made in the transcripts folder when there is something to write.
class Transcript {
  public:
    ~Transcript();
    Transcript() = default;
    Transcript(const Transcript &) = delete;
    Transcript &operator=(const Transcript &) = delete;

    // Adds BYTES. They are written in blocks of 64 KiB; what a full disk does not take is lost and counted.
    void write(std::string_view bytes);
    // Closes the file and returns its absolute path, empty when there is none; the file is then the caller's.
    // When bytes were lost, a last line says how many; on a full disk it takes the place of the last bytes.
    // EVEN_EMPTY makes a file even where nothing was written.
    std::string finish(bool even_empty = false);
    // Returns what could not be kept because no file could be made: its last part, with carriage returns, at
    // most unkept_limit bytes, below a line that says why. Empty when there is a file.
    std::string unkept() const;

    static constexpr std::size_t unkept_limit = 65536;

  private:
    bool open_file();
    void flush();
    void say_loss();

    LineEnds ends_;
    std::string pending_;
    std::string path_;
    std::string reason_; // why bytes were lost
    std::string unkept_;
    std::uint64_t written_ = 0;
    std::uint64_t lost_ = 0;
    int file_ = -1;
    bool failed_ = false;
};

} // namespace toolhost

#endif
