#include "toolhost/problem_list.h"

#include <cerrno>
#include <unistd.h>

#include "toolhost/transcript.h"

namespace toolhost {

void ProblemList::add(ProblemKind kind, std::string_view file, long line, std::string_view text) {
    counts_[static_cast<int>(kind)]++;
    if (kept_ >= most_kept || records_.size() >= most_bytes)
        return;
    kept_++;
    file = file.substr(0, file.find('\0'));
    records_ += "ewrb"[static_cast<int>(kind)];
    records_ += std::to_string(line);
    records_ += '\0';
    if (file != last_file_) {
        records_ += file;
        last_file_ = file;
    }
    records_ += '\0';
    std::size_t end = text.size();
    if (end > longest_text)
        for (end = longest_text; end > longest_text - 4 && (text[end] & 0xC0) == 0x80;)
            end--;
    for (const char c : text.substr(0, end))
        records_ += static_cast<unsigned char>(c) < ' ' || c == 127 ? ' ' : c;
    records_ += '\0';
}

std::string ProblemList::write() const {
    std::string path;
    const int file = records_.empty() ? -1 : make_transcript_file("problems-", &path);
    if (file < 0)
        return {};
    std::string_view rest = records_;
    while (!rest.empty()) {
        const ssize_t count = ::write(file, rest.data(), rest.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    close(file);
    // A list of which a part is missing would name wrong files.
    if (rest.empty())
        return path;
    unlink(path.c_str());
    return {};
}

} // namespace toolhost
