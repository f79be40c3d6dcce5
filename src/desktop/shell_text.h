// Texts of the shell as the toolkit shows them.
#ifndef QUILLON_DESKTOP_SHELL_TEXT_H
#define QUILLON_DESKTOP_SHELL_TEXT_H

#include <QString>

namespace quillon::desktop {

// Bytes that are not UTF-8 show as the replacement character; "&" is no mnemonic.
inline QString label_text(const char *bytes) {
    QString text = QString::fromUtf8(bytes);
    text.replace(u'&', QStringLiteral("&&"));
    return text;
}

} // namespace quillon::desktop

#endif
