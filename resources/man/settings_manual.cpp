// Prints the manual page of the preferences file from the setting rows.
#include <cstdio>

#include "settings/setting_table.h"

using namespace quillon;

static const char *kind_text(SettingKind kind) {
    switch (kind) {
    case setting_path:
        return "a path, blanks substituted";
    case setting_flag:
        return "1 or 0, of which the first character counts";
    case setting_number:
        return "a decimal number";
    case setting_choice:
        return "a number of a choice";
    default:
        return "text";
    }
}

int main() {
    std::puts(".TH QUILLON-PREFERENCES 5 \"\" \"Quillon\" \"File Formats\"\n"
              ".SH NAME\n"
              "quillon-preferences \\- the settings of the Quillon TeX shell\n"
              ".SH DESCRIPTION\n"
              "The file \\fI$XDG_CONFIG_HOME/Quillon Preferences\\fR (else \\fI~/.config/Quillon "
              "Preferences\\fR) holds one\n"
              "setting a line, \\fIKEY=value\\fR; in a value \\fB\\e\\e\\fR, \\fB\\en\\fR, \\fB\\er\\fR and "
              "\\fB\\exHH\\fR stand for\n"
              "bytes that a line cannot hold. Blank lines and lines that begin with # are kept. An empty "
              "value counts as\n"
              "not set.\n"
              ".SH SETTINGS");
    for (int i = 0; i < setting_count; i++) {
        const Setting &row = setting_table[i];
        std::printf(".TP\n\\fB%s\\fR", row.key);
        if (row.kind == setting_numbered)
            std::printf("\\fI1\\fR to \\fB%s\\fI%d\\fR", row.key, row.most);
        std::printf(" (%s", kind_text(row.kind));
        if (row.preset)
            std::printf("; %s when not set", row.preset);
        std::printf(")\n%s\n", row.help);
    }
    std::puts(".SH SEE ALSO\n.BR quillon (1),\n.BR setpaths (1)");
    return 0;
}
