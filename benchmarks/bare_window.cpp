// What the shell's window is measured against: a bare window with as many menus and items, and a plain text
// widget.
//
//   bare_window                 shows the window until it is killed
//   bare_window --feed BYTES    feeds the widget BYTES of 60-byte lines in 64 KiB blocks, prints the bytes a
//   second
#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>

#include <cstdio>
#include <cstring>

static void make_menus(QMainWindow &window) {
    // The shell's: seven menus in the bar, nine below them, about eighty items.
    for (int menu = 0; menu < 7; ++menu) {
        QMenu *const shown = window.menuBar()->addMenu(QString("Menu %1").arg(menu));
        for (int item = 0; item < 12; ++item)
            shown->addAction(QString("Item %1").arg(item));
        if (menu < 3)
            for (int below = 0; below < 3; ++below)
                shown->addMenu(QString("Below %1").arg(below))->addAction("Item");
    }
}

static void feed(QPlainTextEdit &text, long bytes) {
    QByteArray block;
    const QByteArray line = QByteArray(59, 'x') + '\n';
    while (block.size() < 65536)
        block += line;
    const QString piece = QString::fromUtf8(block);
    QElapsedTimer timer;
    timer.start();
    long done = 0;
    while (done < bytes) {
        text.appendPlainText(piece);
        QApplication::processEvents();
        done += block.size();
    }
    std::printf("%.0f\n", static_cast<double>(done) * 1e9 / static_cast<double>(timer.nsecsElapsed()));
}

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    QPlainTextEdit text;
    make_menus(window);
    window.setCentralWidget(&text);
    window.resize(590, 255);
    window.show();
    if (argc > 2 && std::strcmp(argv[1], "--feed") == 0) {
        while (!window.isVisible())
            QApplication::processEvents();
        QApplication::processEvents();
        feed(text, std::atol(argv[2]));
        return 0;
    }
    return QApplication::exec();
}
