#include "jobs/tex_runs.h"

#include <cstring>

#include "console/output.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "jobs/after_run.h"
#include "jobs/magic_comments.h"
#include "jobs/typeset_on_save.h"
#include "menus/current_files.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/files.h"
#include "tools/processes.h"
#include "tools/tool_call.h"
#include "tools/tool_runs.h"

namespace quillon {

enum JobKind { tex_job, pdftex_job };

// What a run is for: the engine of the settings, or one that a document asks for.
struct Engine {
    const char *name; // null for that of the settings
    JobKind kind;
    const char *format;          // empty for the engine's own
    const BoundedBuffer *bundle; // null for the engines of the settings
};

static const Engine lualatex = {"lualatex", pdftex_job, "", &lualatexexe},
                    xelatex = {"xelatex", pdftex_job, "", &xelatexexe};
static const Engine asked_engines[] = {
    {"pdflatex", pdftex_job, "pdflatex", nullptr},
    {"pdftex", pdftex_job, "", nullptr},
    {"latex", tex_job, "latex", nullptr},
    lualatex,
    xelatex,
};

static Engine engine_of_settings(JobKind kind) {
    return {nullptr, kind, format_name.c_str(), nullptr};
}

static const char *tool_of(const Engine &engine) {
    if (engine.bundle)
        return engine.bundle->c_str();
    return useETeX == 1 ? pdfeexe.c_str() : pdfexe.c_str();
}

// Names a path that its buffer cannot hold.
static void say_too_long(const char *path) {
    ml_printf("The path \"%s\" is too long for Quillon.\n", path);
}

// Composes the command line of a job, with one blank after each word. With NAMED the file name is appended
// even when it is empty. Returns 0 when the line does not fit.
static int compose(const Engine &engine, int named, BoundedBuffer &command) {
    BoundedString<300> format;
    format.format("-fmt=%s", engine.format);
    const int dvi = engine.kind == tex_job, pdftex = !engine.bundle;
    const struct {
        int wanted;
        const char *word;
    } words[] = {
        {1, engine.bundle ? engine.name
            : useETeX     ? "pdfetex"
                          : "pdftex"},
        {dvi, "-output-format=dvi"},
        {addSpecials, dvi ? "-src-specials" : "-synctex=1"},
        {parseFirstLine && pdftex, "-parse-first-line"},
        {use8bit && pdftex, "-8bit"},
        {doRecord, "-recorder"},
        {*engine.format != 0, format.c_str()},
        {named || !fname.empty(), fname.c_str()},
    };
    command.clear();
    for (const auto &entry : words)
        if (entry.wanted && !command.append_format("%s ", entry.word))
            return 0;
    return 1;
}

static int keep_last(const char *command, const char *folder) {
    if (!lastcommand.copy(command) || !lastdir.copy(folder)) {
        say_too_long(command);
        return 0;
    }
    return 1;
}

static void empty_output_keys(JobKind kind) {
    set_str_resource("DVIFILE", "");
    if (kind == pdftex_job)
        set_str_resource("PDFFILE", "");
}

static int run(const Engine &engine, const char *command, const char *folder) {
    const char *const tool = tool_of(engine);
    const JobKind kind = engine.kind;
    KillApp(tool);
    if (!keep_last(command, folder))
        return 0;
    watch_run_begins();
    if (kind == tex_job)
        empty_output_keys(kind);
    NewSetTeXFile(command, folder);
    if (kind == pdftex_job)
        empty_output_keys(kind);
    ml_printf("\nProcessing -- %s\n", command);
    ml_printf("working directory --  %s\n", folder);
    const int result = CallTool(tool, command, folder);
    if (result) {
        // Kept on purpose: the flag that the reply set is cleared, so the output is viewed even after an
        // error when the engine wrote one.
        tex_error = 0;
    }
    KillApp(tool);
    watch_run_ended();
    return result;
}

int RunTeX(const char *command, const char *folder) {
    const JobScope scope;
    return run(engine_of_settings(tex_job), command, folder);
}

int RunPdfTeX(const char *command, const char *folder) {
    const JobScope scope;
    return run(engine_of_settings(pdftex_job), command, folder);
}

static void run_engine(const Engine &engine, const char *command, const char *folder) {
    {
        const JobScope scope;
        run(engine, command, folder);
    }
    if (engine.kind == tex_job)
        doAfterTeX();
    else
        doAfterPdfTeX();
}

// Asks the person for a TeX file and sets fname and curr_dir. Returns 0 when the person cancels.
static int ask_for_file() {
    BoundedString<256> leaf;
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    if (!get_file(leaf, &volume, &folder, ".tex", nullptr, 0, "Select a tex file")) {
        fname.clear();
        return 0;
    }
    fname.copy(leaf.view());
    if (!get_unixpath_by_dirid(volume, folder, curr_dir))
        curr_dir.copy(home ? home : "");
    return 1;
}

// Sets curr_dir and fname from a full path. Returns 0 when they do not fit.
static int take_path(const char *path) {
    if (split_path(path, curr_dir, fname)) {
        if (!std::strchr(path, '/'))
            curr_dir.copy(path); // Kept on purpose: a path without "/" is taken as both.
        return 1;
    }
    say_too_long(path);
    return 0;
}

// Says why the file fname of the folder curr_dir is not typeset. Double quotes group words on a command line,
// and no TeX engine opens a file that has one in its name. Returns 1 when nothing speaks against it, else 0.
static int can_be_named() {
    if (!std::strchr(fname.c_str(), '"'))
        return 1;
    ml_printf("No engine can open \"%s\": there is a double quote in its name.\n", fname.c_str());
    exit_status = 1;
    return 0;
}

// Follows the magic comments of the file fname in curr_dir to the file and the engine that they ask for.
// Returns 0 when nothing is typeset, which is said.
static int follow_comments(Engine *engine) {
    BoundedString<256> program;
    if (!magicComments)
        return 1;
    int found = follow_magic_comments(curr_dir, fname, program);
    if (found && !program.empty()) {
        found = 0;
        for (const Engine &asked : asked_engines)
            if (program == asked.name) {
                *engine = asked;
                found = 1;
            }
        if (!found)
            ml_printf("\"%s\" asks for the program \"%s\", which Quillon does not know.\n", fname.c_str(),
                      program.c_str());
    }
    if (!found)
        exit_status = 1;
    return found && can_be_named();
}

static OSType creator_of(const char *path) {
    FSSpec spec;
    FInfo info;
    return UnixToFSS(path, nullptr, &spec) && FSpGetFInfo(&spec, &info) == noErr ? info.fdCreator : 0;
}

static void typeset_chosen(JobKind kind, const char *path) {
    const JobScope scope;
    BoundedString<1024> whole;
    static BoundedString<1024> command;
    curr_dir.clear();
    fname.clear();
    if (path ? !take_path(path) : !ask_for_file())
        return;
    Engine engine = engine_of_settings(kind);
    if (!can_be_named() || !follow_comments(&engine))
        return;
    whole.format("%s/%s", curr_dir.c_str(), fname.c_str());
    if (kind == tex_job)
        access(whole.c_str(), 4); // prints diagnostic lines; the result is not used
    default_creator = creator_of(whole.c_str());
    if (!compose(engine, 0, command)) {
        say_too_long(whole.c_str());
        return;
    }
    run_engine(engine, command.c_str(), curr_dir.c_str());
}

static void typeset_known(JobKind kind, const char *path) {
    const JobScope scope;
    static BoundedString<1024> command;
    Engine engine = engine_of_settings(kind);
    if (!take_path(path) || !can_be_named() || !follow_comments(&engine))
        return;
    default_creator = creator_of(dotexfile.c_str());
    if (!compose(engine, 1, command)) {
        say_too_long(path);
        return;
    }
    run_engine(engine, command.c_str(), curr_dir.c_str());
}

static void repeat_last() {
    if (lastcommand.empty() || lastdir.empty())
        return;
    mycommand.copy(lastcommand.view());
    curr_dir.copy(lastdir.view());
    DoAppleScript();
}

void DoTeX(const char *path) {
    typeset_chosen(tex_job, path);
}

void DoPdfTeX(const char *path) {
    typeset_chosen(pdftex_job, path);
}

void DoMenuTeX(int repeat) {
    if (repeat)
        repeat_last();
    else
        typeset_known(tex_job, dotexfile.c_str());
}

void DoMenuPdfTeX(int repeat) {
    if (repeat)
        repeat_last();
    else
        typeset_known(pdftex_job, dotexfile.c_str());
}

void DoRecentTeX(const char *path) {
    typeset_known(tex_job, path);
}

void DoRecentPdfTeX(const char *path) {
    typeset_known(pdftex_job, path);
}

static void run_script(const Engine &engine) {
    const JobScope scope;
    exit_status = 0;
    run_engine(engine, mycommand.c_str(), curr_dir.c_str());
}

void DoTeXAppleScript() {
    run_script(engine_of_settings(tex_job));
}

void DoPdfTeXAppleScript() {
    run_script(engine_of_settings(pdftex_job));
}

static void run_lualatex_script() {
    run_script(lualatex);
}

static void run_xelatex_script() {
    run_script(xelatex);
}

// Copies the first word of TEXT into WORD, as many bytes as fit.
static void first_word(const char *text, BoundedBuffer &word) {
    static const char blanks[] = " \t\n\v\f\r";
    const char *const start = text + std::strspn(text, blanks);
    word.copy_cut({start, std::strcspn(start, blanks)});
}

CommandProcedure procedure_of_command(const char *command) {
    BoundedString<1024> word;
    static const struct {
        const char *word;
        CommandProcedure procedure;
        int ours = 0; // known only while magic comments are
    } scripts[] = {
        {"dvips", DoDvipsAppleScript},      {"bibtex", DoBibtexAppleScript},
        {"mpost", DoMpostAppleScript},      {"makeindex", DoMakeindexAppleScript},
        {"dvipdfm", DoDvipdfmAppleScript},  {"etex", DoTeXAppleScript},
        {"elatex", DoTeXAppleScript},       {"lualatex", run_lualatex_script, 1},
        {"xelatex", run_xelatex_script, 1}, {"biber", DoBiberAppleScript, 1},
    };
    first_word(command, word);
    if (word.view().substr(0, 3) == "pdf")
        return DoPdfTeXAppleScript;
    for (const auto &script : scripts)
        if (word == script.word && (!script.ours || magicComments))
            return script.procedure;
    return nullptr;
}

void DoAppleScript() {
    const JobScope scope;
    job_outcome = job_unknown;
    if (const CommandProcedure procedure = procedure_of_command(mycommand.c_str()))
        procedure();
}

} // namespace quillon
