#include "widgets/desktop_entries.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QLocale>
#include <QSet>
#include <QStandardPaths>
#include <algorithm>

namespace widgets {

namespace {

// The value of KEY in the person's language, else the common one.
QString localised(const QHash<QString, QString> &values, const QString &key) {
    const QString locale = QLocale().name();
    for (const QString &suffix : {locale, locale.section(u'_', 0, 0)})
        if (const auto found = values.constFind(key + u'[' + suffix + u']'); found != values.constEnd())
            return *found;
    return values.value(key);
}

// Replaces the escapes that a value may hold.
QString unescaped(const QString &text) {
    QString value;
    for (qsizetype i = 0; i < text.size(); i++) {
        const QChar c = text[i] == u'\\' && i + 1 < text.size() ? text[i + 1] : QChar();
        const qsizetype meaning = c.isNull() ? -1 : QStringView(u"sntr\\").indexOf(c);
        value += meaning < 0 ? text[i] : QStringView(u" \n\t\r\\")[meaning];
        i += meaning < 0 ? 0 : 1;
    }
    return value;
}

// Returns TEXT without the blanks and tabs around it and the line end behind it.
QByteArray bare(QByteArray text) {
    const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.isEmpty() && (is_blank(text.back()) || text.back() == '\r' || text.back() == '\n'))
        text.chop(1);
    while (!text.isEmpty() && is_blank(text.front()))
        text.remove(0, 1);
    return text;
}

// The values of the file's main group, read as they are where an application is started: the first of a key
// counts, and a group's name or a note stands at the head of its line.
QHash<QString, QString> entry_group(const QString &path) {
    QHash<QString, QString> values;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return values;
    bool inside = false;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (line.startsWith('['))
            inside = bare(line) == "[Desktop Entry]";
        const qsizetype equals = line.indexOf('=');
        const QString key = QString::fromUtf8(bare(line.left(equals)));
        if (inside && equals > 0 && !line.startsWith('#') && !values.contains(key))
            values.insert(key, unescaped(QString::fromUtf8(bare(line.mid(equals + 1)))));
    }
    return values;
}

bool shown_on_this_desktop(const QHash<QString, QString> &values) {
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    const auto names_this = [&](const QString &key) {
        const QStringList named = values.value(key).split(u';', Qt::SkipEmptyParts);
        return std::any_of(named.begin(), named.end(),
                           [&](const QString &n) { return desktops.contains(n); });
    };
    if (values.contains(QStringLiteral("OnlyShowIn")) && !names_this(QStringLiteral("OnlyShowIn")))
        return false;
    return !names_this(QStringLiteral("NotShowIn"));
}

} // namespace

DesktopEntry read_desktop_entry(const QString &path) {
    const QHash<QString, QString> values = entry_group(path);
    const auto is_true = [&](const char *key) {
        return values.value(QString::fromLatin1(key)) == QLatin1String("true");
    };
    const QString needed = values.value(QStringLiteral("TryExec"));
    if (values.value(QStringLiteral("Type")) != QLatin1String("Application") || is_true("NoDisplay") ||
        is_true("Hidden") || values.value(QStringLiteral("Exec")).isEmpty() ||
        !shown_on_this_desktop(values) ||
        (!needed.isEmpty() && QStandardPaths::findExecutable(needed).isEmpty()))
        return {};
    return {localised(values, QStringLiteral("Name")), localised(values, QStringLiteral("Comment")),
            values.value(QStringLiteral("Icon")), path};
}

QList<DesktopEntry> installed_applications() {
    QList<DesktopEntry> entries;
    QSet<QString> seen;
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
        QDirIterator files(folder, {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            const QString id = path.mid(folder.size() + 1).replace(u'/', u'-');
            if (seen.contains(id))
                continue;
            seen.insert(id);
            const DesktopEntry entry = read_desktop_entry(path);
            if (!entry.path.isEmpty())
                entries.append(entry);
        }
    }
    std::sort(entries.begin(), entries.end(), [](const DesktopEntry &a, const DesktopEntry &b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return entries;
}

} // namespace widgets
