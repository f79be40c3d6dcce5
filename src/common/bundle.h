// Application bundles: <name>.app/Contents with PkgInfo, Info and the program Linux/<name>.
#ifndef QUILLON_COMMON_BUNDLE_H
#define QUILLON_COMMON_BUNDLE_H

#include <map>
#include <string>

namespace common {

struct Bundle {
    std::string path;      // <home>/<tool>.app
    std::string home;      // the binaries folder
    std::string tool;      // the name that the program was started under
    std::string signature; // four characters
    std::map<std::string, std::string> info;

    // The value of KEY in Info; FALLBACK when it is absent or empty.
    std::string info_or(const std::string &key, const std::string &fallback) const;
};

// Finds the bundle that this process was started from, judged by the name it was started under and never by
// the file behind a link; ARGV0 is the second choice. False when that name lies in no bundle.
bool find_bundle(const char *argv0, Bundle &bundle);

// True when PATH has the form of a bundle's path; nothing is looked at.
bool is_bundle_path(const std::string &path);
// The program of the bundle at PATH.
std::string program_of_bundle(const std::string &path);
// The signature in the bundle's PkgInfo, four characters; empty when there is none.
std::string signature_of_bundle(const std::string &path);

} // namespace common

#endif
