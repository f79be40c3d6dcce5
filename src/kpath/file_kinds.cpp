// The shell looks for a file by its kind, which gives the suffix, the list of folders and the database.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "core/startup.h"
#include "files/search.h"
#include "files/streams.h"
#include "kpath/search_paths.h"
#include "kpath/utilities.h"
#include "state/job_state.h"
#include "toolbox/bounded.h"

namespace quillon {

char *kpse_program_name = nullptr, *program_invocation_name_text = nullptr;

namespace {

constexpr int no_slot = -1, no_database = 0;
constexpr int kind_ofm = 3, kind_vf = 6, kind_tex = 9, kind_count = 28;

struct FileKind {
    const char *suffix; // a name without a suffix gets this one; null for none
    int slot;
    int database; // replaces the list while database searches are on
    int binary;   // 1 when the file is opened with the mode "rb"
};

// The rows stand in the order of the kind numbers, which begin at 1.
constexpr FileKind file_kinds[kind_count + 1] = {
    {nullptr, no_slot, no_database, 0},
    {nullptr, 2, no_database, 1},
    {"ocp", 17, no_database, 1},
    {"ofm", 16, no_database, 1},
    {"ovf", 19, no_database, 1},
    {"tfm", 10, 5, 1},
    {"vf", 11, 4, 1},
    {"bib", 0, no_database, 0},
    {"bst", 1, no_database, 0},
    {"tex", 8, 1, 0},
    {"fmt", 7, no_database, 0},
    {nullptr, 9, no_database, 0},
    {"mf", 4, no_database, 0},
    {nullptr, 5, no_database, 0},
    {"base", 3, no_database, 0},
    {"mp", 12, no_database, 0},
    {nullptr, 14, no_database, 0},
    {"mem", 13, no_database, 0},
    {"map", 15, no_database, 0},
    {nullptr, 6, no_database, 1},
    {nullptr, 18, no_database, 0},
    {nullptr, 25, no_database, 0},
    {nullptr, no_slot, no_database, 0},
    {nullptr, 20, 3, 1},
    {nullptr, 21, 2, 1},
    {nullptr, 20, no_database, 1},
    {nullptr, 23, no_database, 0},
    {nullptr, 24, no_database, 0},
    {nullptr, 26, no_database, 0},
};

char *find_one(const FileKind &kind, const char *name) {
    if (kind.database != no_database && dataBaseSearch)
        return searchDatabase(kind.database, name);
    return testreadaccess(name, kind.slot);
}

char *find_with_suffix(int slot, const char *name, const char *suffix) {
    char *const full = extend_filename(name, suffix);
    char *const found = testreadaccess(full, slot);
    std::free(full);
    return found;
}

// Tries the name with ".tex" when it has no suffix, then the name itself, then the name with ".tex" always.
char *find_tex_input(const FileKind &kind, const char *name) {
    char *const extended = extend_filename(name, kind.suffix);
    char *const always = always_extend_filename(name, kind.suffix);
    char *found = find_one(kind, extended);
    if (!found && std::strcmp(extended, name) != 0)
        found = find_one(kind, name);
    if (!found)
        found = find_one(kind, always);
    std::free(extended);
    std::free(always);
    return found;
}

} // namespace

char *kpse_find_file(const char *name, int kind, int) {
    if (kind < 1 || kind > kind_count || file_kinds[kind].slot == no_slot)
        return nullptr;
    const FileKind &row = file_kinds[kind];
    if (kind == kind_tex)
        return find_tex_input(row, name);
    if (kind == kind_ofm) {
        char *const found = find_with_suffix(row.slot, name, row.suffix);
        return found ? found : find_with_suffix(slot_texfonts, name, "tfm");
    }
    // Kept on purpose: a virtual font is looked up in its database under the bare name.
    if (!row.suffix || (kind == kind_vf && dataBaseSearch))
        return find_one(row, name);
    char *const full = extend_filename(name, row.suffix);
    char *const found = find_one(row, full);
    std::free(full);
    return found;
}

std::FILE *kpse_open_file(const char *name, int kind) {
    char *const path = kpse_find_file(name, kind, 1);
    if (!path) {
        ml_fprintf(stderr, "fatal: ");
        ml_fprintf(stderr, "File `%s' not found", name);
        ml_fprintf(stderr, ".\n");
        DoJump(1);
    }
    std::FILE *const file = myfopen(path, file_kinds[kind].binary ? "rb" : "r");
    if (!file) {
        ml_fprintf(stderr, "%s: %s\n", path, std::strerror(errno));
        uexit(1);
    }
    std::free(path);
    return file;
}

void kpse_set_program_name(const char *argv0, const char *progname) {
    std::free(program_invocation_name_text);
    program_invocation_name_text = xstrdup(argv0);
    kpse_reset_program_name(progname ? progname : argv0);
}

void kpse_reset_program_name(const char *progname) {
    char *const copy = xstrdup(progname);
    std::free(kpse_program_name);
    kpse_program_name = copy;
}

void kpse_init_prog() {}

void kpse_set_program_enabled() {}

void kpse_maketex_option() {}

char *basenamechangesuffix(const char *name, const char *old_suffix, const char *new_suffix) {
    const std::size_t length = std::strlen(name), cut = std::strlen(old_suffix);
    BoundedString<256> changed;
    // Kept on purpose: the cut does not look whether the name ends with the old suffix.
    if (!changed.copy({name, cut < length ? length - cut : 0}) || !changed.append(new_suffix))
        changed.clear();
    return static_cast<char *>(
        std::memcpy(xcalloc(1, changed.capacity()), changed.c_str(), changed.length() + 1));
}

void usage(const char *program) {
    ml_fprintf(stderr, "Try `%s --help' for more information.\n", program);
    uexit(1);
}

void usagehelp(const char *const *lines) {
    for (; *lines; lines++)
        ml_fprintf(stdout, "%s\n", *lines);
    ml_fprintf(stdout, "\n");
    uexit(0);
}

} // namespace quillon
