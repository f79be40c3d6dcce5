#include "client/live_output.h"

#include <algorithm>

namespace client {

std::string LiveOutput::tool_text(std::string_view bytes) {
    shown_ = true;
    std::size_t skipped = 0;
    while (skipped < bytes.size() && skipped < echo_.size() && bytes[skipped] == echo_[skipped])
        skipped++;
    const bool whole = skipped == bytes.size();
    echo_.erase(0, whole ? skipped : echo_.size());
    return std::string(bytes.substr(skipped));
}

std::string LiveOutput::console_text(std::string_view text) {
    if (in_transcript_ && shown_)
        return {};
    std::string lines(text);
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    return lines;
}

} // namespace client
