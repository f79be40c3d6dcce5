// The place in a source that was edited last, which a viewer can show in the output.
#ifndef QUILLON_HELPERS_SOURCE_PLACE_H
#define QUILLON_HELPERS_SOURCE_PLACE_H

#include <string>

namespace helpers {

struct SourcePlace {
    std::string file; // an absolute POSIX path
    long line = 0;    // from 1; 0 when there is no place
};

// True while runs write source links (the setting ADDSPECIALS).
bool source_links_are_on();
// Keeps FILE (an absolute POSIX path) and LINE as the place that was edited last, while source links are on.
void keep_edited_place(const std::string &file, long line);
// Returns the place that was edited last when source links are on and DOCUMENT (a PDF or DVI file, an
// absolute POSIX path) was made from that file; else one with the line 0.
SourcePlace place_to_show(const std::string &document);

// True when the source FILE is named in the SyncTeX file beside the PDF file DOCUMENT, compressed or not, or
// in the source specials of the DVI file DOCUMENT. Names in these are relative to the folder of DOCUMENT.
bool is_made_from(const std::string &document, const std::string &file);

} // namespace helpers

#endif
