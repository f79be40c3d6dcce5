// What the tests of the console's view share.
#ifndef QUILLON_TESTS_DESKTOP_CONSOLE_WINDOW_H
#define QUILLON_TESTS_DESKTOP_CONSOLE_WINDOW_H

#include <QApplication>

#include "desktop/console_view.h"

namespace quillon::desktop {

// Sizes the view so that its text has that many columns and rows.
inline void size_text(ConsoleView &view, int columns, int rows) {
    const TextMetrics &metrics = view.metrics();
    const int extra_width = view.width() - view.viewport()->width() + 2 * view.margin();
    const int extra_height = view.height() - view.viewport()->height() + 2 * view.margin();
    view.resize(extra_width + static_cast<int>(columns * metrics.cell + metrics.cell / 2),
                extra_height + static_cast<int>(rows * metrics.row_height + metrics.row_height / 2));
    QApplication::processEvents();
}

} // namespace quillon::desktop

#endif
