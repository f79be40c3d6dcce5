// The words of `quillon exec`: its options, and the command line that the shell gets.
#ifndef QUILLON_CLIENT_EXEC_WORDS_H
#define QUILLON_CLIENT_EXEC_WORDS_H

#include <string>
#include <vector>

namespace client {

struct ExecRequest {
    std::vector<std::string> words; // of the command
    std::string folder;             // where it runs, an absolute POSIX path
    bool follow = false;            // show the tool's output live and pass answers to it
    bool view = false;              // open the viewer after a clean run
    bool edit = false;              // open the editor on an error
};

// Reads WORDS, of which the first is the verb, into REQUEST: the options, which "--" ends, and the command.
// The folder becomes what -C says, which may be a relative path, else it stays. Returns what is wrong with
// them, empty for nothing.
std::string read_exec_words(const std::vector<std::string> &words, ExecRequest &request);

// Returns WORDS as one command line for the shell. A blank inside a word becomes the byte SPACE, an empty
// word two quotes; a word with a tab or a line end stands in quotes.
std::string command_line(const std::vector<std::string> &words, unsigned char space);

} // namespace client

#endif
