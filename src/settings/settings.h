// The settings store keeps each setting as a string under a fixed key of the preferences file.
#ifndef QUILLON_SETTINGS_SETTINGS_H
#define QUILLON_SETTINGS_SETTINGS_H

#include "toolbox/bounded.h"
#include "toolbox/files.h"
#include "toolbox/resources.h"

namespace quillon {

extern FSSpec config_spec;       // the location of the preferences file, which check_config finds
extern unsigned char havePrefs;  // 1 when the file could be opened at start-up
extern BoundedString<1024> name; // its HFS path

// Finds the preferences file and sets havePrefs, config_spec and `name`. Returns the file's HFS path, which
// is the text of `name`; it is empty when there is no preferences folder.
const char *check_config();
// Sets prefsFolder and supportFolder (Unix paths, empty when they do not fit) and returns the text of
// prefsFolder. When there is no preferences file, a window says so and the program ends.
const char *NoPrefFile();
// Returns the value of the setting KEY, in a static buffer that the next call overwrites; null when the
// setting is not stored, is empty, or takes 256 bytes or more with its NUL.
const char *get_str_resource(const char *key);
// 1 when KEY is stored at all, be it with an empty value, which the other procedures read as not set.
int setting_is_stored(const char *key);
// Returns a copy of the value of the setting KEY, of any length, which the caller frees with free(); null
// when the setting is not stored or is empty.
char *myget_string(const char *key);
// Stores VALUE, of any length, under KEY. Returns 1 when it was stored, 0 when there is no preferences file
// or writing failed.
int set_str_resource(const char *key, const char *value);
// Stores COUNT values as one transaction. Returns 1 when all were stored, 0 when none was.
int set_str_resources(const RecordChange *changes, int count);
// Returns the Unix path of the application that the setting KEY names, with `home` in place of a leading "~",
// in a block of 256 bytes that the caller frees with free(); null when it is not set or too long.
char *GetApp(const char *key);
// Writes into BUFFER the HFS path of the file that tells an editor the line of an error. Without a temporary
// folder the path is ":tmpsrclinenumber"; BUFFER is empty when the path does not fit.
void GetTmpSrcFile(BoundedBuffer &buffer);

} // namespace quillon

#endif
