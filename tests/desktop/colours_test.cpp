#include "widgets/colours.h"

#include <QApplication>
#include <QPalette>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>

namespace quillon::desktop {

namespace {

QPalette palette_of(const QColor &text, const QColor &base) {
    QPalette palette;
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 128)); // what some desktops leave it
    return palette;
}

// How far the quiet colour, as it is painted on the field, is from the field: 0 (unreadable) to 255.
int distance() {
    const QPalette palette = QApplication::palette();
    const QColor quiet = palette.color(QPalette::PlaceholderText), base = palette.color(QPalette::Base);
    const float shown = base.redF() + (quiet.redF() - base.redF()) * quiet.alphaF();
    return static_cast<int>(255 * std::abs(shown - base.redF()));
}

} // namespace

TEST(Colours, QuietTextsCanBeReadInDarkWindowsAndLightOnes) {
    const QPalette before = QApplication::palette();
    QApplication::setPalette(palette_of(Qt::white, QColor(27, 30, 32)));
    EXPECT_LT(distance(), 30);
    widgets::keep_quiet_texts_readable();
    EXPECT_GT(distance(), 110);
    QApplication::setPalette(palette_of(Qt::black, Qt::white));
    EXPECT_TRUE(QTest::qWaitFor([] {
        return QApplication::palette().color(QPalette::PlaceholderText).red() == 0 && distance() > 110;
    }));
    QApplication::setPalette(palette_of(Qt::white, QColor(27, 30, 32)));
    EXPECT_TRUE(QTest::qWaitFor([] { return distance() > 110; }));
    QApplication::setPalette(before);
}

} // namespace quillon::desktop
