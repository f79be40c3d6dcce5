#include "toolhost/source_links.h"

#include <charconv>
#include <cstdint>
#include <string_view>

#include "common/field_files.h"
#include "toolhost/gzip.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::string_view input_head = "Input:", text_head = "SyncTeX Version:",
                           text_end = "Post scriptum:\n";
constexpr char count_mark = '!';                      // a line with the bytes since the last such line
constexpr std::string_view place_marks = "[(hvkgx$r"; // what the lines with a place begin with

// Takes the number at the head of REST away. False when there is none.
bool take_number(std::string_view *rest, std::uint64_t *number) {
    const auto [end, error] = std::from_chars(rest->data(), rest->data() + rest->size(), *number);
    if (error != std::errc())
        return false;
    rest->remove_prefix(static_cast<std::size_t>(end - rest->data()));
    return true;
}

// Takes the next line of TEXT away and returns it with its end, or what there is when it has none.
std::string_view take_line(std::string_view *text) {
    const std::size_t end = text->find('\n');
    const std::string_view line = text->substr(0, end == std::string_view::npos ? end : end + 1);
    text->remove_prefix(line.size());
    return line;
}

// Reads "Input:NUMBER:NAME". False for a line of that kind that is another.
bool read_input(std::string_view line, std::uint64_t *number, std::string_view *name) {
    line.remove_prefix(input_head.size());
    if (!take_number(&line, number) || !line.starts_with(':') || !line.ends_with('\n'))
        return false;
    *name = line.substr(1, line.size() - 2);
    return true;
}

// Makes the text anew, line by line.
class Completer {
  public:
    Completer(const SnapshotTexts &texts, std::string *whole) : texts_(texts), whole_(whole) {}

    bool complete(std::string_view text) {
        if (!text.starts_with(text_head) || !text.ends_with(text_end))
            return false;
        while (!text.empty()) {
            const std::string_view line = take_line(&text);
            const bool known = line.starts_with(input_head)                          ? take_input(line)
                               : line[0] == count_mark                               ? take_count(line)
                               : place_marks.find(line[0]) != std::string_view::npos ? take_place(line)
                                                                                     : put(line);
            if (!known)
                return false;
            old_bytes_ += line.size();
        }
        return files_ > texts_.passed_files;
    }

  private:
    bool put(std::string_view text) {
        *whole_ += text;
        return true;
    }
    void put_input(std::uint64_t number, std::string_view name) {
        put(input_head);
        put(std::to_string(number));
        put(":");
        put(name);
        put("\n");
    }
    // The empty files give way to those of the preamble.
    bool take_input(std::string_view line) {
        std::uint64_t number = 0;
        std::string_view name;
        if (!read_input(line, &number, &name) || number != ++files_)
            return false;
        if (number == 2)
            for (std::size_t i = 0; i < texts_.preamble_files.size(); i++)
                put_input(i + 2, texts_.preamble_files[i]);
        if (number > 1 && number <= texts_.passed_files + 1)
            return name == empty_file;
        put_input(number == 1 ? number : number - texts_.passed_files + texts_.preamble_files.size(), name);
        return true;
    }
    // The bytes count from behind the mark of the last such line, whose own length is counted.
    bool take_count(std::string_view line) {
        std::string_view rest = line.substr(1);
        std::uint64_t count = 0;
        if (!take_number(&rest, &count) || rest != "\n" || count != old_bytes_)
            return false;
        const std::size_t start = whole_->size();
        put("!" + std::to_string(start - counted_) + "\n");
        counted_ = start;
        old_bytes_ = 0;
        return true;
    }
    bool take_place(std::string_view line) {
        std::string_view rest = line.substr(1);
        std::uint64_t number = 0;
        if (!take_number(&rest, &number) || !rest.starts_with(',') || number > files_)
            return false;
        // No file that is empty has a place, and no file has the number 0.
        if (number > texts_.preamble_files.size() + 2 && number <= texts_.passed_files + 1)
            return false;
        if (number > texts_.passed_files + 1)
            number += texts_.preamble_files.size() - texts_.passed_files;
        else if (number > 1)
            number--;
        char digits[24];
        const char *const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        *whole_ += line[0];
        whole_->append(digits, static_cast<std::size_t>(end - digits));
        return put(rest);
    }

    const SnapshotTexts &texts_;
    std::string *whole_;
    std::uint64_t files_ = 0;     // how many files were named so far
    std::uint64_t old_bytes_ = 0; // of the text that is completed, since its last count
    std::size_t counted_ = 0;     // where the last count stands in the new one
};

} // namespace

bool writes_links(const std::vector<std::string> &words) {
    return option_value(words, "synctex") == "1";
}

std::string links_file(const std::string &stem) {
    return stem + ".synctex.gz";
}

std::vector<std::string> linked_files(const std::string &text) {
    std::vector<std::string> names;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = take_line(&rest);
        std::uint64_t number = 0;
        std::string_view name;
        if (!line.starts_with(input_head))
            continue;
        if (!read_input(line, &number, &name) || number != names.size() + 1)
            return {};
        names.emplace_back(name);
    }
    return names;
}

bool complete_link_text(const std::string &text, const SnapshotTexts &texts, std::string *whole) {
    whole->clear();
    whole->reserve(text.size() + (text.size() >> 3));
    return texts.preamble_files.size() < texts.passed_files && Completer(texts, whole).complete(text);
}

bool complete_links(const std::string &path, const SnapshotTexts &texts) {
    std::string text, whole;
    if (texts.passed_files == 0 || !read_gzip(path, largest_links, &text) ||
        !complete_link_text(text, texts, &whole))
        return false;
    const std::string packed = gzip_of(whole);
    return !packed.empty() && common::replace_file(path, packed);
}

} // namespace toolhost
