#include "widgets/applications.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QStyle>

namespace widgets {

QIcon application_icon(const std::string &name) {
    const QString known = QFile::decodeName(name.c_str());
    const QIcon plain = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    const QIcon generic = QIcon::fromTheme(QStringLiteral("application-x-executable"), plain);
    QIcon icon = known.startsWith(u'/') && QFile::exists(known) ? QIcon(known) : QIcon::fromTheme(known);
    if (icon.availableSizes().isEmpty())
        icon = generic;
    // An image that is smaller than the others is enlarged.
    const QSize size(application_icon_size, application_icon_size);
    const QPixmap image = icon.pixmap(size);
    return image.size() == size * image.devicePixelRatio() || image.isNull()
               ? icon
               : QIcon(image.scaled(size * image.devicePixelRatio(), Qt::KeepAspectRatio,
                                    Qt::SmoothTransformation));
}

QString what_to_install(common::Use use) {
    const char *text = "";
    switch (use) {
    case common::Use::editor:
        text = QT_TRANSLATE_NOOP("widgets",
                                 "No text editor was found. The package geany, kate or gedit has one.");
        break;
    case common::Use::pdf_viewer:
        text = QT_TRANSLATE_NOOP("widgets",
                                 "No PDF viewer was found. The package zathura, evince or okular has one.");
        break;
    case common::Use::postscript_viewer:
        text = QT_TRANSLATE_NOOP("widgets",
                                 "No PostScript viewer was found. The package gv, evince or okular has one.");
        break;
    case common::Use::dvi_viewer:
        text = QT_TRANSLATE_NOOP(
            "widgets", "No DVI viewer was found on the desktop; xdvi is used where it is installed.");
        break;
    case common::Use::any:
        break;
    }
    return QCoreApplication::translate("widgets", text);
}

} // namespace widgets
