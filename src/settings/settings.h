// The settings store: every persistent setting is a string under a fixed key in the one preferences file.
#ifndef QUILLON_SETTINGS_SETTINGS_H
#define QUILLON_SETTINGS_SETTINGS_H

#include "toolbox/bounded.h"
#include "toolbox/files.h"
#include "toolbox/resources.h"

namespace quillon {

extern FSSpec config_spec;       // the preferences file, computed by check_config
extern unsigned char havePrefs;  // 1 when the file could be opened at start-up
extern BoundedString<1024> name; // its HFS path

// Locates the preferences file and sets havePrefs; returns its HFS path (in the global `name`).
const char *check_config();
// Fills prefsFolder and supportFolder; returns prefsFolder. Ends the program when there is no preferences
// file.
const char *NoPrefFile();
// The value in a static 512-byte buffer that the next call overwrites; null when not set, empty, or 256 bytes
// or more with its NUL.
const char *get_str_resource(const char *key);
// A copy of any length that the caller frees with free(); null when not set or empty.
char *myget_string(const char *key);
// 1 stored, 0 not.
int set_str_resource(const char *key, const char *value);
// Stores several values as one transaction: 1 all of them, 0 none.
int set_str_resources(const RecordChange *changes, int count);
// An application path: a 256-byte zero-filled block that the caller owns (free()), a leading "~" replaced by
// `home`; null when not set.
char *GetApp(const char *key);
// The HFS path of the error-line file; only ":tmpsrclinenumber" when there is no temporary folder.
void GetTmpSrcFile(BoundedBuffer &buffer);

} // namespace quillon

#endif
