#include "helpers/source_place.h"

#include <cstdlib>
#include <cstring>
#include <zlib.h>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"

namespace helpers {

namespace {

constexpr const char *file_key = "EDITEDFILE";
constexpr const char *line_key = "EDITEDLINE";
constexpr std::size_t largest_dvi = 256 * 1024 * 1024;
constexpr const char *wish_variable = "QUILLON_SHOW_PLACE";
constexpr unsigned char special_code = 239; // a special of at most 255 bytes; a byte with its length follows

bool is_that_file(const std::string &name, const std::string &document, const std::string &file) {
    return common::leaf_of(name) == common::leaf_of(file) &&
           common::canonical_path(common::absolute_path(common::folder_above(document), name)) ==
               common::canonical_path(file);
}

// Looks for FILE among the lines "Input:NUMBER:NAME". Lines of other kinds may be longer than the buffer.
bool is_in_synctex(const std::string &path, const std::string &document, const std::string &file) {
    const gzFile records = gzopen(path.c_str(), "rb");
    char line[4352]; // the longest path and what stands before it
    bool found = false, at_start = true;
    while (records && !found && gzgets(records, line, sizeof line)) {
        std::string text = line;
        const bool ended = text.ends_with('\n');
        if (ended)
            text.pop_back();
        const std::size_t colon = text.find(':', std::strlen("Input:"));
        found = at_start && text.starts_with("Input:") && colon != std::string::npos &&
                is_that_file(text.substr(colon + 1), document, file);
        at_start = ended;
    }
    if (records)
        gzclose(records);
    return found;
}

// Looks for FILE among the specials "src:LINE NAME" of a DVI file; a blank may stand between the two. An
// empty FILE is any.
bool is_in_dvi(const std::string &document, const std::string &file) {
    const std::string content = common::read_file(document, largest_dvi);
    constexpr std::string_view mark = "src:";
    for (std::size_t at = content.find(mark, 2); at != std::string::npos;
         at = content.find(mark, at + mark.size())) {
        if (static_cast<unsigned char>(content[at - 2]) != special_code)
            continue;
        const auto length = static_cast<unsigned char>(content[at - 1]);
        const std::string special = content.substr(at, length);
        const std::size_t name = special.find_first_not_of("0123456789 ", mark.size());
        if (name != std::string::npos && (file.empty() || is_that_file(special.substr(name), document, file)))
            return true;
    }
    return false;
}

std::string without_extension(const std::string &document) {
    return document.substr(0, document.rfind('.'));
}

bool has_links(const std::string &document) {
    if (document.ends_with(".dvi"))
        return is_in_dvi(document, "");
    const std::string base = without_extension(document);
    return common::is_regular_file(base + ".synctex.gz") || common::is_regular_file(base + ".synctex");
}

SourcePlace edited_place() {
    return {common::expand_setting_path(common::setting(file_key), "", common::space_byte()),
            std::atol(common::setting(line_key).c_str())};
}

} // namespace

bool is_made_from(const std::string &document, const std::string &file) {
    if (document.ends_with(".dvi"))
        return is_in_dvi(document, file);
    const std::string base = without_extension(document);
    return is_in_synctex(base + ".synctex.gz", document, file) ||
           is_in_synctex(base + ".synctex", document, file);
}

bool source_links_are_on() {
    return common::setting("ADDSPECIALS").starts_with('1');
}

void keep_edited_place(const std::string &file, long line) {
    if (line > 0 && source_links_are_on())
        common::write_preferences(
            {{file_key, common::to_unix_path(file, common::space_byte())}, {line_key, std::to_string(line)}});
}

PlaceWish place_wish() {
    PlaceWish wish;
    const char *const value = std::getenv(wish_variable);
    wish.wanted = value != nullptr;
    if (const char *const path = value ? std::strchr(value, ' ') : nullptr)
        wish.otherwise = {path + 1, std::atol(value)};
    return wish;
}

SourcePlace place_to_show(const std::string &document, const PlaceWish &wish) {
    if (!wish.wanted && !source_links_are_on())
        return {};
    for (SourcePlace place : {edited_place(), wish.otherwise})
        if (place.line > 0 && !place.file.empty() && is_made_from(document, place.file))
            return place;
    return {};
}

std::string why_no_place(const std::string &document) {
    const std::string name = common::leaf_of(document);
    if (has_links(document))
        return name +
               " is shown where it is: no line of its sources was opened in the editor, and the last run "
               "has no problem in one.";
    if (source_links_are_on())
        return name +
               " holds no links to its source, so no line can be shown in it. Typeset it again: Options > "
               "Add Source Links is on by now.";
    return name +
           " holds no links to its source, so no line can be shown in it. Turn on Options > Add Source "
           "Links and typeset it again.";
}

} // namespace helpers
