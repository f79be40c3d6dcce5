#include "settings/setting_table.h"

#include <cstring>

#include "core/job_state.h"
#include "settings/settings.h"

namespace quillon {

const Setting setting_table[] = {
    {"TEXDIR", setting_path, nullptr, nullptr, 1, "The folder of the last TeX job."},
    {"TEXFILE", setting_path, nullptr, nullptr, 1, "The current TeX file."},
    {"DVIFILE", setting_path, nullptr, nullptr, 1, "The DVI file that the last run wrote."},
    {"PDFFILE", setting_path, nullptr, nullptr, 1, "The PDF file that the last run wrote."},
    {"PRINTFILE", setting_path, nullptr, nullptr, 1, "The current PostScript file."},
    {"MPOSTFILE", setting_path, nullptr, nullptr, 1, "The current MetaPost file."},
    {"LASTCOMMAND", setting_text, nullptr, nullptr, 1, "The command line of the last TeX run."},
    {"LASTDIR", setting_path, nullptr, nullptr, 1, "The working folder of the last TeX run."},
    {"FILENAME", setting_path, nullptr, nullptr, 1, "The file where the last run stopped on an error."},
    {"LINENUMBER", setting_number, nullptr, nullptr, 1, "The line of that error."},
    {"PDFTEXOUTPUT", setting_choice, "0", nullptr, 1,
     "What the last run left to view: 0 nothing, 1 the PDF file, any other value the DVI file."},

    {"USEPDFTEX", setting_flag, "0", &usePdfTeX, 1, "Typeset runs pdfTeX rather than TeX."},
    {"USE8BIT", setting_flag, "0", &use8bit, 1, "Runs take all eight-bit characters as printable."},
    {"ADDSPECIALS", setting_flag, "0", &addSpecials, 1, "Runs write source positions for the viewer."},
    {"DORECORD", setting_flag, "0", &doRecord, 1, "Runs record the files that they read and write."},
    {"AUTOVIEW", setting_flag, "0", &doView, 1, "The output is viewed after a clean run."},
    {"DEBUG", setting_flag, "1", &doDebug, 1, "Diagnostic lines are printed."},
    {"DATABASE", setting_flag, "0", nullptr, 1, "Files are searched for in the file databases."},
    {"USEFULLPATHS", setting_flag, "0", &useFullPaths, 1, "The Recent files menu shows full paths."},
    {"MPTEXFORMAT", setting_choice, "1", nullptr, 1, "The MetaPost format choice, 1 or 2."},
    {"SPACECHAR", setting_number, "202", nullptr, 1,
     "The byte, 1 to 255, that stands for a blank in file names."},

    {"PDFTEXFORMAT", setting_text, nullptr, nullptr, 1, "The format chosen for pdfTeX."},
    {"PDFETEXFORMAT", setting_text, nullptr, nullptr, 1, "The format chosen for pdfTeX in e-TeX mode."},
    {"BUILDLINE", setting_text, nullptr, nullptr, 1, "The command line of the last format build."},

    {"Editor", setting_path, nullptr, nullptr, 1, "The editor."},
    {"PDFVIEW", setting_path, nullptr, nullptr, 1, "The PDF viewer."},
    {"VIEWPS", setting_path, nullptr, nullptr, 1, "The PostScript viewer."},
    {"DVIPREVIEW", setting_path, nullptr, nullptr, 1, "The DVI previewer."},
    {"PS2PDFEXE", setting_path, nullptr, nullptr, 1, "The converter from PostScript to PDF."},

    {"DVIPS_OPTION_STR", setting_text, nullptr, nullptr, 1, "Options for dvips."},
    {"BIBTEXOPTIONS", setting_text, nullptr, nullptr, 1, "Options for bibtex8."},
    {"CSFFILE", setting_text, nullptr, nullptr, 1, "The codepage and sort file of bibtex8."},
    {"MICOMPRESS", setting_flag, nullptr, nullptr, 1, "MakeIndex compresses blanks."},
    {"MIGERMAN", setting_flag, nullptr, nullptr, 1, "MakeIndex sorts as German does."},
    {"MILETTER", setting_flag, nullptr, nullptr, 1, "MakeIndex sorts letter by letter."},
    {"MIRANGE", setting_flag, nullptr, nullptr, 1, "MakeIndex makes no page ranges."},
    {"MIPAGESTRING", setting_text, nullptr, nullptr, 1, "The first page number that MakeIndex is given."},
    {"MISTYLE", setting_path, nullptr, nullptr, 1, "The style file of MakeIndex."},
    {"PDFTEXMODE", setting_text, nullptr, nullptr, 1, "The mode in which pdfTeX has fonts made."},
    {"PDFMAKEFONT", setting_flag, nullptr, nullptr, 1, "pdfTeX has missing fonts made."},

    {"FONTNAME", setting_text, nullptr, nullptr, 1, "The console's font."},
    {"FONTSIZE", setting_number, nullptr, nullptr, 1, "The console's font size."},
    {"TEXWINDOW", setting_text, nullptr, nullptr, 1, "Where the console window stands."},
    {"RECENTFILE", setting_numbered, nullptr, nullptr, 12, "An entry of the Recent files menu."},
    {"TEXMENU", setting_numbered, nullptr, nullptr, 20, "An application of the Transfer menu."},

    {"BIBINPUTS", setting_path, ".", nullptr, 1, "Where bibliographies are."},
    {"BSTINPUTS", setting_path, ".", nullptr, 1, "Where bibliography styles are."},
    {"GFFONTS", setting_path, ".", nullptr, 1, "Where generic fonts are."},
    {"MFBASES", setting_path, ".", nullptr, 1, "Where Metafont bases are."},
    {"MFINPUTS", setting_path, ".", nullptr, 1, "Where Metafont sources are."},
    {"MFPOOL", setting_path, ".", nullptr, 1, "Where Metafont's string pool is."},
    {"PKFONTS", setting_path, ".", nullptr, 1, "Where packed fonts are."},
    {"TEXPKS", setting_path, nullptr, nullptr, 1, "Where packed fonts are when PKFONTS is not set."},
    {"TEXFORMATS", setting_path, ".", nullptr, 1, "Where TeX formats are."},
    {"TEXINPUTS", setting_path, ".", nullptr, 1, "Where TeX inputs are."},
    {"TEXPOOL", setting_path, ".", nullptr, 1, "Where TeX's string pool is."},
    {"TEXFONTS", setting_path, ".", nullptr, 1, "Where font metrics are."},
    {"VFFONTS", setting_path, ".", nullptr, 1, "Where virtual fonts are."},
    {"MPINPUTS", setting_path, ".", nullptr, 1, "Where MetaPost sources are."},
    {"MPMEMS", setting_path, ".", nullptr, 1, "Where MetaPost mems are."},
    {"MPPOOL", setting_path, ".", nullptr, 1, "Where MetaPost's string pool is."},
    {"TEXCONFIG", setting_path, ".", nullptr, 1, "Where configuration and map files are."},
    {"OFMFONTS", setting_path, ".", nullptr, 1, "Where Omega font metrics are."},
    {"OCPINPUTS", setting_path, ".", nullptr, 1, "Where compiled Omega processes are."},
    {"OTPINPUTS", setting_path, ".", nullptr, 1, "Where Omega process sources are."},
    {"OVFFONTS", setting_path, ".", nullptr, 1, "Where Omega virtual fonts are."},
    {"DVIPSHEADERS", setting_path, ".", nullptr, 1, "Where PostScript headers are."},
    {"TYPE1FONTS", setting_path, ".", nullptr, 1, "Where Type 1 fonts are."},
    {"ISTFILES", setting_path, ".", nullptr, 1, "Where index styles are."},
    {"AFMFONTS", setting_path, ".", nullptr, 1, "Where Adobe font metrics are."},
    {"DVIPSEPSF", setting_path, ".", nullptr, 1, "Where pictures for dvips are."},
    {"ENCFOLDER", setting_path, ".", nullptr, 1, "Where font encodings are."},
    {"TEXBIN", setting_path, nullptr, nullptr, 1,
     "The folder of the distribution's programs, where not every session looks for them."},
    {"TEXMFTREES", setting_path, nullptr, nullptr, 1,
     "The distribution's own trees, as the set-up found them."},
};
const int setting_count = sizeof setting_table / sizeof setting_table[0];

namespace {

// 1 when KEY is PREFIX and a number from 1 to COUNT without leading zeros.
int is_numbered(const char *key, const char *prefix, int count) {
    const std::size_t length = std::strlen(prefix);
    int number = 0;
    if (std::strncmp(key, prefix, length) != 0 || key[length] == '0')
        return 0;
    for (key += length; *key >= '0' && *key <= '9' && number <= count; key++)
        number = number * 10 + (*key - '0');
    return *key == '\0' && number >= 1 && number <= count;
}

} // namespace

const Setting *find_setting(const char *key) {
    for (const Setting &setting : setting_table)
        if (setting.kind == setting_numbered ? is_numbered(key, setting.key, setting.count)
                                             : std::strcmp(setting.key, key) == 0)
            return &setting;
    return nullptr;
}

std::uint8_t read_flag(const char *key) {
    const Setting *const setting = find_setting(key);
    const char *const value = get_str_resource(key);
    if (setting && setting->preset && setting->preset[0] == '1')
        return !(value && value[0] == '0');
    return value && value[0] == '1';
}

} // namespace quillon
