#include "toolhost/transcript.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "common/places.h"

namespace toolhost {

namespace {

constexpr std::size_t block_size = 65536;

} // namespace

void LineEnds::convert(std::string_view bytes, std::string &out) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < bytes.size(); i++) {
        const char c = bytes[i];
        if (c == '\n') {
            out.append(bytes.substr(start, i - start));
            if (!after_return_)
                out += '\r';
            start = i + 1;
        }
        after_return_ = c == '\r';
    }
    out.append(bytes.substr(start));
}

int make_transcript_file(std::string_view mark, std::string *path) {
    const std::string folder = common::transcripts_folder();
    if (!common::make_private_folder(folder)) {
        errno = 0;
        return -1;
    }
    std::string name = folder + "/transcript-" + std::to_string(getpid()) + "-";
    name.append(mark).append("XXXXXX");
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file >= 0)
        *path = name;
    return file;
}

Transcript::~Transcript() {
    if (file_ >= 0)
        close(file_);
}

bool Transcript::open_file() {
    if (file_ >= 0)
        return true;
    if (failed_)
        return false;
    errno = 0;
    file_ = make_transcript_file("", &path_);
    if (file_ < 0) {
        failed_ = true;
        reason_ = errno == 0 ? "no transcripts folder" : std::strerror(errno);
    }
    return file_ >= 0;
}

void Transcript::write(std::string_view bytes) {
    ends_.convert(bytes, pending_);
    if (pending_.size() >= block_size)
        flush();
}

void Transcript::flush() {
    std::string_view rest = pending_;
    while (!rest.empty() && !failed_ && open_file()) {
        const ssize_t count = ::write(file_, rest.data(), rest.size());
        if (count > 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
            written_ += static_cast<std::uint64_t>(count);
        } else if (count == 0 || errno != EINTR) {
            failed_ = true;
            reason_ = std::strerror(errno);
        }
    }
    lost_ += rest.size();
    if (file_ < 0) {
        unkept_ += rest;
        if (unkept_.size() > unkept_limit)
            unkept_.erase(0, unkept_.size() - unkept_limit);
    }
    pending_.clear();
}

void Transcript::say_loss() {
    for (int attempt = 0; attempt < 2; attempt++) {
        const std::string message =
            "\rThe rest of the output was lost (" + std::to_string(lost_) + " bytes): " + reason_ + "\r";
        const std::uint64_t size = message.size();
        if (attempt == 0 &&
            pwrite(file_, message.data(), size, static_cast<off_t>(written_)) == static_cast<ssize_t>(size))
            return;
        if (attempt == 0) {
            // The message overwrites the end of what was written, which needs no new room on the disk.
            lost_ += std::min(written_, size + 8);
            continue;
        }
        const std::uint64_t at = written_ > size + 8 ? written_ - size - 8 : 0;
        const ssize_t count = pwrite(file_, message.data(), size, static_cast<off_t>(at));
        if (count > 0 && ftruncate(file_, static_cast<off_t>(at + static_cast<std::uint64_t>(count))) != 0)
            return;
    }
}

std::string Transcript::unkept() const {
    if (path_.empty() && failed_)
        return "The tool's transcript could not be kept: " + reason_ + "\r" + unkept_;
    return {};
}

std::string Transcript::finish(bool even_empty) {
    flush();
    if (even_empty)
        open_file();
    if (lost_ > 0 && file_ >= 0)
        say_loss();
    if (file_ >= 0)
        close(file_);
    file_ = -1;
    return path_;
}

} // namespace toolhost
