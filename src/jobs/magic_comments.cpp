#include "jobs/magic_comments.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <strings.h>

#include "console/output.h"
#include "files/paths.h"
#include "files/streams.h"
#include "state/job_state.h"

namespace quillon {

static constexpr std::size_t head_size = 1024; // bytes of a file that are read
static constexpr int most_roots = 8;

static std::string_view trimmed(std::string_view text) {
    static constexpr std::string_view blanks = " \t\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Takes WORD, whatever its case, from the head of TEXT, and the blanks around it. Returns 0 when another word
// stands there.
static int take_word(std::string_view &text, std::string_view word) {
    text = trimmed(text);
    if (text.size() < word.size() || strncasecmp(text.data(), word.data(), word.size()) != 0)
        return 0;
    text = trimmed(text.substr(word.size()));
    return 1;
}

static void parse_line(std::string_view line, MagicComments *comments) {
    line = trimmed(line);
    if (!line.starts_with('%'))
        return;
    while (line.starts_with('%'))
        line.remove_prefix(1);
    if (!take_word(line, "!TEX"))
        return;
    BoundedBuffer *value = nullptr;
    if (take_word(line, "root"))
        value = &comments->root;
    else if (take_word(line, "program") || take_word(line, "TS-program"))
        value = &comments->program;
    if (value && value->empty() && take_word(line, "="))
        value->copy(line);
}

void parse_magic_comments(const char *text, std::size_t size, int whole, MagicComments *comments) {
    std::string_view rest(text, size);
    while (!rest.empty()) {
        const std::size_t end = rest.find_first_of("\r\n");
        if (end == rest.npos && !whole)
            return;
        parse_line(rest.substr(0, end), comments);
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    }
}

static void read_magic_comments(const char *path, MagicComments *comments) {
    char head[head_size + 1];
    std::FILE *const file = myfopen(path, "r");
    if (!file)
        return;
    const std::size_t size = std::fread(head, 1, sizeof head, file);
    std::fclose(file);
    parse_magic_comments(head, size < head_size ? size : head_size, size <= head_size, comments);
}

// Puts the Unix path of ROOT, as a file in FOLDER names it, into PATH. Returns 0 when it does not fit.
static int path_of_root(const BoundedBuffer &folder, const BoundedBuffer &root, BoundedBuffer &path) {
    BoundedString<256> name, base;
    for (const char c : root.view()) {
        const char byte = c == ' ' ? static_cast<char>(space_char) : c;
        if (!name.append({&byte, 1}))
            return 0;
    }
    if (name.view().starts_with('/'))
        return path.copy(name.view());
    base.copy(folder.view());
    std::string_view rest = name.view();
    for (;;) {
        if (rest.starts_with("./")) {
            rest.remove_prefix(2);
        } else if (rest.starts_with("../")) {
            rest.remove_prefix(3);
            const std::size_t slash = base.view().rfind('/');
            base.cut(slash == std::string_view::npos ? 0 : slash);
        } else {
            break;
        }
    }
    return path.copy(base.view()) && path.append("/") && path.append(rest);
}

// Finds the file at PATH, or with ".tex" behind it. Returns 0 when neither is there.
static int find_root(BoundedBuffer &path) {
    if (access(path.c_str(), 4) == 0)
        return 1;
    return path.append(".tex") && access(path.c_str(), 4) == 0;
}

int follow_magic_comments(BoundedBuffer &folder, BoundedBuffer &leaf, BoundedBuffer &program) {
    static BoundedString<512> path, next;
    BoundedString<256> first;
    first.copy(leaf.view());
    program.clear();
    path.format("%s/%s", folder.c_str(), leaf.c_str());
    for (int roots = 0; roots < most_roots; roots++) {
        MagicComments comments;
        read_magic_comments(path.c_str(), &comments);
        if (!comments.program.empty())
            program.copy(comments.program.view());
        if (comments.root.empty())
            return 1;
        if (!path_of_root(folder, comments.root, next) || !find_root(next)) {
            ml_printf("The root \"%s\" that \"%s\" names is not there.\n", comments.root.c_str(),
                      leaf.c_str());
            return 0;
        }
        if (next == path.c_str())
            return 1;
        path.copy(next.view());
        if (!split_path(path.c_str(), folder, leaf)) {
            ml_printf("The path \"%s\" is too long for Quillon.\n", path.c_str());
            return 0;
        }
    }
    ml_printf("The roots that \"%s\" leads to go round in a circle.\n", first.c_str());
    return 0;
}

} // namespace quillon
