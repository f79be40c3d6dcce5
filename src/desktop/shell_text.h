// The shell's texts for the labels and menus of the toolkit.
#ifndef QUILLON_DESKTOP_SHELL_TEXT_H
#define QUILLON_DESKTOP_SHELL_TEXT_H

#include <QString>

#include "state/job_state.h"

namespace quillon::desktop {

// The text of NUL-terminated UTF-8 for a label. Other bytes become the replacement character, and "&" is
// doubled, as the toolkit takes a single one for a mnemonic. The byte that stands for a blank in file names
// is shown as one, as the console shows it.
inline QString label_text(const char *bytes) {
    QString text = QString::fromUtf8(bytes);
    if (space_char > 0 && space_char < 0x80)
        text.replace(QChar(static_cast<char16_t>(space_char)), u' ');
    text.replace(u'&', QStringLiteral("&&"));
    return text;
}

} // namespace quillon::desktop

#endif
