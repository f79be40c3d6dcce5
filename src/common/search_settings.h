// The search-path settings, one row for each. The shell's look-ups, the tool host, the set-up and the manual
// read the same rows.
#ifndef QUILLON_COMMON_SEARCH_SETTINGS_H
#define QUILLON_COMMON_SEARCH_SETTINGS_H

namespace common {

// The numbers of the file databases in the shell. The key of a setting is also the file name of its database.
enum Database {
    no_database,
    tex_inputs,
    type1_fonts,
    postscript_headers,
    virtual_fonts,
    font_metrics,
    databases_end
};

// The slot of a setting that has no search path of its own in the shell and only stands in for others.
inline constexpr int no_slot = -1;

struct SearchSetting {
    const char *key;
    int slot;                 // the number of the shell's search path
    const char *instead[2];   // settings that stand in while this one is not set; null for none
    const char *distribution; // the distribution's variable that the set-up reads; null when it has none
    const char *engine;       // the environment variable that a program of the distribution is given
    int window_row;           // its row in the set-up's window, from 1; 0: not shown
    Database database;
    const char *help; // one sentence
};

inline constexpr SearchSetting search_settings[] = {
    {"BIBINPUTS", 0, {}, "BIBINPUTS", "BIBINPUTS", 12, no_database, "Where bibliographies are."},
    {"BSTINPUTS",
     1,
     {"TEXINPUTS"},
     "BSTINPUTS",
     "BSTINPUTS",
     13,
     no_database,
     "Where bibliography styles are."},
    {"GFFONTS", 2, {"TEXFONTS"}, "GFFONTS", "GFFONTS", 7, no_database, "Where generic fonts are."},
    {"MFBASES", 3, {}, "MFBASES", "MFBASES", 17, no_database, "Where Metafont bases are."},
    {"MFINPUTS", 4, {}, "MFINPUTS", "MFINPUTS", 16, no_database, "Where Metafont sources are."},
    {"MFPOOL", 5, {}, nullptr, "MFPOOL", 0, no_database, "Where Metafont's string pool is."},
    {"PKFONTS", 6, {"TEXPKS", "TEXFONTS"}, "PKFONTS", "PKFONTS", 6, no_database, "Where packed fonts are."},
    {"TEXPKS",
     no_slot,
     {},
     nullptr,
     "TEXPKS",
     0,
     no_database,
     "Where packed fonts are when PKFONTS is not set."},
    {"TEXFORMATS", 7, {}, "TEXFORMATS", "TEXFORMATS", 2, no_database, "Where TeX formats are."},
    {"TEXINPUTS", 8, {}, "TEXINPUTS", "TEXINPUTS", 1, tex_inputs, "Where TeX inputs are."},
    {"TEXPOOL", 9, {}, "TEXPOOL", "TEXPOOL", 19, no_database, "Where TeX's string pool is."},
    {"TEXFONTS", 10, {}, "TFMFONTS", "TEXFONTS", 3, font_metrics, "Where font metrics are."},
    {"VFFONTS", 11, {"TEXFONTS"}, "VFFONTS", "VFFONTS", 4, virtual_fonts, "Where virtual fonts are."},
    {"MPINPUTS", 12, {}, "MPINPUTS", "MPINPUTS", 15, no_database, "Where MetaPost sources are."},
    {"MPMEMS", 13, {}, nullptr, "MPMEMS", 0, no_database, "Where MetaPost mems are."},
    {"MPPOOL", 14, {}, nullptr, "MPPOOL", 0, no_database, "Where MetaPost's string pool is."},
    {"TEXCONFIG", 15, {}, "TEXCONFIG", "TEXCONFIG", 9, no_database, "Where configuration and map files are."},
    {"OFMFONTS", 16, {}, "OFMFONTS", "OFMFONTS", 20, no_database, "Where Omega font metrics are."},
    {"OCPINPUTS", 17, {}, "OCPINPUTS", "OCPINPUTS", 21, no_database, "Where compiled Omega processes are."},
    {"OTPINPUTS", 18, {}, "OTPINPUTS", "OTPINPUTS", 22, no_database, "Where Omega process sources are."},
    {"OVFFONTS", 19, {}, "OVFFONTS", "OVFFONTS", 23, no_database, "Where Omega virtual fonts are."},
    {"DVIPSHEADERS",
     20,
     {},
     "TEXPSHEADERS",
     "DVIPSHEADERS",
     8,
     postscript_headers,
     "Where PostScript headers are."},
    {"TYPE1FONTS", 21, {}, "T1FONTS", "T1FONTS", 5, type1_fonts, "Where Type 1 fonts are."},
    {"ISTFILES", 23, {}, "INDEXSTYLE", "INDEXSTYLE", 14, no_database, "Where index styles are."},
    {"AFMFONTS", 24, {}, "AFMFONTS", "AFMFONTS", 18, no_database, "Where Adobe font metrics are."},
    {"DVIPSEPSF", 25, {}, nullptr, "TEXPICTS", 11, no_database, "Where pictures for dvips are."},
    {"ENCFOLDER", 26, {}, "ENCFONTS", "ENCFONTS", 10, no_database, "Where font encodings are."},
};
inline constexpr int search_setting_count = sizeof search_settings / sizeof search_settings[0];

// Returns the row of that database, null for any other number. Every database has a row.
constexpr const SearchSetting *database_setting(int database) {
    for (const SearchSetting &row : search_settings)
        if (database != no_database && row.database == database)
            return &row;
    return nullptr;
}

} // namespace common

#endif
