// The form that the editors table and the viewers table share.
//
// A table is a text file with one row for each application. Fields are parted by "|", the words of a field by
// blanks; double quotes group, so that a word can hold blanks. The first two fields are the names of programs
// and of desktop entries. A blank line and one that begins with "#" are no rows. The shell and the helper
// commands share this code, so it uses nothing of the shell.
#ifndef QUILLON_COMMON_APPLICATION_TABLE_H
#define QUILLON_COMMON_APPLICATION_TABLE_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/path_forms.h"

namespace common {

using Words = std::vector<std::string>;

// The names by which a row is found, without a folder and without ".desktop".
struct ApplicationNames {
    Words programs, desktop_ids;
};

// Returns the rows of TEXT, each as its fields, each field as its words.
std::vector<std::vector<Words>> ParseTable(std::string_view text);
// Returns the text of the person's own table of that name (in the support folder), then of the one in the
// shell's bundle. What cannot be read is empty.
std::string TableText(const char *name);
// Returns the leaf of the POSIX path PATH of a program or desktop entry, an entry's without ".desktop"; the
// second value says whether it is an entry.
std::pair<std::string, bool> TableName(const std::string &path);
bool Contains(const Words &list, const std::string &word);

// Returns the first row of ROWS, whose type derives from ApplicationNames, for the program or desktop entry
// at the POSIX path PATH for which ALLOWED holds. Its own name is looked for first, then the name of the file
// that it links to. Null when no row has either.
template <typename Row, typename Allowed>
const Row *FindRow(const std::vector<Row> &rows, const std::string &path, Allowed allowed) {
    for (const std::string &place : {path, canonical_path(path)}) {
        const auto [name, is_entry] = TableName(place);
        for (const Row &row : rows)
            if (Contains(is_entry ? row.desktop_ids : row.programs, name) && allowed(row))
                return &row;
    }
    return nullptr;
}

// What stands in an argument for a letter behind "%".
using Codes = std::vector<std::pair<char, std::string>>;
// Returns ARGUMENTS with the codes filled in; "%%" becomes "%", and other codes stay as they are.
Words FilledArguments(const Words &arguments, const Codes &codes);
// True when one of ARGUMENTS holds the code "%" and LETTER.
bool HoldsCode(const Words &arguments, char letter);

} // namespace common

#endif
