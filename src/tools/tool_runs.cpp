#include "tools/tool_runs.h"

#include <cstdlib>

#include "console/output.h"
#include "core/event_loop.h"
#include "dialogs/command_line.h"
#include "dialogs/dvips.h"
#include "dialogs/options.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "settings/settings.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "tools/processes.h"
#include "tools/tool_call.h"
#include "viewers/viewers.h"

namespace quillon {

namespace {

using Command = BoundedString<2048>;

// A companion program: the path of its bundle, and the name that messages call it.
struct Tool {
    const BoundedBuffer &path;
    const char *name;
};
const Tool dvips = {dvipsexe, "dvips"}, bibtex = {bibexe, "bibtex"}, makeindex = {mkexe, "makeindex"},
           mpost = {mpostexe, "mpost"}, dvipdfm = {dvipdfmexe, "dvipdfm"}, biber = {biberexe, "biber"};

int is_there(const Tool &tool) {
    if (IsApp(tool.path.c_str()))
        return 1;
    job_outcome = job_not_run;
    ml_printf("I can't find %s. It should be in the binaries folder.\n", tool.name);
    return 0;
}

void run_tool(const Tool &tool, const char *command, const char *folder) {
    const JobScope scope;
    if (!is_there(tool))
        return;
    KillApp(tool.path.c_str());
    CallTool(tool.path.c_str(), command, folder);
    // Kept on purpose: the cursor comes back before the tool is gone, but after BibTeX has gone.
    if (&tool == &bibtex)
        KillApp(tool.path.c_str());
    restore();
    if (&tool != &bibtex)
        KillApp(tool.path.c_str());
}

// The file of a run: its folder, which is empty for a path without a "/", and its name.
struct File {
    BoundedString<256> folder, name;
};

// Splits PATH. Returns 0 for an empty path, and for one that does not fit, which is said.
int take_file(const char *path, File &file) {
    if (!*path || split_path(path, file.folder, file.name))
        return *path != '\0';
    ml_printf("The path \"%s\" is too long for Quillon.\n", path);
    return 0;
}

void cut_extension(BoundedBuffer &name) {
    const std::size_t dot = name.view().find_last_of('.');
    if (dot != std::string_view::npos)
        name.cut(dot);
}

// Runs the tool when its command line fits, else says so.
void run_if_fits(const Tool &tool, int fits, const Command &command, const char *folder) {
    if (fits)
        run_tool(tool, command.c_str(), folder);
    else
        ml_printf("The command line of %s is too long.\n", tool.name);
}

// Waits until the shell is in front, and asks for the converter when there is none. Returns 0 when there
// still is none.
int find_converter() {
    return find_application(&ps2pdfexe, "PS2PDFEXE", "Find a ps to pdf converter");
}

// Lets the person choose a file with the extension EXTENSION, beginning at the one that the setting KEY
// holds.
int choose_input(const char *key, const char *extension, const char *prompt, BoundedBuffer &path) {
    const char *const last = get_str_resource(key);
    path.clear();
    if (last && path.copy(last) && access(path.c_str(), 4) != 0)
        path.clear();
    return get_input_file(path, extension, nullptr, 0, prompt);
}

// Composes the command of mode 1: MetaPost on a file that the person chooses.
int choose_metapost_file(Command &command, BoundedBuffer &folder) {
    BoundedString<256> path;
    File file;
    if (!choose_input("MPOSTFILE", ".mp", "Select a mp file", path))
        return 0;
    set_str_resource("MPOSTFILE", path.c_str());
    if (!take_file(path.c_str(), file))
        return 0;
    folder.copy(file.folder.view());
    cut_extension(file.name);
    return command.format(use8bit ? "mpost -8bit %s" : "mpost %s", file.name.c_str());
}

} // namespace

void RunDvips(const char *dvi) {
    File file;
    BoundedString<512> options;
    Command command;
    if (!take_file(dvi, file))
        return;
    stored_dvips_options(options);
    const int fits = options.empty() ? command.format("dvips %s", file.name.c_str())
                                     : command.format("dvips %s %s", options.c_str(), file.name.c_str());
    run_if_fits(dvips, fits, command, file.folder.c_str());
}

void RunFullDvips(const char *dvi, const char *out, const char *options) {
    File file;
    Command command;
    if (!take_file(dvi, file))
        return;
    const char *const name = file.name.c_str();
    int fits;
    if (*options && *out)
        fits = command.format("dvips %s -o \"%s\" \"%s\"", options, out, name);
    else if (*options)
        fits = command.format("dvips %s \"%s\"", options, name);
    else if (*out)
        fits = command.format("dvips -o \"%s\" \"%s\"", out, name);
    else
        fits = command.format("dvips \"%s\"", name);
    run_if_fits(dvips, fits, command, file.folder.c_str());
}

void RunBibTeX(const char *aux) {
    File file;
    Command command;
    if (!take_file(aux, file))
        return;
    cut_extension(file.name);
    char *const options = myget_string("BIBTEXOPTIONS");
    const int fits = options ? command.format("bibtex %s %s", options, file.name.c_str())
                             : command.format("bibtex %s", file.name.c_str());
    std::free(options);
    run_if_fits(bibtex, fits, command, file.folder.c_str());
}

int RunMakeIndex() {
    BoundedString<256> folder;
    BoundedString<1024> files, options;
    BoundedString<257> output, style, transcript;
    Command command;
    if (!GetMakeIndexOptions(folder, files, output, style, transcript, options))
        return 0;
    int fits = command.copy("makeindex ") && command.append(options.view());
    const struct {
        const char *option;
        const BoundedBuffer &value;
    } named[] = {{" -s ", style}, {" -t ", transcript}, {" -o ", output}};
    for (const auto &[option, value] : named)
        if (!value.empty())
            fits = fits && command.append(option) && command.append(value.view());
    fits = fits && command.append(" ") && command.append(files.view());
    run_if_fits(makeindex, fits, command, folder.c_str());
    return 1;
}

void RunOdocMakeIndex(const char *index) {
    File file;
    BoundedString<1024> options;
    Command command;
    if (!take_file(index, file))
        return;
    SetMakeIndexOptions(options);
    run_if_fits(makeindex, command.format("makeindex %s %s", options.c_str(), file.name.c_str()), command,
                file.folder.c_str());
}

void RunMetaPost(int mode) {
    BoundedString<256> folder;
    Command command;
    int ready;
    if (mode == 1) {
        ready = choose_metapost_file(command, folder);
    } else {
        ready = GetCommandLine(mode == 3 ? "mpost -ini -jobname=mpost plain \\dump" : nullptr, folder) &&
                command.copy(mycommand.view());
    }
    if (ready)
        run_tool(mpost, command.c_str(), folder.c_str());
}

void RunOdocMetaPost(const char *mp) {
    File file;
    Command command;
    if (!take_file(mp, file))
        return;
    cut_extension(file.name);
    run_if_fits(mpost, command.format("mpost %s", file.name.c_str()), command, file.folder.c_str());
}

void RunPs2pdf(int mode) {
    const JobScope scope;
    BoundedString<256> chosen;
    if (!find_converter())
        return;
    if (mode == 2 && !choose_input("PRINTFILE", ".ps", "Select a Postscript file", chosen))
        return;
    const char *const file = mode == 2 ? chosen.c_str() : mypsfile.c_str();
    if (*file)
        LaunchAndSendODOC(ps2pdfexe, file, 1);
    restore();
}

void RunDvipdfm(const char *dvi) {
    File file;
    Command command;
    if (take_file(dvi, file))
        run_if_fits(dvipdfm, command.format("dvipdfm %s", file.name.c_str()), command, file.folder.c_str());
}

// Runs mycommand in curr_dir with the tool.
static void run_script(const Tool &tool) {
    const JobScope scope;
    if (!is_there(tool))
        return;
    KillApp(tool.path.c_str());
    while (main_event(mask_no_high_level))
        ;
    CallTool(tool.path.c_str(), mycommand.c_str(), curr_dir.c_str());
    restore();
    KillApp(tool.path.c_str());
}

void DoDvipsAppleScript() {
    run_script(dvips);
}

void DoBibtexAppleScript() {
    run_script(bibtex);
}

void DoMakeindexAppleScript() {
    run_script(makeindex);
}

void DoMpostAppleScript() {
    run_script(mpost);
}

void DoDvipdfmAppleScript() {
    run_script(dvipdfm);
}

void DoBiberAppleScript() {
    run_script(biber);
}

} // namespace quillon
