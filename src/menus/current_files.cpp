#include "menus/current_files.h"

#include <cctype>
#include <cstring>

#include "console/output.h"
#include "core/command_table.h"
#include "files/paths.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "settings/settings.h"
#include "state/job_state.h"

namespace quillon {

BoundedString<256> mylabel;

static const char *leaf_of(const char *path) {
    const char *const slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

// Gives a File item the text LABEL, and behind it the file's name in quotes when there is a file.
static void set_output_item(std::int16_t item, const char *label, const char *path) {
    BoundedString<1024> text;
    BoundedString<256> name;
    if (*path) {
        name.copy(leaf_of(path));
        convert_to_space(name.data());
        text.format("%s \"%s\" ", label, name.c_str());
    } else {
        text.copy(label);
    }
    SetMenuItemText(fileMenu, item, text.c_str());
}

// Copies PATH into TARGET when that file exists; otherwise TARGET is empty.
static void take_existing(BoundedBuffer &target, const char *path) {
    target.clear();
    if (path && access(path, 4) == 0)
        target.copy(path);
}

void SetDviFile(const char *path) {
    take_existing(mydvifile, path);
    set_output_item(file_dvips, "dvips", mydvifile.c_str());
    set_output_item(file_view_dvi, "View", mydvifile.c_str());
}

void SetPSFile(const char *path) {
    take_existing(mypsfile, path);
    set_output_item(file_view_ps, "View", mypsfile.c_str());
    set_output_item(file_ps2pdf, "ps2pdf", mypsfile.c_str());
}

void SetPDFFile(const char *path) {
    take_existing(mypdffile, path);
    set_output_item(file_view_pdf, "View", mypdffile.c_str());
}

void SetBibFile() {
    BoundedString<300> text;
    mybibfile.clear();
    if (!dotexfile.empty()) {
        mybibfile.copy(dotexfile.view());
        // Kept on purpose: the path is cut at its last ".", even when that is in a folder's name.
        const std::size_t dot = mybibfile.view().find_last_of('.');
        if (dot != std::string_view::npos)
            mybibfile.cut(dot);
        if (!mybibfile.append(".aux") || access(mybibfile.c_str(), 4) != 0)
            mybibfile.clear();
    }
    if (mybibfile.empty())
        text.copy("bibtex");
    else
        text.format("bibtex \"%s\"", leaf_of(mybibfile.c_str()));
    SetMenuItemText(fileMenu, file_bibtex, text.c_str());
}

static void set_typeset_item() {
    BoundedString<1024> text;
    text.format("%s \"%s\"", mylabel.c_str(), leaf_of(dotexfile.c_str()));
    SetMenuItemText(fileMenu, file_typeset, text.c_str());
}

static void clear_all_files() {
    SetMenuItemText(fileMenu, file_typeset, mylabel.c_str());
    SetDviFile(nullptr);
    SetBibFile();
    SetPSFile(nullptr);
    SetPDFFile(nullptr);
}

// Sets the current files from TEXFILE, with WITH_PDF the PDF file too. Returns 0 when there is no TeX file.
static int restore_files(int with_pdf) {
    BoundedString<256> stem;
    BoundedString<300> output;
    dotexfile.clear();
    const char *const setting = get_str_resource("TEXFILE");
    // The name is copied first because access may read another setting into the same buffer.
    if (!setting || !dotexfile.copy(setting))
        return 0;
    if (access(dotexfile.c_str(), 4) != 0) {
        dotexfile.clear();
        return 0;
    }
    set_typeset_item();
    stem.copy(dotexfile.view());
    const std::size_t slash = stem.view().find_last_of('/');
    const std::size_t dot = stem.view().find_last_of('.');
    if (dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash))
        stem.cut(dot);
    const char *const base = stem.c_str();
    output.format("%s.dvi", base);
    SetDviFile(output.c_str());
    SetBibFile();
    output.format("%s.ps", base);
    SetPSFile(output.c_str());
    if (with_pdf) {
        output.format("%s.pdf", base);
        SetPDFFile(output.c_str());
    }
    return 1;
}

void OldTeXFile() {
    if (!restore_files(1))
        clear_all_files();
}

void OldTeXFile1() {
    restore_files(1);
}

void SetAllFiles() {
    restore_files(0);
}

void SetTeXFile(const char *path) {
    if (!dotexfile.copy(path))
        return;
    set_str_resource("TEXFILE", path);
    set_typeset_item();
}

// Finds the first of the words 2 to 20 of a command line that can be a file name. Returns 0 when there is
// none.
static int find_source(const char *command_line, BoundedBuffer &source) {
    const char *place = command_line;
    for (int word = 1; word <= 20; word++) {
        while (std::isspace(static_cast<unsigned char>(*place)))
            place++;
        const char *end = place;
        while (*end && !std::isspace(static_cast<unsigned char>(*end)))
            end++;
        if (end == place)
            return 0;
        if (word > 1 && !std::strchr("-&\\", *place))
            return source.copy({place, static_cast<std::size_t>(end - place)});
        place = end;
    }
    return 0;
}

void NewSetTeXFile(const char *command_line, const char *dir) {
    BoundedString<1024> word, path;
    const int found = find_source(command_line, word) && path.format("%s/%s", dir, word.c_str());
    set_str_resource("LASTCOMMAND", command_line);
    set_str_resource("LASTDIR", dir);
    if (!found || access(path.c_str(), 4) != 0)
        return;
    if (path.length() > 255) {
        ml_printf("The path \"%s\" is too long for Quillon.\n", path.c_str());
        return;
    }
    set_str_resource("TEXFILE", path.c_str());
    SaveRecentFile(path.c_str());
}

} // namespace quillon
