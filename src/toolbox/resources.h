// Resource Manager, as far as the preferences file needs it: named string records in one file.
//
// The file is text, one record a line, KEY=value; in a value "\\", "\n", "\r" and "\xHH" stand for bytes that
// a line cannot hold. Writing keeps blank lines, lines that begin with "#" and lines that are no record.
#ifndef QUILLON_TOOLBOX_RESOURCES_H
#define QUILLON_TOOLBOX_RESOURCES_H

#include <cstddef>

namespace quillon {

struct RecordChange {
    const char *key;
    const char *value;
};

// 1 when the file at the POSIX path can be opened for reading, else 0.
int RecordFileOpens(const char *path);
// The value of KEY in the file at the POSIX path, with a final NUL, in memory that the caller frees (free).
// SIZE (may be null) is set to its length in bytes. Null when there is no such record or no readable file,
// with a SIZE of 0, or when there is no memory for the value, with a SIZE above 0.
char *RecordRead(const char *path, const char *key, std::size_t *size);
// Writes all COUNT changes, or none: 1, or 0 when nothing was changed because another program held the file's
// lock for two seconds or the file is missing or not writable. Values that are the same already count as
// written.
int RecordWrite(const char *path, const RecordChange *changes, int count);

} // namespace quillon

#endif
