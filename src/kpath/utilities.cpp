#include "kpath/utilities.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "core/startup.h"
#include "files/streams.h"

namespace quillon {

namespace {

constexpr std::size_t line_growth = 40;

// The blocks of myxmalloc that myfree has not freed yet.
struct MemoryBlock {
    void *address;
    MemoryBlock *next;
};
MemoryBlock *memory_blocks = nullptr;

// Tells whether the library may be asked for SIZE bytes; no object can be larger.
int can_be_had(std::size_t size) {
    return size <= static_cast<std::size_t>(PTRDIFF_MAX);
}

[[noreturn]] void report_and_jump(const char *path) {
    const int error = errno;
    ml_fprintf(stderr, "%s: %s\n", path, std::strerror(error));
    DoJump(error);
}

} // namespace

void *xmalloc(std::size_t size) {
    void *const block = can_be_had(size) ? std::malloc(size ? size : 1) : nullptr;
    if (!block) {
        ml_fprintf(stderr, "xmalloc: request for %zu bytes failed.\n", size);
        DoJump(1);
    }
    return block;
}

void *xcalloc(std::size_t count, std::size_t size) {
    std::size_t bytes;
    const int fits = !__builtin_mul_overflow(count, size, &bytes) && can_be_had(bytes);
    void *const block = fits ? (bytes ? std::calloc(count, size) : std::calloc(1, 1)) : nullptr;
    if (!block) {
        ml_fprintf(stderr, "xcalloc: request for %zu elements of size %zu failed.\n", count, size);
        DoJump(1);
    }
    return block;
}

void *xrealloc(void *pointer, std::size_t size) {
    if (!pointer)
        return xmalloc(size);
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    void *const block = can_be_had(size) ? std::realloc(pointer, size ? size : 1) : nullptr;
    if (!block) {
        ml_fprintf(stderr, "xrealloc: request for %zx to be %zu bytes failed.\n",
                   static_cast<std::size_t>(address), size);
        DoJump(1);
    }
    return block;
}

void *myxmalloc(std::size_t size) {
    auto *const kept = static_cast<MemoryBlock *>(xmalloc(sizeof(MemoryBlock)));
    kept->address = xmalloc(size);
    kept->next = memory_blocks;
    memory_blocks = kept;
    return kept->address;
}

void myfree(void *pointer) {
    if (!pointer)
        return;
    for (MemoryBlock **place = &memory_blocks; *place; place = &(*place)->next) {
        MemoryBlock *const block = *place;
        if (block->address != pointer)
            continue;
        *place = block->next;
        std::free(block->address);
        std::free(block);
        return;
    }
    DoJump(1);
}

char *xstrdup(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char *>(std::memcpy(xmalloc(size), text, size));
}

char *concat(const char *a, const char *b) {
    return concat3(a, b, "");
}

char *concat3(const char *a, const char *b, const char *c) {
    const std::size_t la = std::strlen(a), lb = std::strlen(b), lc = std::strlen(c);
    char *const joined = static_cast<char *>(xmalloc(la + lb + lc + 1));
    std::memcpy(joined, a, la);
    std::memcpy(joined + la, b, lb);
    std::memcpy(joined + la + lb, c, lc + 1);
    return joined;
}

const char *find_suffix(const char *name) {
    const char *const dot = std::strrchr(name, '.'), *const slash = std::strrchr(name, '/');
    return dot && (!slash || dot > slash) ? dot + 1 : nullptr;
}

char *remove_suffix(const char *name) {
    const char *const suffix = find_suffix(name);
    if (!suffix)
        return nullptr;
    char *const stem = xstrdup(name);
    stem[suffix - name - 1] = '\0';
    return stem;
}

char *extend_filename(const char *name, const char *suffix) {
    return find_suffix(name) || !suffix ? xstrdup(name) : always_extend_filename(name, suffix);
}

char *always_extend_filename(const char *name, const char *suffix) {
    return concat3(name, ".", suffix);
}

char *read_line(std::FILE *file) {
    std::size_t length = 0, room = line_growth;
    char *line = static_cast<char *>(xmalloc(room));
    int character;
    while ((character = ml_fgetc(file)) != EOF && character != '\n' && character != '\r') {
        line[length++] = static_cast<char>(character);
        if (length == room) {
            room += line_growth;
            line = static_cast<char *>(xrealloc(line, room));
        }
    }
    if (character == EOF) {
        // Kept on purpose: a last line without a line end is lost.
        std::free(line);
        return nullptr;
    }
    line[length] = '\0';
    return line;
}

std::FILE *xfopen(const char *path, const char *mode) {
    std::FILE *const file = myfopen(path, mode);
    if (!file)
        report_and_jump(path);
    return file;
}

void xfclose(std::FILE *file, const char *path) {
    if (std::fclose(file) == EOF)
        report_and_jump(path);
}

void uexit(int status) {
    DoJump(status);
}

} // namespace quillon
