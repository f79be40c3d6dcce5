// Formats without compression. A distribution keeps its formats compressed, and unpacking one is most of what
// a small run costs. A program in the background (background/) keeps unpacked copies in the user's cache
// folder, and writes down which file a search for a format finds and what that rests on. As long as all of it
// is as it was, an engine is offered the copy under the format's own name.
#ifndef QUILLON_TOOLHOST_FORMAT_COPIES_H
#define QUILLON_TOOLHOST_FORMAT_COPIES_H

#include <string>
#include <string_view>
#include <vector>

#include "toolhost/environment.h"

namespace toolhost {

// A search for a format, as an engine makes it.
struct FormatSearch {
    std::string program;  // the engine, an absolute POSIX path
    std::string progname; // the name that it searches under
    std::string name;     // the format, without ".fmt"
};

// Returns the searches that the engine PROGRAM (an absolute POSIX path) makes when it is called with WORDS:
// for the format of its name or of an option, and for the one that the first line of MAIN names. MAIN is the
// path of the document, empty for none. None of a format that is named by a path, and none where the engine
// is to show how it searches.
std::vector<FormatSearch> format_searches(const std::string &program, const std::vector<std::string> &words,
                                          const std::string &main);

enum class CopyState {
    unknown, // what the search finds is not known, or no longer
    none,    // there is no copy to use
    ready
};
struct FormatCopy {
    std::string original; // the path of the format that the search finds
    std::string folder;   // the folder of its copy
};
// Looks for the copy of what SEARCH finds in ENVIRONMENT, when the engine runs in FOLDER. Fills COPY when
// there is one, and notes that it is used.
CopyState find_copy(const FormatSearch &search, const Variables &environment, const std::string &folder,
                    FormatCopy *copy);

// Puts the folder of COPY in front of the search path for formats.
void offer_copy(const FormatCopy &copy, Variables &environment);
// Names the originals in place of COPIES in the list of files that the engine's recorder wrote to PATH.
void name_originals(const std::string &path, const std::vector<FormatCopy> &copies);

// Starts the program in the background that makes the copies for SEARCHES, all of one engine of the bundle at
// BUNDLE. Nothing waits for it. A shell with a bus of its own, which ends with its only request, starts none.
void ask_for_copies(const std::string &bundle, const std::vector<FormatSearch> &searches);

// What the host and the program in the background agree on.

// Returns the folder of the copies, in the user's cache folder.
std::string copies_folder();
// Returns the path of the file about SEARCH, of which the environment's search path is a part too.
std::string search_file(const FormatSearch &search, const Variables &environment);
// Returns what tells one state of the file or folder at PATH from another; "-" when nothing is there.
std::string stamp_of(const std::string &path);
// Returns the name of the folder of the copy of ORIGINAL in the state STAMP.
std::string copy_name(const std::string &original, const std::string &stamp);
// A search file (common/field_files.h) holds a head (search_head), then groups of three: "variable" NAME
// VALUE, an environment variable ("-" before the value of one that is set, else nothing); "place" PATH STAMP,
// a file or folder that the search rests on; "original" PATH STAMP; and "copy" NAME LENGTH, or "copy" and two
// empty fields when the original is to be used itself. It ends with "end".
std::vector<std::string> search_head(const FormatSearch &search);
// The value of NAME in ENVIRONMENT as a search file holds it.
std::string variable_field(const Variables &environment, const std::string &name);

} // namespace toolhost

#endif
