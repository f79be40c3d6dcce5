// What is known of a document from its last run: the files that the run read and wrote, and what the programs
// beside the engine made their files from.
#ifndef QUILLON_COMMON_DOCUMENT_RECORD_H
#define QUILLON_COMMON_DOCUMENT_RECORD_H

#include <map>
#include <string>
#include <vector>

namespace common {

// All names are absolute POSIX paths.
struct DocumentRecord {
    std::vector<std::string> read;    // by the engine and the programs beside it, without the distribution's
    std::vector<std::string> written; // by them
    std::vector<std::string> carried; // read and then written by the engine
    std::vector<std::string> outputs; // of those written: what a person wants, such as the PDF file
    std::map<std::string, std::string> made; // a made file, and what tells the state that it was made from
};

// Returns the record of the document whose main file is at the POSIX path MAIN, an empty one when there is
// none.
DocumentRecord read_document_record(const std::string &main);
// Keeps RECORD for the document at MAIN in the user's cache folder, where the records of a thousand documents
// are kept. A record that is the same already is not written. False when it cannot be kept.
bool keep_document_record(const std::string &main, const DocumentRecord &record);

} // namespace common

#endif
