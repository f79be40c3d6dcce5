#include "toolbox/pipes.h"

#include <dlfcn.h>

namespace quillon {

namespace {

void *library = nullptr;

} // namespace

int SystemFrameworkLoad() {
    if (!library)
        library = ::dlopen("libc.so.6", RTLD_LAZY);
    return library != nullptr;
}

void *SystemFunction(const char *name) {
    return SystemFrameworkLoad() ? ::dlsym(library, name) : nullptr;
}

} // namespace quillon
