// Resource Manager, as far as the preferences file needs it: named string records in one file.
//
// The file is text, one record a line, KEY=value; in a value "\\", "\n", "\r" and "\xHH" stand for bytes that
// a line cannot hold. Blank lines, lines that begin with "#" and lines that are no record are kept.
#ifndef QUILLON_TOOLBOX_RESOURCES_H
#define QUILLON_TOOLBOX_RESOURCES_H

#include <cstddef>

namespace quillon {

struct RecordChange {
    const char *key;
    const char *value;
};

// All paths are POSIX paths. 1 when the file can be opened for reading.
int RecordFileOpens(const char *path);
// The value of KEY in newly allocated memory (malloc; the caller frees it), null when there is no such record
// or the file cannot be read. SIZE (may be null) is its length in bytes.
char *RecordRead(const char *path, const char *key, std::size_t *size);
// Writes all the changes as one transaction: 1, or 0 when nothing was changed (the lock was not had in two
// seconds, the file is missing or cannot be written). A value that is the same already writes nothing and
// is 1.
int RecordWrite(const char *path, const RecordChange *changes, int count);

} // namespace quillon

#endif
