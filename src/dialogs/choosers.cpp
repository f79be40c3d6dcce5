#include "dialogs/choosers.h"

#include <cstring>

#include "console/output.h"
#include "core/event_loop.h"
#include "files/paths.h"
#include "settings/settings.h"

namespace quillon {

BoundedString<256> gExt, gExt1;
int selector = 4;
OSType gSig = 0, gSig1 = 0;

namespace {

constexpr int filter_limit = 4;
constexpr OSType any_application = four("****");
constexpr OSType filter_creators[filter_limit] = {four("1000"), four("2000"), four("3000"), four("4000")};

// The callbacks that go into each request.
struct NavCallbacks {
    void (*filter_picked)(const NavMenuItem *item);
    void (*window_event)(const EventRecord *event);
    int (*filter)(const FSSpec *spec);
    int (*app_filter)(const FSSpec *spec);
};
NavCallbacks callbacks = {};

// Where a chooser starts: the POSIX path of a folder, and a file name.
struct NavStart {
    BoundedString<1024> folder, leaf;
};

int start_in_folder(NavStart &start, const char *unix_path) {
    FSSpec spec;
    return unix_path && *unix_path && UnixPathToFolder(unix_path, &spec) && FSpToPosix(&spec, start.folder);
}

void start_in_texdir(NavStart &start) {
    if (!start_in_folder(start, get_str_resource("TEXDIR")))
        start.folder.clear();
}

// Starts at the file or folder at the Unix path PATH, else in the folder of the last TeX job.
void start_at(NavStart &start, const char *path) {
    BoundedString<1024> absolute, mac_path, posix_path;
    FSSpec spec;
    if (*path && convert_path(add_current_dir(absolute, path), mac_path)) {
        if (start_in_folder(start, absolute.c_str()))
            return;
        const OSErr error = FSMakeFSSpec(0, 0, mac_path.c_str(), &spec);
        if ((error == noErr || error == fnfErr) && FSpToPosix(&spec, posix_path) &&
            split_path(posix_path.c_str(), start.folder, start.leaf))
            return;
    }
    start.leaf.clear();
    start_in_texdir(start);
}

void add_filter(NavMenuItem *filters, int *count, int number, OSType type, const char *extension) {
    NavMenuItem &item = filters[(*count)++];
    item.creator = filter_creators[number - 1];
    item.type = type;
    if (number <= 2)
        item.text.format("All files with %s extension", extension);
    else
        item.text.copy(number == 3 ? "All text files" : "All files");
}

int build_filters(NavMenuItem *filters, int text_flag) {
    int count = 0;
    if (!gExt.empty())
        add_filter(filters, &count, 1, filter_creators[0], gExt.c_str());
    if (!gExt1.empty())
        add_filter(filters, &count, 2, filter_creators[1], gExt1.c_str());
    if (text_flag)
        add_filter(filters, &count, 3, four("TEXT"), "");
    add_filter(filters, &count, 4, any_application, "");
    return count;
}

// Runs the chooser. Returns 1 and the chosen location, which need not exist when MAY_BE_MISSING is 1; 0
// otherwise.
int run(NavRequest &request, const NavStart &start, int may_be_missing, FSSpec *chosen) {
    BoundedString<4096> posix_path;
    request.start_folder = start.folder.empty() ? nullptr : start.folder.c_str();
    request.start_name = start.leaf.empty() ? nullptr : start.leaf.c_str();
    request.filter_picked = callbacks.filter_picked;
    request.window_event = callbacks.window_event;
    if (!NavRun(&request, posix_path))
        return 0;
    const OSErr error = FSPathMakeSpec(posix_path.c_str(), chosen);
    if (error == noErr || (error == fnfErr && may_be_missing))
        return 1;
    ml_printf("I can't use %s.\n", posix_path.c_str());
    return 0;
}

int answer(const FSSpec *chosen, BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id) {
    BoundedString<256> leaf;
    from_pascal(chosen->name, leaf);
    convert_space(leaf.data());
    if (!name.copy(leaf.view())) {
        ml_printf("The name %s is too long.\n", leaf.c_str());
        return 0;
    }
    *vref = chosen->vRefNum;
    *dir_id = chosen->parID;
    return 1;
}

void picked_in_request(const NavMenuItem *item) {
    myEventProc(item, nullptr);
}

void event_in_request(const EventRecord *event) {
    myEventProc(nullptr, event);
}

int is_shown_anyway(const FSSpec *spec) {
    std::int32_t dir_id;
    return !spec || folder_id(spec, &dir_id);
}

} // namespace

void CreateNavUPP() {
    callbacks = {picked_in_request, event_in_request, myFilterProc, myAppFilterProc};
}

int nav_get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
                 const char *ext2, int text_flag, const char *prompt) {
    NavMenuItem filters[filter_limit];
    NavStart start;
    FSSpec chosen;
    gExt.clear();
    gExt1.clear();
    if (ext1)
        gExt.copy(ext1);
    if (ext2)
        gExt1.copy(ext2);
    if (!gExt.empty())
        selector = 1;
    else if (!gExt1.empty())
        selector = 2;
    else if (text_flag)
        selector = 3;
    NavRequest request = {};
    request.kind = navGetFile;
    request.prompt = prompt;
    request.filters = filters;
    request.filter_count = build_filters(filters, text_flag);
    request.initial_filter = request.filter_count - 1;
    for (int i = 0; i < request.filter_count; i++)
        if (filters[i].creator == filter_creators[selector - 1])
            request.initial_filter = i;
    request.shows = callbacks.filter;
    start_at(start, name.c_str());
    return run(request, start, 0, &chosen) && answer(&chosen, name, vref, dir_id);
}

