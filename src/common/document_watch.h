// Watches the files that a document is made from: those that its last run read, less what runs write and what
// is the distribution's. Tells when one was saved, a burst of changes only once.
#ifndef QUILLON_COMMON_DOCUMENT_WATCH_H
#define QUILLON_COMMON_DOCUMENT_WATCH_H

#include <cstdint>
#include <ctime>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>

namespace common {

class DocumentWatch {
  public:
    DocumentWatch() = default;
    DocumentWatch(const DocumentWatch &) = delete;
    DocumentWatch &operator=(const DocumentWatch &) = delete;
    ~DocumentWatch() { end(); }

    // Watches the document whose main file is at MAIN, an absolute POSIX path, and no other any more. False,
    // with the reason in PROBLEM, when the host has no room for that; then nothing is watched.
    bool begin(const std::string &main, std::string *problem);
    void end();
    // The main file; empty while nothing is watched.
    const std::string &main() const { return main_; }
    // The number of files that are watched.
    std::size_t size() const { return files_.size(); }
    // Readable when take_changes has something to take; -1 while nothing is watched.
    int descriptor() const { return descriptor_; }

    // Takes note of what has happened to the files. Waits for nothing.
    void take_changes();
    // Returns the milliseconds until the changes are due for a run: 0 now, -1 when there are none, or while a
    // run goes on.
    int due_in() const;
    // Takes the changes that are due. False when no file was saved, so that no run is needed.
    bool take_due();
    // True while a run goes on and a file was saved since it began.
    bool changed_in_run() const { return runs_ && !touched_.empty(); }
    // Tells that a run of some document begins.
    void run_begins();
    // Tells that it has ended and that the document to watch from now on is MAIN. What was saved meanwhile is
    // due, unless the run wrote it itself. False, with the reason in PROBLEM, as begin.
    bool run_ended(const std::string &main, std::string *problem);
    // The name of a file that has changed during each of the last runs, so that it is followed by no other
    // run; empty when there is none.
    const std::string &endless() const { return endless_; }

  private:
    // What tells one state of a file from another.
    struct State {
        bool exists = false;
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        timespec time = {};
    };
    struct File {
        State state;
        std::uint64_t content = 0; // a hash; 0 while it is not known
    };
    // The names that are watched in one folder.
    struct Folder {
        int number = -1;                               // that the host gives it; -1 while it is not there
        std::multimap<std::string, std::string> names; // and the path of the file in files_
    };

    static State state_of(const std::string &path);
    void fill();
    void add_name(const std::string &path, const std::string &file);
    void watch_folder(const std::string &path, Folder &folder);
    void lose_folder(int number);
    void take_event(int number, std::uint32_t what, const char *name);
    void touch(const std::string &path);
    bool was_saved(const std::string &path, bool by_content);

    int descriptor_ = -1;
    int failure_ = 0; // of a folder that the host could not watch
    std::string main_;
    std::map<std::string, File> files_;
    std::map<std::string, Folder> folders_;
    std::set<std::string> touched_;
    std::uint64_t first_touch_ = 0, last_touch_ = 0; // microseconds
    bool runs_ = false;
    timespec run_began_ = {};
    int chain_ = 0; // runs in a row during which something was saved
    std::string endless_;
};

} // namespace common

#endif
