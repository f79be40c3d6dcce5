// Run until stable: which program a run of an engine needs next. The engine runs again while a file that it
// wrote and reads at the next run has changed. Between its passes come the programs that make a bibliography
// or an index, whenever what they are made from has changed.
#ifndef QUILLON_TOOLHOST_PASSES_H
#define QUILLON_TOOLHOST_PASSES_H

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>

#include "common/document_record.h"
#include "toolhost/recorded_files.h"
#include "toolhost/results.h"

namespace toolhost {

// A program that is to run next.
struct NextProgram {
    std::string tool;    // the name of its bundle; empty for the engine
    std::string command; // its command line; for the engine the same as before
    std::string folder;  // where it runs
    std::string sources; // a folder beside that one in which it finds what it reads; empty for none
    std::string reason;  // what has changed, for the person
};

class Passes {
  public:
    // The most runs of the engine for one command.
    static constexpr int most = 5;

    // Begins a command for the engine run ENGINE of the document MAIN (an absolute POSIX path) and takes note
    // of what the files hold that the engine may read and write. HOME is the binaries folder. Without RERUN
    // the first pass is the only one.
    void begin(const EngineRun &engine, const std::string &main, const std::string &home, bool rerun);
    // Takes into account that the engine ended well and read and wrote FILES.
    void engine_ended(const RecordedFiles &files);
    // Takes into account that the last program of next(), one beside the engine, has ended. One that did not
    // end WELL runs again for the next command, which else would not report what is wrong.
    void program_ended(bool well);
    // Fills NEXT with what is to run now. False when the document is stable, or does not become so.
    bool next(NextProgram *next);
    // Fills NEXT with one more run of the engine, since the file at PATH is other than this pass took it to
    // be. False after the last pass.
    bool run_again(const std::string &path, NextProgram *next);
    // Keeps what is known of the document for its next run. OUTPUT is what the engine made, empty for
    // nothing. WHOLE: the last pass came to the end of the document.
    void keep_record(const RecordedFiles &files, const std::string &output, bool whole);

    // The number of the engine's pass, from 1.
    int pass() const { return pass_; }
    // The name of a file that still changes after the last pass; empty when none does.
    const std::string &unstable() const { return unstable_; }

  private:
    // What tells one content of a file from another. A file that has no effect on a run counts as one that is
    // not there.
    struct Content {
        std::uint64_t size = 0, hash = 0;
        bool operator==(const Content &) const = default;
    };
    // A file that a program beside the engine is to make, and the state that it is made from.
    struct Product {
        NextProgram program;
        std::string path, state;
    };

    static Content content_of(const std::string &path);
    void note_contents();
    void begin_pass(const std::string &reason, NextProgram *next);
    bool has_changed(const std::string &path) const;
    void plan_programs();
    void plan_bibliography(const std::string &aux);
    void plan_biber(const std::string &control);
    void plan_index(const std::string &index);
    void plan(const char *tool, const std::string &options, const std::string &stem, const char *extension,
              const char *reason, const std::string &state);
    std::string states_of_sources(const std::vector<std::string> &names, const char *extension);

    EngineRun engine_;
    std::string main_, home_, folder_; // folder_: where the engine writes
    std::string stem_;                 // the path that the engine's files have without their extensions
    common::DocumentRecord record_;
    RecordedFiles files_;                      // of the last pass
    std::map<std::string, Content> before_;    // what the last pass found
    std::set<std::string> sources_;            // what programs beside the engine read
    std::deque<Product> products_;             // still to be made before the engine runs again
    std::vector<std::string> made_;            // by programs since the last pass
    std::map<std::string, std::string> tried_; // what programs made for this command, and from which state
    std::string unstable_;
    int pass_ = 1;
    bool rerun_ = false;
};

} // namespace toolhost

#endif
