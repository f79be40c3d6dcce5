// Where things lie: the host's own bundle, the preferences, the transcripts; and the forms of path.
#ifndef QUILLON_TOOLHOST_PLACES_H
#define QUILLON_TOOLHOST_PLACES_H

#include <map>
#include <string>
#include <string_view>

namespace toolhost {

struct Bundle {
    std::string path;      // <home>/<tool>.app
    std::string home;      // the binaries folder
    std::string tool;      // the leaf of the executable
    std::string signature; // four characters
    std::map<std::string, std::string> info;

    std::string info_or(const std::string &key, const std::string &fallback) const;
};

// The bundle that this process was started from, judged by the name it was started under and never by the
// file behind a link. ARGV0 is the second choice. False when that name lies in no bundle.
bool find_bundle(const char *argv0, Bundle &bundle);
// Reads PkgInfo and Info of the bundle at PATH.
bool read_bundle(const std::string &path, Bundle &bundle);

std::string preferences_path();
std::string support_folder(); // the user's own: <Application Support>/Quillon
std::string formats_folder(); // support_folder()/formats
// The folder of the tools' transcripts, made with mode 0700 when missing; empty when it cannot be had.
std::string transcripts_folder();

// The value of KEY in the preferences; empty when not set.
std::string setting(const char *key);
// The byte that stands for a blank: SPACECHAR, 202 when absent, no number or out of 1..255.
unsigned char space_byte();

// Blanks as SPACE and colons as byte 30; and back.
std::string to_unix_path(std::string_view posix, unsigned char space);
std::string to_posix_path(std::string_view unix_path, unsigned char space);
// A setting's path: a leading "~" is HOME, "~/.." its parent; then as to_posix_path.
std::string expand_setting_path(std::string_view value, const std::string &home, unsigned char space);

// PATH itself when absolute, else in FOLDER; "." components at its head vanish.
std::string absolute_path(const std::string &folder, std::string path);
bool is_regular_file(const std::string &path);
// The absolute path of PROGRAM along SEARCH (a PATH list); empty when there is none. A name with "/" is taken
// in FOLDER.
std::string find_program(const std::string &program, const std::string &search, const std::string &folder);

} // namespace toolhost

#endif
