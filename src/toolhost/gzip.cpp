#include "toolhost/gzip.h"

#include <algorithm>
#include <dlfcn.h>
#include <zlib.h>

#include "common/host_files.h"

namespace toolhost {

namespace {

constexpr int gzip_format = 15 + 16; // the largest window, and the head and sum of a gzip file
constexpr int usual_memory = 8;
constexpr std::size_t piece = 1 << 18;

// The library, loaded when it is first needed: few runs need it, and each starts a host of its own.
struct Library {
    decltype(&deflateInit2_) begin_deflate = nullptr;
    decltype(&deflateBound) bound = nullptr;
    decltype(&deflate) next_deflate = nullptr;
    decltype(&deflateEnd) end_deflate = nullptr;
    decltype(&inflateInit2_) begin_inflate = nullptr;
    decltype(&inflate) next_inflate = nullptr;
    decltype(&inflateEnd) end_inflate = nullptr;
    bool whole = false;
};

template <typename Procedure> bool find(void *library, const char *name, Procedure *procedure) {
    *procedure = library ? reinterpret_cast<Procedure>(dlsym(library, name)) : nullptr;
    return *procedure != nullptr;
}

Library load() {
    Library found;
    void *const library = dlopen("libz.so.1", RTLD_NOW | RTLD_LOCAL);
    found.whole =
        find(library, "deflateInit2_", &found.begin_deflate) && find(library, "deflateBound", &found.bound) &&
        find(library, "deflate", &found.next_deflate) && find(library, "deflateEnd", &found.end_deflate) &&
        find(library, "inflateInit2_", &found.begin_inflate) &&
        find(library, "inflate", &found.next_inflate) && find(library, "inflateEnd", &found.end_inflate);
    return found;
}

const Library &library() {
    static const Library loaded = load();
    return loaded;
}

// The library's type for input takes away a const that it keeps.
Bytef *bytes_of(const std::string &text) {
    return reinterpret_cast<Bytef *>(const_cast<char *>(text.data()));
}

} // namespace

bool read_gzip(const std::string &path, std::size_t limit, std::string *text) {
    text->clear();
    const std::string packed = common::read_file(path, limit);
    z_stream stream = {};
    if (packed.empty() || packed.size() >= limit || !library().whole ||
        library().begin_inflate(&stream, gzip_format, ZLIB_VERSION, sizeof stream) != Z_OK)
        return false;
    stream.next_in = bytes_of(packed);
    stream.avail_in = static_cast<uInt>(packed.size());
    int result = Z_OK;
    while (result == Z_OK && text->size() <= limit) {
        const std::size_t length = text->size();
        text->resize(length + std::max(length, piece));
        stream.next_out = bytes_of(*text) + length;
        stream.avail_out = static_cast<uInt>(text->size() - length);
        result = library().next_inflate(&stream, Z_NO_FLUSH);
        text->resize(text->size() - stream.avail_out);
    }
    library().end_inflate(&stream);
    if (result == Z_STREAM_END && stream.avail_in == 0 && text->size() <= limit)
        return true;
    text->clear();
    return false;
}

std::string gzip_of(const std::string &text) {
    z_stream stream = {};
    if (!library().whole ||
        library().begin_deflate(&stream, Z_BEST_SPEED, Z_DEFLATED, gzip_format, usual_memory,
                                Z_DEFAULT_STRATEGY, ZLIB_VERSION, sizeof stream) != Z_OK)
        return {};
    std::string packed(library().bound(&stream, text.size()), '\0');
    stream.next_in = bytes_of(text);
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = bytes_of(packed);
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool whole = library().next_deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.resize(whole ? stream.total_out : 0);
    library().end_deflate(&stream);
    return packed;
}

} // namespace toolhost
