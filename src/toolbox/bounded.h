// The bounded string: the one type that the shell writes text into.
//
// A buffer has a fixed size in bytes, the final NUL included. Every operation says whether the text fitted
// (1) or not (0); what does not fit leaves the buffer as it was, so nothing is ever cut short silently.
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

    const char *c_str() const { return data_; }
    char *data() { return data_; }
    // Size of the storage in bytes, the final NUL included.
    std::size_t capacity() const { return capacity_; }
    std::size_t length() const;
    std::string_view view() const { return {data_, length()}; }
    int empty() const { return data_[0] == '\0'; }
    void clear() { data_[0] = '\0'; }
    // Cuts the text to at most LENGTH bytes.
    void cut(std::size_t length);

    // The arguments of copy, append and prepend may lie in the buffer itself; those of format may not.
    int copy(std::string_view text);
    int append(std::string_view text);
    int prepend(std::string_view text);
    int format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    int append_format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    // Keeps as many bytes as fit; 1 when that was all of them.
    int copy_cut(std::string_view text);

    bool operator==(std::string_view other) const { return view() == other; }

  protected:
    constexpr BoundedBuffer(char *data, std::size_t capacity) : data_(data), capacity_(capacity) {}
    ~BoundedBuffer() = default;

  private:
    int format_at(std::size_t offset, const char *format, std::va_list values);

    char *data_;
    std::size_t capacity_;
};

template <std::size_t N> class BoundedString : public BoundedBuffer {
  public:
    constexpr BoundedString() : BoundedBuffer(storage_, N) {}

  private:
    char storage_[N] = {};
};

} // namespace quillon

#endif
