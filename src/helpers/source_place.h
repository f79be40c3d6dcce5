// The place in a source that was edited last, which a viewer can show in the output.
#ifndef QUILLON_HELPERS_SOURCE_PLACE_H
#define QUILLON_HELPERS_SOURCE_PLACE_H

#include <string>

namespace helpers {

struct SourcePlace {
    std::string file; // an absolute POSIX path
    long line = 0;    // from 1; 0 when there is no place
};

// The person's wish to see a place of the source in the output, as the shell hands it on.
struct PlaceWish {
    bool wanted = false;   // false: the document is shown, and its place is welcome but not asked for
    SourcePlace otherwise; // the place to show where none was edited in a source of the document
};

// Returns the wish that the environment holds (QUILLON_SHOW_PLACE, "LINE PATH" or empty).
PlaceWish place_wish();
// True while runs write source links (the setting ADDSPECIALS).
bool source_links_are_on();
// Keeps FILE (an absolute POSIX path) and LINE as the place that was edited last, while source links are on.
void keep_edited_place(const std::string &file, long line);
// Returns the place that was edited last when DOCUMENT (a PDF or DVI file, an absolute POSIX path) was made
// from that file; else that of WISH under the same condition; else one with the line 0, as always when the
// place is not wanted and source links are off.
SourcePlace place_to_show(const std::string &document, const PlaceWish &wish);
// Returns a sentence on why there is no place to show in DOCUMENT: it has no source links, or nothing was
// edited in its sources.
std::string why_no_place(const std::string &document);

// True when the source FILE is named in the SyncTeX file beside the PDF file DOCUMENT, compressed or not, or
// in the source specials of the DVI file DOCUMENT. Names in these are relative to the folder of DOCUMENT.
bool is_made_from(const std::string &document, const std::string &file);

} // namespace helpers

#endif
