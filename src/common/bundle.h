// Application bundles: <name>.app/Contents with PkgInfo, Info and the program Linux/<name>.
#ifndef QUILLON_COMMON_BUNDLE_H
#define QUILLON_COMMON_BUNDLE_H

#include <map>
#include <string>

namespace common {

// The bundle that a program was started from. Its paths are POSIX paths.
struct Bundle {
    std::string path;                        // <home>/<tool>.app
    std::string home;                        // the binaries folder
    std::string tool;                        // the name that the program was started under
    std::string signature;                   // four characters
    std::map<std::string, std::string> info; // the KEY=VALUE lines of its file Info

    // Returns the value of KEY in Info, or FALLBACK when it is absent or empty.
    std::string info_or(const std::string &key, const std::string &fallback) const;
};

// Fills BUNDLE with the bundle that this process was started from. The name that it was started under
// decides, not the file behind a link; ARGV0 is tried second. False when neither name lies in a bundle with a
// signature.
bool find_bundle(const char *argv0, Bundle &bundle);

// Fills BUNDLE with the bundle at the POSIX path PATH, as its program TOOL would find it. False when it has
// no signature.
bool read_bundle(const std::string &path, const std::string &tool, Bundle &bundle);

// True when PATH ends with ".app" and has more before it. The file system is not asked.
bool is_bundle_path(const std::string &path);
// Returns the path of the program in the bundle at PATH, which must have the form of a bundle's path. The
// program need not exist.
std::string program_of_bundle(const std::string &path);
// Returns the signature of the bundle at PATH: characters 5 to 8 of its PkgInfo. Empty when that file is
// missing or shorter.
std::string signature_of_bundle(const std::string &path);

} // namespace common

#endif
