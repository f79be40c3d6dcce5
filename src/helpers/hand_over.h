// A file that is opened and then shown at a line is opened once: the start of the first command waits a
// moment for the second, which takes the file over.
#ifndef QUILLON_HELPERS_HAND_OVER_H
#define QUILLON_HELPERS_HAND_OVER_H

#include <string>

namespace helpers {

// A socket in the temporary folder, on which whoever takes a document over says so.
struct WaitingPlace {
    int socket = -1; // the caller's to close; -1 when there is none
    std::string path;
};

// Makes a place that waits for DOCUMENT (an absolute POSIX path). Its socket is -1 when none can be made.
WaitingPlace wait_for(const std::string &document);
// Waits at most a second and gives the place up. True when DOCUMENT was taken over in that time.
bool is_taken_over(const WaitingPlace &place);
// Tells everybody who waits for DOCUMENT that the caller takes it over.
void take_over(const std::string &document);

} // namespace helpers

#endif