int nav_get_working_folder(BoundedBuffer &unix_path, const char *prompt) {
    NavStart start;
    FSSpec chosen;
    std::int32_t dir_id;
    NavRequest request = {};
    request.kind = navChooseFolder;
    request.prompt = prompt;
    if (!start_in_folder(start, unix_path.c_str()))
        start_in_texdir(start);
    return run(request, start, 0, &chosen) && folder_id(&chosen, &dir_id) &&
           get_unixpath_by_dirid(chosen.vRefNum, dir_id, unix_path);
}

int nav_put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt) {
    NavStart start;
    FSSpec chosen;
    BoundedString<1024> folder;
    NavRequest request = {};
    request.kind = navPutFile;
    request.prompt = prompt;
    start_in_texdir(start);
    if (split_path(name.c_str(), folder, start.leaf))
        convert_to_space(start.leaf.data());
    return run(request, start, 1, &chosen) && answer(&chosen, name, vref, dir_id);
}

// What an application is wanted for follows from the prompt.
static NavUse use_of(const char *prompt) {
    static const struct {
        const char *prompt;
        NavUse use;
    } uses[] = {
        {"Find a text editor", navEditor},   {"Find a pdf viewer", navPdfViewer},
        {"Find a PDF viewer", navPdfViewer}, {"Find PsGlance", navPsViewer},
        {"Find psglance", navPsViewer},      {"Find DviView", navDviViewer},
    };
    for (const auto &row : uses)
        if (prompt && std::strcmp(prompt, row.prompt) == 0)
            return row.use;
    return navAnyUse;
}

int nav_get_app(const char *prompt, BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, OSType sig,
                OSType sig1) {
    const NavStart start;
    FSSpec chosen;
    gSig = sig;
    gSig1 = sig1;
    NavRequest request = {};
    request.kind = navChooseApplication;
    request.prompt = prompt;
    request.shows = callbacks.app_filter;
    request.use = use_of(prompt);
    return run(request, start, 0, &chosen) && answer(&chosen, name, vref, dir_id);
}

void myEventProc(const NavMenuItem *picked, const EventRecord *event) {
    for (int i = 0; picked && i < filter_limit; i++)
        if (picked->creator == filter_creators[i])
            selector = i + 1;
    if (event && (event->what == updateEvt || event->what == activateEvt))
        DoEvent(event);
}

int myFilterProc(const FSSpec *spec) {
    if (is_shown_anyway(spec))
        return 1;
    BoundedString<256> leaf;
    FInfo info;
    from_pascal(spec->name, leaf);
    switch (selector) {
    case 1:
        return has_extension(leaf.c_str(), gExt.c_str());
    case 2:
        return has_extension(leaf.c_str(), gExt1.c_str());
    case 3:
        return FSpGetFInfo(spec, &info) == noErr && info.fdType == four("TEXT");
    default:
        return 1;
    }
}

int myAppFilterProc(const FSSpec *spec) {
    if (is_shown_anyway(spec))
        return 1;
    FInfo info;
    if (FSpGetFInfo(spec, &info) != noErr || info.fdType != four("APPL"))
        return 0;
    return gSig == any_application || info.fdCreator == gSig || (gSig1 && info.fdCreator == gSig1);
}

} // namespace quillon
