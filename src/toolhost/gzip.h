// Files that are compressed with gzip, as a whole.
#ifndef QUILLON_TOOLHOST_GZIP_H
#define QUILLON_TOOLHOST_GZIP_H

#include <cstddef>
#include <string>

namespace toolhost {

// Reads what the gzip file at the POSIX path PATH holds into TEXT. False, with TEXT empty, when there is no
// whole gzip file, or when it or what it holds is longer than LIMIT bytes.
bool read_gzip(const std::string &path, std::size_t limit, std::string *text);
// Returns a gzip file that holds TEXT, at most 4 GB, made as fast as can be rather than as small. Empty when
// it cannot be made.
std::string gzip_of(const std::string &text);

} // namespace toolhost

#endif
