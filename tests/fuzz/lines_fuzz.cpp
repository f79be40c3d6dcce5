// The two line readers: every byte of a stream comes once, in order, but for the line ends.
#include "files/streams.h"
#include "fuzz/fuzz.h"
#include "kpath/utilities.h"
#include "support/temporary_home.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\n",
                                             "\r",
                                             "\r\n",
                                             "\n\r",
                                             "a",
                                             "text",
                                             std::string(40, 'x'),
                                             std::string(1, '\0'),
                                             "\xff",
                                             std::string(39, 'y')};
const int fuzz_runs = 2000;

namespace {

using Lines = std::vector<std::string>;

bool is_end(char c) {
    return c == '\n' || c == '\r';
}

// Pieces of at most ROOM bytes; the carriage return behind a line feed is dropped.
Lines expected_pieces(const std::string &input, std::size_t room) {
    Lines pieces;
    for (std::size_t at = 0; at < input.size();) {
        std::string piece;
        while (at < input.size() && piece.size() < room && !is_end(input[at]))
            piece += input[at++];
        if (at < input.size() && piece.size() < room) {
            piece += '\n';
            at += input[at] == '\n' && at + 1 < input.size() && input[at + 1] == '\r' ? 2 : 1;
        }
        pieces.push_back(piece.substr(0, piece.find('\0')));
    }
    return pieces;
}

Lines expected_lines(const std::string &input) {
    Lines lines;
    for (std::size_t at = 0, end; (end = input.find_first_of("\n\r", at)) != std::string::npos;
         at = end + 1) {
        const std::string line = input.substr(at, end - at);
        lines.push_back(line.substr(0, line.find('\0')));
    }
    return lines;
}

} // namespace

void fuzz_one(const std::string &input) {
    if (input.empty())
        return;
    std::string bytes = input;
    static const int sizes[] = {3, 4, 17, 1024};
    {
        const int size = sizes[input.size() % 4];
        std::FILE *const stream = ::fmemopen(bytes.data(), bytes.size(), "r");
        Lines found;
        std::vector<char> buffer(static_cast<std::size_t>(size));
        while (mfgets(buffer.data(), size, stream))
            found.push_back(buffer.data());
        std::fclose(stream);
        require(found == expected_pieces(input, static_cast<std::size_t>(size) - 2),
                "mfgets gives other lines");
    }
    std::FILE *const stream = ::fmemopen(bytes.data(), bytes.size(), "r");
    Lines found;
    while (char *const line = read_line(stream))
        found.push_back(taken(line));
    std::fclose(stream);
    require(found == expected_lines(input), "read_line gives other lines");
}

} // namespace quillon::test
