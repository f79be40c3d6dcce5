#include "dialogs/clean.h"

#include "console/output.h"
#include "dialogs/dialog.h"
#include "files/paths.h"
#include "state/job_state.h"
#include "toolbox/made_files.h"
#include "toolbox/windows.h"

namespace quillon {

namespace {

enum : std::int16_t {
    all_button = 3,
    none_button = 4,
    document_display = 5,
    trash_display = 6,
    file_list = 7
};

int file_count = 0; // in the window that is open

// The number of the control for a file.
std::int16_t row_of(int file) {
    return static_cast<std::int16_t>(first_list_row + file);
}

void show_size(BoundedBuffer &text, std::int64_t size) {
    static const char *const units[] = {"kB", "MB", "GB"};
    text.clear();
    if (size < 0)
        return;
    if (size < 1000) {
        text.format("%d %s", static_cast<int>(size), size == 1 ? "byte" : "bytes");
        return;
    }
    double number = static_cast<double>(size) / 1000;
    int unit = 0;
    for (; number >= 999.95 && unit < 2; unit++)
        number /= 1000;
    text.format("%.1f %s", number, units[unit]);
}

// Returns the part of PATH below FOLDER, which ends with a slash; the whole path of a file elsewhere.
const char *below(std::string_view folder, const char *path) {
    return std::string_view{path}.starts_with(folder) ? path + folder.size() : path;
}

void add_files(DialogRef window, const char *document) {
    BoundedString<4096> path;
    BoundedString<40> size;
    std::int64_t bytes;
    const std::string_view folder{document, std::string_view{document}.find_last_of('/') + 1};
    for (int i = 0; i < file_count; i++) {
        GetMadeFile(i, path, &bytes);
        show_size(size, bytes);
        if (!AddListRow(window, file_list, below(folder, path.c_str()), size.c_str(), 1))
            file_count = i;
    }
}

void say_what_happens(DialogRef window) {
    int to_trash = 0;
    for (int i = 0; i < file_count; i++)
        to_trash += GoesToTrash(i);
    SetControlText(window, trash_display,
                   to_trash == file_count ? "The files that are ticked are moved to the trash."
                   : to_trash == 0
                       ? "There is no trash for these files. Those that are ticked are deleted for good."
                       : "Files on another disk than the trash are deleted for good.");
}

// Removes what is ticked.
void remove_files(DialogRef window) {
    BoundedString<4096> path;
    std::int64_t bytes;
    int trashed = 0, deleted = 0;
    for (int i = 0; i < file_count; i++) {
        if (!GetControlValue(window, row_of(i)))
            continue;
        const int to_trash = GoesToTrash(i);
        if (RemoveMadeFile(i) == noErr) {
            trashed += to_trash;
            deleted += !to_trash;
        } else if (GetMadeFile(i, path, &bytes)) {
            ml_printf("I can't remove the file %s.\n", path.c_str());
        }
    }
    if (trashed > 0)
        ml_printf("%d %s moved to the trash.\n", trashed, trashed == 1 ? "file was" : "files were");
    if (deleted > 0)
        ml_printf("%d %s deleted.\n", deleted, deleted == 1 ? "file was" : "files were");
}

} // namespace

int accept_clean(DialogRef window) {
    for (int i = 0; i < file_count; i++)
        if (GetControlValue(window, row_of(i)))
            return 1;
    SysBeep(1);
    return 0;
}

void tick_all_or_none(DialogRef window, std::int16_t control) {
    for (int i = 0; i < file_count && (control == all_button || control == none_button); i++)
        SetControlValue(window, row_of(i), control == all_button);
}

void CleanDocument() {
    BoundedString<1024> document;
    UnixFileToPosixFile(dotexfile.c_str(), document);
    file_count = FindMadeFiles(document.c_str());
    if (file_count < 0)
        ml_printf("No run of %s is on record, so I don't know what its runs wrote. Typeset it once.\n",
                  document.c_str());
    if (file_count == 0)
        ml_printf("There is nothing to remove for %s.\n", document.c_str());
    if (file_count <= 0)
        return;
    const DialogRef window = open_dialog(dialog_clean);
    SetShortenedText(window, document_display, document.c_str());
    add_files(window, document.c_str());
    say_what_happens(window);
    if (run_dialog(window))
        remove_files(window);
    DisposeWindow(window);
}

} // namespace quillon
