// The tests of the desktop front run off screen: a display would only make them depend on its fonts and size.
#include <QApplication>
#include <cstdlib>
#include <gtest/gtest.h>

#include "desktop/console_access.h"

int main(int argc, char **argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication application(argc, argv);
    quillon::desktop::offer_console_access();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
