#include "settings/setting_table.h"

#include <array>
#include <cstring>

#include "common/search_settings.h"
#include "common/setting_numbers.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/bounded.h"

namespace quillon {

namespace {

constexpr Setting text(const char *key, const char *help) {
    return {key, setting_text, nullptr, help};
}

constexpr Setting path(const char *key, const char *help, const char *preset = nullptr) {
    return {key, setting_path, preset, help};
}

constexpr Setting number(const char *key, const char *help) {
    return {key, setting_number, nullptr, help};
}

constexpr Setting number(SettingStage stage, const char *key, const char *preset, int least, int most,
                         std::int32_t *global, const char *help) {
    return {key, setting_number, preset, help, stage, nullptr, global, least, most};
}

constexpr Setting flag(const char *key, const char *help) {
    return {key, setting_flag, nullptr, help};
}

constexpr Setting flag(SettingStage stage, const char *key, const char *preset, std::uint8_t *global,
                       const char *help) {
    return {key, setting_flag, preset, help, stage, global};
}

constexpr Setting wide_flag(SettingStage stage, const char *key, const char *preset, std::int32_t *global,
                            const char *help) {
    return {key, setting_flag, preset, help, stage, nullptr, global};
}

constexpr Setting choice(SettingStage stage, const char *key, const char *preset, int least, int most,
                         std::int32_t *global, const char *help) {
    return {key, setting_choice, preset, help, stage, nullptr, global, least, most};
}

constexpr Setting numbered(const char *prefix, int most, const char *help) {
    return {prefix, setting_numbered, nullptr, help, stage_none, nullptr, nullptr, 1, most};
}

// Start-up reads the settings of one stage in the order of their rows.
constexpr SettingStage early = stage_before_preferences_check, late = stage_after_folders;

constexpr Setting own_settings[] = {
    path("TEXDIR", "The folder of the last TeX job."),
    path("TEXFILE", "The current TeX file."),
    path("DVIFILE", "The DVI file that the last run wrote."),
    path("PDFFILE", "The PDF file that the last run wrote."),
    path("PRINTFILE", "The current PostScript file."),
    path("MPOSTFILE", "The current MetaPost file."),
    text("LASTCOMMAND", "The command line of the last TeX run."),
    path("LASTDIR", "The working folder of the last TeX run."),
    path("FILENAME", "The file where the last run stopped on an error."),
    number("LINENUMBER", "The line of that error."),
    path("EDITEDFILE", "The file that was edited last, while source links are on."),
    number("EDITEDLINE", "The line of it, which a viewer is shown."),
    choice(stage_none, "PDFTEXOUTPUT", "0", 0, 9, nullptr,
           "What the last run left to view: 0 nothing, 1 the PDF file, any other value the DVI file."),

    number(early, "SPACECHAR", common::preset_space, common::least_space, common::greatest_space, &space_char,
           "The byte, 1 to 255, that stands for a blank in file names."),
    flag(early, "USEPDFTEX", "0", &usePdfTeX, "Typeset runs pdfTeX rather than TeX."),
    flag(early, "DEBUG", "1", &doDebug, "Diagnostic lines are printed."),
    wide_flag(early, "DATABASE", "0", &dataBaseSearch, "Files are searched for in the file databases."),
    flag(early, "USE8BIT", "0", &use8bit, "Runs take all eight-bit characters as printable."),
    choice(early, "MPTEXFORMAT", "1", 1, 2, &mp_format_type, "The MetaPost format choice, 1 or 2."),
    flag(late, "USEFULLPATHS", "0", &useFullPaths, "The Recent files menu shows full paths."),
    flag(late, "AUTOVIEW", "0", &doView, "The output is viewed after a clean run."),
    flag(late, "ADDSPECIALS", "0", &addSpecials, "Runs write source positions for the viewer."),
    flag(late, "DORECORD", "0", &doRecord, "Runs record the files that they read and write."),
    flag(late, "MAGICCOMMENTS", "0", &magicComments,
         "The first lines of a document choose its root and its engine."),
    flag(late, "RERUN", "0", &runUntilStable, "A document is typeset again until nothing changes any more."),
    flag(late, "SNAPSHOT", "0", &fastPreamble, "What the engine does for a preamble is remembered."),
    flag(late, "WATCH", "0", &typesetOnSave, "A document is typeset when a file of it is saved."),

    text("PDFTEXFORMAT", "The format chosen for pdfTeX."),
    text("PDFETEXFORMAT", "The format chosen for pdfTeX in e-TeX mode."),
    text("BUILDLINE", "The command line of the last format build."),

    path("Editor", "The editor."),
    path("PDFVIEW", "The PDF viewer."),
    path("VIEWPS", "The PostScript viewer."),
    path("DVIPREVIEW", "The DVI previewer."),
    path("PS2PDFEXE", "The converter from PostScript to PDF."),

    text("DVIPS_OPTION_STR", "Options for dvips."),
    text("BIBTEXOPTIONS", "Options for bibtex8."),
    text("CSFFILE", "The codepage and sort file of bibtex8."),
    flag("MICOMPRESS", "MakeIndex compresses blanks."),
    flag("MIGERMAN", "MakeIndex sorts as German does."),
    flag("MILETTER", "MakeIndex sorts letter by letter."),
    flag("MIRANGE", "MakeIndex makes no page ranges."),
    text("MIPAGESTRING", "The first page number that MakeIndex is given."),
    path("MISTYLE", "The style file of MakeIndex."),
    text("PDFTEXMODE", "The mode in which pdfTeX has fonts made."),
    flag("PDFMAKEFONT", "pdfTeX has missing fonts made."),

    text("FONTNAME", "The console's font."),
    number("FONTSIZE", "The console's font size."),
    flag("CONSOLESELECT", "Text of the console can be selected."),
    text("TEXWINDOW", "Where the console window stands."),
    numbered("RECENTFILE", 12, "An entry of the Recent files menu."),
    numbered("TEXMENU", 20, "An application of the Transfer menu."),

    path("TEXBIN", "The folder of the distribution's programs, where not every session looks for them."),
    path("TEXMFTREES", "The distribution's own trees, as the set-up found them."),
};
constexpr int own_count = sizeof own_settings / sizeof own_settings[0];

// Joins the rows above with one row for each search path.
constexpr auto all_settings() {
    std::array<Setting, own_count + common::search_setting_count> rows{};
    for (int i = 0; i < own_count; i++)
        rows[static_cast<std::size_t>(i)] = own_settings[i];
    for (int i = 0; i < common::search_setting_count; i++) {
        const common::SearchSetting &row = common::search_settings[i];
        rows[static_cast<std::size_t>(own_count + i)] =
            path(row.key, row.help, row.slot == common::no_slot ? nullptr : ".");
    }
    return rows;
}
constexpr auto rows = all_settings();

// Tells whether KEY is PREFIX and a number from 1 to COUNT without leading zeros.
int is_numbered(const char *key, const char *prefix, int count) {
    const std::size_t length = std::strlen(prefix);
    int value = 0;
    if (std::strncmp(key, prefix, length) != 0 || key[length] == '0')
        return 0;
    for (key += length; *key >= '0' && *key <= '9' && value <= count; key++)
        value = value * 10 + (*key - '0');
    return *key == '\0' && value >= 1 && value <= count;
}

// Returns the digit that VALUE begins with when it lies between LEAST and MOST; -1 for any other text and for
// null.
int first_digit(const char *value, int least, int most) {
    const int digit = value ? value[0] - '0' : -1;
    return digit >= least && digit <= most ? digit : -1;
}

} // namespace

const Setting *const setting_table = rows.data();
const int setting_count = static_cast<int>(rows.size());

const Setting *find_setting(const char *key) {
    for (const Setting &row : rows)
        if (row.kind == setting_numbered ? is_numbered(key, row.key, row.most)
                                         : std::strcmp(row.key, key) == 0)
            return &row;
    return nullptr;
}

int read_setting(const Setting &row) {
    const char *const value = get_str_resource(row.key);
    const char *const preset = row.preset ? row.preset : "0";
    if (row.kind == setting_number)
        return common::setting_number(value, preset, row.least, row.most);
    const int least = row.kind == setting_flag ? 0 : row.least,
              most = row.kind == setting_flag ? 1 : row.most;
    const int digit = first_digit(value, least, most);
    return digit >= 0 ? digit : first_digit(preset, least, most);
}

static void set_global(const Setting &row, int value) {
    if (row.flag)
        *row.flag = static_cast<std::uint8_t>(value);
    if (row.number)
        *row.number = value;
}

void read_settings(SettingStage stage) {
    for (const Setting &row : rows)
        if (row.stage == stage)
            set_global(row, read_setting(row));
}

int setting_value(const Setting &row) {
    return row.flag ? *row.flag : row.number ? *row.number : 0;
}

int change_setting(const Setting &row, int value) {
    BoundedString<16> text;
    set_global(row, value);
    text.format("%d", value);
    return set_str_resource(row.key, text.c_str());
}

} // namespace quillon
