// The choosers as the commands call them: names checked and turned into Unix paths.
#ifndef QUILLON_FILES_CHOOSERS_H
#define QUILLON_FILES_CHOOSERS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

// NAME in: a Unix path to start at, or empty; out: the chosen leaf, blanks substituted. EXT1, EXT2 may be
// null. 1 when a file was chosen; a name of 30 characters or more is refused with the long-name window (0).
int get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
             const char *ext2, int text_flag, const char *prompt);
int put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt);
int get_working_folder(BoundedBuffer &unix_path, const char *prompt);
// PATH in: where to start; out: the chosen file's Unix path, or empty.
int get_input_file(BoundedBuffer &path, const char *ext1, const char *ext2, int text_flag,
                   const char *prompt);
int put_output_file(BoundedBuffer &path, const char *prompt);
// The chosen application's Unix path in a static buffer, or null. '****' accepts any application.
const char *GetAppByDialog(const char *prompt, OSType sig, OSType sig1);

} // namespace quillon

#endif
