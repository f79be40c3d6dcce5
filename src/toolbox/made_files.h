// Made files: what the runs of a document have written beside its output, as their tools have recorded it.
#ifndef QUILLON_TOOLBOX_MADE_FILES_H
#define QUILLON_TOOLBOX_MADE_FILES_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

// Finds the made files of the document at the POSIX path POSIX_PATH that are still there. Returns their
// number, -1 when no run of the document is on record. The numbers of the files, from 0, hold until the next
// call.
int FindMadeFiles(const char *posix_path);
// Gives the POSIX path of the file and its size in bytes (-1: not known). 0 when the path does not fit.
int GetMadeFile(int number, BoundedBuffer &posix_path, std::int64_t *size);
// 1 when RemoveMadeFile moves the file to the desktop's trash, 0 when it deletes the file.
int GoesToTrash(int number);
// Removes the file. permErr when that is not possible; it is then where it was.
OSErr RemoveMadeFile(int number);

} // namespace quillon

#endif
