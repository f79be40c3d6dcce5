// How applications are shown where a person chooses one.
#ifndef QUILLON_WIDGETS_APPLICATIONS_H
#define QUILLON_WIDGETS_APPLICATIONS_H

#include <QIcon>
#include <QString>

#include "common/offered_applications.h"

namespace widgets {

// The edge of an application's icon in a list, in pixels.
constexpr int application_icon_size = 24;

// The icon of that name (of the theme, or an absolute path), else a common one: every row has an icon, all of
// one size, so that the names stand in one column.
QIcon application_icon(const std::string &name);
// Says which packages have an application for the use; empty for any.
QString what_to_install(common::Use use);

} // namespace widgets

#endif
