// The SyncTeX file of a run with a snapshot, which names the files of the preamble otherwise than without it.
//
// The engine numbers the files that it opens. Boxes and glue remember the number and the line where they were
// made, and the SyncTeX file tells which number is which file:
//
//                          without a snapshot   in the dump of it    in the run with it
//     the document                 1             2 (the driver: 1)          1
//     the preamble's files     2 ... N+1           3 ... N+2               none
//     empty files                 none               none              2 ... M+1
//     the others               N+2 ...                                 M+2 ...
//
// What the dump has made keeps its numbers, so the run with the snapshot opens M empty files first: as many
// that each number has one meaning.
#ifndef QUILLON_TOOLHOST_SOURCE_LINKS_H
#define QUILLON_TOOLHOST_SOURCE_LINKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "toolhost/snapshots.h"

namespace toolhost {

// The most bytes of a SyncTeX file that is read, and of what it holds.
inline constexpr std::size_t largest_links = std::size_t{256} << 20;
// The file that takes a number and has nothing in it.
inline constexpr const char *empty_file = "/dev/null";

// True when a run with WORDS leaves a SyncTeX file.
bool writes_links(const std::vector<std::string> &words);
// Returns the path of the SyncTeX file beside the files STEM.pdf and STEM.log.
std::string links_file(const std::string &stem);

// Returns the names of the files in the SyncTeX text TEXT, that with the number 1 first. Empty when the text
// does not number them from 1 on.
std::vector<std::string> linked_files(const std::string &text);
// Puts into WHOLE what the SyncTeX text TEXT of a run with a snapshot would be without it, by TEXTS. False
// when it is none of such a run, not whole, or other than the engine writes it.
bool complete_link_text(const std::string &text, const SnapshotTexts &texts, std::string *whole);
// Completes the SyncTeX file at the POSIX path PATH so. False, with the file as it was, when it is none of a
// run with the snapshot of TEXTS, not whole, too long, or cannot be written.
bool complete_links(const std::string &path, const SnapshotTexts &texts);

} // namespace toolhost

#endif
