// The shell's texts for the labels and menus of the toolkit.
#ifndef QUILLON_DESKTOP_SHELL_TEXT_H
#define QUILLON_DESKTOP_SHELL_TEXT_H

#include <QString>

namespace quillon::desktop {

// The text of NUL-terminated UTF-8 for a label. Other bytes become the replacement character, and "&" is
// doubled, as the toolkit takes a single one for a mnemonic.
inline QString label_text(const char *bytes) {
    QString text = QString::fromUtf8(bytes);
    text.replace(u'&', QStringLiteral("&&"));
    return text;
}

} // namespace quillon::desktop

#endif
