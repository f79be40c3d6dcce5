#include "client/live_output.h"

#include <algorithm>

namespace client {

std::string LiveOutput::tool_text(std::string_view bytes) {
    for (const char c : bytes) {
        if (c != '\n' || !after_return_)
            shown_ += c == '\r' ? '\n' : c;
        after_return_ = c == '\r';
    }
    std::size_t skipped = 0;
    while (skipped < bytes.size() && skipped < echo_.size() && bytes[skipped] == echo_[skipped])
        skipped++;
    const bool whole = skipped == bytes.size();
    echo_.erase(0, whole ? skipped : echo_.size());
    return std::string(bytes.substr(skipped));
}

std::string LiveOutput::console_text(std::string_view text) {
    std::string lines(text);
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    if (shown_.empty())
        return lines;
    std::string kept;
    std::size_t start = 0;
    if (passed_ == 0) {
        // The transcript begins with the first line shown.
        const std::string head = shown_.substr(0, std::min(shown_.find('\n'), std::size_t{200}));
        const std::size_t found = head.empty() ? 0 : lines.find(head);
        if (found == std::string::npos)
            return lines;
        kept = lines.substr(0, found);
        start = found;
    }
    while (start < lines.size() && passed_ < shown_.size() && lines[start] == shown_[passed_]) {
        start++;
        passed_++;
    }
    if (start < lines.size() && passed_ > 0) {
        // The copy is over, or differs from here on.
        shown_.clear();
        passed_ = 0;
    }
    return kept + lines.substr(start);
}

} // namespace client
