#include "toolbox/bounded.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <new>

namespace quillon {

std::size_t BoundedBuffer::length() const {
    return strnlen(data_, capacity_);
}

void BoundedBuffer::cut(std::size_t length) {
    if (length < capacity_)
        data_[length] = '\0';
}

int BoundedBuffer::copy(std::string_view text) {
    if (text.size() >= capacity_)
        return 0;
    if (!text.empty())
        std::memmove(data_, text.data(), text.size());
    data_[text.size()] = '\0';
    return 1;
}

int BoundedBuffer::append(std::string_view text) {
    const std::size_t used = length();
    if (text.size() >= capacity_ - used)
        return 0;
    if (!text.empty())
        std::memmove(data_ + used, text.data(), text.size());
    data_[used + text.size()] = '\0';
    return 1;
}

int BoundedBuffer::prepend(std::string_view text) {
    const std::size_t used = length();
    if (text.size() >= capacity_ - used)
        return 0;
    if (text.empty())
        return 1;
    const std::less<const char *> before;
    if (!before(text.data(), data_) && before(text.data(), data_ + capacity_)) {
        char *const copy = static_cast<char *>(::operator new(text.size()));
        std::memcpy(copy, text.data(), text.size());
        std::memmove(data_ + text.size(), data_, used + 1);
        std::memcpy(data_, copy, text.size());
        ::operator delete(copy);
        return 1;
    }
    std::memmove(data_ + text.size(), data_, used + 1);
    std::memcpy(data_, text.data(), text.size());
    return 1;
}

int BoundedBuffer::format_at(std::size_t offset, const char *format, std::va_list values) {
    // The text is measured first, so that one that does not fit leaves the buffer as it was.
    std::va_list measured;
    va_copy(measured, values);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0 || static_cast<std::size_t>(length) >= capacity_ - offset)
        return 0;
    std::vsnprintf(data_ + offset, capacity_ - offset, format, values);
    return 1;
}

int BoundedBuffer::format(const char *format, ...) {
    std::va_list values;
    va_start(values, format);
    const int fits = format_at(0, format, values);
    va_end(values);
    return fits;
}

int BoundedBuffer::append_format(const char *format, ...) {
    std::va_list values;
    va_start(values, format);
    const int fits = format_at(length(), format, values);
    va_end(values);
    return fits;
}

int BoundedBuffer::copy_cut(std::string_view text) {
    if (copy(text))
        return 1;
    copy(text.substr(0, capacity_ - 1));
    return 0;
}

} // namespace quillon
