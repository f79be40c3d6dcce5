#include "toolhost/snapshot_use.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"

namespace toolhost {

namespace {

constexpr std::size_t largest_file = std::size_t{256} << 20, most_held = 16384;
constexpr const char *format_words = "(preloaded format=";

// Puts PIECE in the place of the lines of the start in TEXT. False when they are not there. JOINS tells that
// the line end before them goes too.
bool put_piece(std::string *text, const std::string &piece, bool joins) {
    std::size_t begins = text->find(snapshot_begins);
    const std::size_t last = begins == std::string::npos ? begins : text->find(snapshot_ends, begins);
    if (last == std::string::npos)
        return false;
    const std::size_t end = last + std::strlen(snapshot_ends);
    if (joins && begins > 0 && (*text)[begins - 1] == '\n')
        begins--;
    text->replace(begins, end - begins, piece);
    return true;
}

} // namespace

std::string SnapshotOutput::take(std::string_view bytes) {
    if (!texts_)
        return std::string(bytes);
    held_ += bytes;
    const bool found = put_piece(&held_, texts_->said, texts_->said_joins);
    return found || held_.size() > most_held ? finish() : "";
}

std::string SnapshotOutput::finish() {
    texts_ = nullptr;
    return std::exchange(held_, {});
}

bool complete_log(const std::string &path, const SnapshotTexts &texts) {
    std::string log = common::read_file(path, largest_file);
    if (!put_piece(&log, texts.logged, texts.logged_joins))
        return false;
    const std::size_t start = log.find(format_words), end = log.find(')', start);
    if (start < log.find('\n') && end != std::string::npos)
        log.replace(start, end + 1 - start, texts.banner);
    return common::replace_file(path, log);
}

bool complete_list(const std::string &path, const Snapshot &snapshot, const SnapshotTexts &texts) {
    std::string list = common::read_file(path, largest_file);
    const std::string format = "INPUT " + snapshot.folder + "/" + common::leaf_of(snapshot.original) + "\n";
    const std::size_t at = list.find(format);
    if (at == std::string::npos)
        return false;
    list.replace(at, format.size(), "INPUT " + snapshot.original + "\n");
    std::size_t place = 0;
    for (std::size_t i = 0; i < texts.list_at && place < list.size(); i++)
        place = std::min(list.find('\n', place), list.size() - 1) + 1;
    std::string start, piece;
    for (const std::string &line : texts.start)
        start += line + "\n";
    for (const std::string &line : texts.list)
        piece += line + "\n";
    // What the start has done again may stand elsewhere when the document has changed; then it stays.
    list.replace(place, list.compare(place, start.size(), start) == 0 ? start.size() : 0, piece);
    return common::replace_file(path, list);
}

} // namespace toolhost
