// The transcript: what the program printed, every line end one carriage return, in a file of its own.
#ifndef QUILLON_TOOLHOST_TRANSCRIPT_H
#define QUILLON_TOOLHOST_TRANSCRIPT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace toolhost {

// CR LF and LF become CR, also where a pair is split over two blocks. Other bytes stay.
class LineEnds {
  public:
    // Appends the converted BYTES to OUT.
    void convert(std::string_view bytes, std::string &out);

  private:
    bool after_return_ = false;
};

class Transcript {
  public:
    ~Transcript();
    Transcript() = default;
    Transcript(const Transcript &) = delete;
    Transcript &operator=(const Transcript &) = delete;

    // Nothing is made on disk before the first byte. A disk that is full loses what does not fit; finish()
    // says how much.
    void write(std::string_view bytes);
    // Closes the file and hands its path over; empty when there is none. Writes into the file's end, over the
    // last bytes where nothing more fits, how many bytes were lost. EVEN_EMPTY makes a file where nothing was
    // written.
    std::string finish(bool even_empty = false);
    std::uint64_t lost() const { return lost_; }
    // What could not be kept because no file could be made: its last part, with carriage returns, at most
    // unkept_limit bytes, below a line that says why. Empty when there is a file.
    std::string unkept() const;

    static constexpr std::size_t unkept_limit = 65536;

  private:
    bool open_file();
    void flush();
    void say_loss();

    LineEnds ends_;
    std::string pending_;
    std::string path_;
    std::string reason_;
    std::string unkept_;
    std::uint64_t written_ = 0;
    std::uint64_t lost_ = 0;
    int file_ = -1;
    bool failed_ = false;
};

} // namespace toolhost

#endif
