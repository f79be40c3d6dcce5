// After an error the shell opens a file in the editor and then shows it at a line. So that this starts the
// editor once, the first command waits a moment for the second, which takes the file over.
#ifndef QUILLON_HELPERS_HAND_OVER_H
#define QUILLON_HELPERS_HAND_OVER_H

#include <string>

namespace helpers {

// A socket in the temporary folder. Who takes the document over says so on it.
struct WaitingPlace {
    int socket = -1;  // the caller closes it; -1 when there is none
    std::string path; // its absolute POSIX path
};

// Returns a place that waits for DOCUMENT (an absolute POSIX path). Its socket is -1 when none can be made.
WaitingPlace wait_for(const std::string &document);
// Waits at most PATIENCE milliseconds, and removes the place. True when its document was taken over in that
// time.
bool is_taken_over(const WaitingPlace &place, int patience);
// Tells all who wait for DOCUMENT (an absolute POSIX path) that the caller takes it over.
void take_over(const std::string &document);

} // namespace helpers

#endif
