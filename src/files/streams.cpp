#include "files/streams.h"

#include <cerrno>
#include <cstring>

#include "console/output.h"
#include "files/paths.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/files.h"

namespace quillon {

namespace {

int is_line_end(int character) {
    return character == '\n' || character == '\r';
}

// Only standard input is read through the console; other streams are read directly, which is quicker.
int next_character(std::FILE *stream) {
    return stream == stdin ? ml_fgetc(stream) : getc_unlocked(stream);
}

} // namespace

std::FILE *open_mac_path(const char *mac_path, const char *mode) {
    BoundedString<1024> posix_path;
    errno = ENOENT;
    if (MacFileToPosixFile(mac_path, posix_path)[0] == '\0')
        return nullptr;
    return OpenPosixFile(posix_path.c_str(), mode);
}

std::FILE *myfopen(const char *path, const char *mode) {
    BoundedString<1024> absolute, mac_path;
    checkEvt();
    errno = ENAMETOOLONG;
    if (!convert_path(add_current_dir(absolute, path), mac_path))
        return nullptr;
    if (*mode != 'r') {
        std::FILE *const file = open_mac_path(mac_path.c_str(), mode);
        if (file && has_extension(mac_path.c_str(), ".dvi"))
            current_dvifile.copy(absolute.view());
        return file;
    }
    MyResolveAliasFile(mac_path);
    if (doAlias)
        MyResolve(mac_path);
    return open_mac_path(mac_path.c_str(), mode);
}

char *mfgets(char *buffer, int size, std::FILE *stream) {
    const int room = size - 2;
    int count = 0, character = next_character(stream);
    if (character == EOF || size < 1)
        return nullptr;
    for (;;) {
        if (count >= room) {
            if (character != EOF)
                std::ungetc(character, stream);
            break;
        }
        if (character == EOF)
            break;
        if (is_line_end(character)) {
            buffer[count++] = '\n';
            // Kept on purpose: a second line-end character is skipped only after a line feed, so the bytes 10
            // 13 end one line and 13 10 end two.
            if (character == '\n') {
                character = next_character(stream);
                if (character != '\r' && character != EOF)
                    std::ungetc(character, stream);
            }
            break;
        }
        buffer[count++] = static_cast<char>(character);
        if (count < room)
            character = next_character(stream);
        else
            break;
    }
    buffer[count] = '\0';
    return buffer;
}

OSErr MyResolveAliasFile(BoundedBuffer &mac_path) {
    FSSpec spec;
    int is_folder, was_aliased;
    OSErr error = FSMakeFSSpec(0, 0, mac_path.c_str(), &spec);
    if (error == noErr)
        error = ResolveAliasFile(&spec, 1, &is_folder, &was_aliased);
    if (error != noErr || !was_aliased)
        return error;
    BoundedString<1024> target;
    FSSpecToMacPath(&spec, target);
    if (target.empty() || target.length() >= mac_path.capacity())
        return bdNamErr;
    if (doDebug)
        ml_printf("<%s> -> <%s>\n", mac_path.c_str(), target.c_str());
    mac_path.copy(target.view());
    return noErr;
}

int MyResolve(BoundedBuffer &mac_path) {
    BoundedString<1024> resolved, prefix;
    std::string_view rest = mac_path.view();
    FSSpec spec;
    int is_folder, was_aliased;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        const int is_last = colon == std::string_view::npos;
        if (!prefix.copy(resolved.view()) ||
            !prefix.append(rest.substr(0, is_last ? rest.size() : colon + 1)))
            return 0;
        rest.remove_prefix(is_last ? rest.size() : colon + 1);
        if (FSMakeFSSpec(0, 0, prefix.c_str(), &spec) != noErr ||
            ResolveAliasFile(&spec, 1, &is_folder, &was_aliased) != noErr)
            return 0;
        FSSpecToMacPath(&spec, resolved);
        if (resolved.empty() || (!rest.empty() && !resolved.append(":")))
            return 0;
    }
    // The path of a volume ends with ":"; without one it would be the name of a file.
    if (resolved.view().find(':') == std::string_view::npos && !resolved.append(":"))
        return 0;
    return mac_path.copy(resolved.view());
}

} // namespace quillon
