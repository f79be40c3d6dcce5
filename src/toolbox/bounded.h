// The bounded string: the one type that the shell writes text into.
//
// A buffer has a fixed size in bytes, the final NUL included. Every operation says whether the text fitted
// (1) or not (0). A text that does not fit leaves the buffer as it was, so no text is cut short unnoticed.
#ifndef QUILLON_TOOLBOX_BOUNDED_H
#define QUILLON_TOOLBOX_BOUNDED_H

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace quillon {

// A buffer of any size, as procedures take it. The storage belongs to a BoundedString.
class BoundedBuffer {
  public:
    BoundedBuffer(const BoundedBuffer &) = delete;
    BoundedBuffer &operator=(const BoundedBuffer &) = delete;

    // The text with its final NUL, in the buffer's own storage. Who writes through data() keeps to the
    // capacity and sets the NUL.
    const char *c_str() const { return data_; }
    char *data() { return data_; }
    // The size of the storage in bytes, the final NUL included.
    std::size_t capacity() const { return capacity_; }
    // The length of the text in bytes, without the NUL; it is counted at each call.
    std::size_t length() const;
    // The text as a view into the storage; it holds until the next change.
    std::string_view view() const { return {data_, length()}; }
    // 1 when there is no text.
    int empty() const { return data_[0] == '\0'; }
    // Takes the whole text away.
    void clear() { data_[0] = '\0'; }
    // Cuts the text to at most LENGTH bytes; a shorter text stays as it is.
    void cut(std::size_t length);

    // Put TEXT, or the text that FORMAT (as for printf) makes, in place of the text, after it or before it:
    // 1, or 0 when the whole does not fit, which changes nothing. TEXT may lie in the buffer itself; the
    // values for a format may not.
    int copy(std::string_view text);
    int append(std::string_view text);
    int prepend(std::string_view text);
    int format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    int append_format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    // Copies as many bytes of TEXT as fit: 1 when all did, else 0. It may cut inside a UTF-8 character.
    int copy_cut(std::string_view text);

    // True when the text is OTHER, byte for byte.
    bool operator==(std::string_view other) const { return view() == other; }

  protected:
    constexpr BoundedBuffer(char *data, std::size_t capacity) : data_(data), capacity_(capacity) {}
    ~BoundedBuffer() = default;

  private:
    int format_at(std::size_t offset, const char *format, std::va_list values);

    char *data_;
    std::size_t capacity_;
};

// A buffer of N bytes with its storage, empty at first.
template <std::size_t N> class BoundedString : public BoundedBuffer {
  public:
    constexpr BoundedString() : BoundedBuffer(storage_, N) {}

  private:
    char storage_[N] = {};
};

} // namespace quillon

#endif
