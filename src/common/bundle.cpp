#include "common/bundle.h"

#include <algorithm>
#include <string_view>
#include <sys/auxv.h>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/text.h"

namespace common {

namespace {

constexpr std::string_view extension = ".app";
constexpr std::size_t largest_file = 65536;

// Returns the bundle of PROGRAM, a path <bundle>/Contents/Linux/<tool>; empty for any other path. Links in
// the folder are resolved, but not the program's own, since all tools are links to one program.
std::string bundle_of_program(const std::string &program) {
    if (program.find('/') == std::string::npos)
        return {};
    const std::string folder = canonical_path(program.substr(0, program.rfind('/') + 1));
    return folder.ends_with(".app/Contents/Linux") ? folder_above(folder, 2) : std::string();
}

void read_info(const std::string &text, std::map<std::string, std::string> &info) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view line = std::string_view(text).substr(start, end - start);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && !line.starts_with('#'))
            info[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
        start = end + 1;
    }
}

} // namespace

std::string Bundle::info_or(const std::string &key, const std::string &fallback) const {
    const auto found = info.find(key);
    return found == info.end() || found->second.empty() ? fallback : found->second;
}

bool find_bundle(const char *argv0, Bundle &bundle) {
    const auto started_as = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    for (const char *name : {started_as, argv0}) {
        const std::string path = name ? bundle_of_program(name) : std::string();
        if (!path.empty() && read_bundle(path, leaf_of(name), bundle))
            return true;
    }
    return false;
}

bool read_bundle(const std::string &path, const std::string &tool, Bundle &bundle) {
    bundle = {};
    bundle.path = path;
    bundle.signature = signature_of_bundle(path);
    if (bundle.signature.empty())
        return false;
    bundle.home = folder_above(path);
    bundle.tool = tool;
    read_info(read_file(path + "/Contents/Info", largest_file), bundle.info);
    return true;
}

bool is_bundle_path(const std::string &path) {
    return path.size() > extension.size() && path.ends_with(extension);
}

std::string program_of_bundle(const std::string &path) {
    const std::string leaf = leaf_of(path);
    return path + "/Contents/Linux/" + leaf.substr(0, leaf.size() - extension.size());
}

std::string signature_of_bundle(const std::string &path) {
    const std::string package = read_file(path + "/Contents/PkgInfo", largest_file);
    return package.size() >= 8 ? package.substr(4, 4) : std::string();
}

} // namespace common
