// Commands ask for files through these choosers, which check the chosen name and return Unix paths.
#ifndef QUILLON_FILES_CHOOSERS_H
#define QUILLON_FILES_CHOOSERS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

// Ask for a file to open (get_file) or to save (put_file). NAME comes in as a Unix path to start at, or
// empty, and goes out as the chosen file's own name with blanks substituted; VREF and DIR_ID receive its
// volume and folder. EXT1 and EXT2 (each may be null) are extensions to filter by, and TEXT_FLAG 1 offers a
// filter for text files. Return 1 when a file was chosen, else 0; get_file refuses a name of 30 bytes or more
// with a window.
int get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
             const char *ext2, int text_flag, const char *prompt);
int put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt);
// Asks for a folder. UNIX_PATH comes in as the Unix path of the folder to start at, or empty, and goes out as
// that of the chosen one. Returns 1 when a folder was chosen.
int get_working_folder(BoundedBuffer &unix_path, const char *prompt);
// Ask in the same way as get_file and put_file for a whole path. PATH comes in as the Unix path to start at,
// and goes out as that of the chosen file. It is empty when nothing was chosen (0) or when it does not fit,
// which the console says (0).
int get_input_file(BoundedBuffer &path, const char *ext1, const char *ext2, int text_flag,
                   const char *prompt);
int put_output_file(BoundedBuffer &path, const char *prompt);
// Asks for an application whose signature is SIG or SIG1 ('****' as SIG accepts any, 0 as SIG1 none). Returns
// its Unix path in a static buffer of 256 bytes, or null when nothing was chosen.
const char *GetAppByDialog(const char *prompt, OSType sig, OSType sig1);

} // namespace quillon

#endif
