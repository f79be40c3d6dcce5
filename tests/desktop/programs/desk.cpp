// What the tests of the desktop need of another application: "desk clipboard" prints the clipboard's text,
// "desk window TITLE" shows a window that writes down the text typed into it, a line a key, on standard
// output; "desk asking TITLE" does so too, and asks for the keyboard as soon as it is on the screen.
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTimer>
#include <cstdio>
#include <cstring>

// A line that asks for the keyboard once, after it was painted.
class Line : public QLineEdit {
  public:
    bool asks = false;

  protected:
    void paintEvent(QPaintEvent *event) override {
        QLineEdit::paintEvent(event);
        if (asks)
            QTimer::singleShot(0, this, [this] { activateWindow(); });
        asks = false;
    }
};

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "clipboard") == 0) {
        const QByteArray text = QApplication::clipboard()->text().toUtf8();
        std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
        return 0;
    }
    const bool asks = argc == 3 && std::strcmp(argv[1], "asking") == 0;
    if (!asks && (argc != 3 || std::strcmp(argv[1], "window") != 0))
        return 2;
    Line line;
    line.asks = asks;
    line.setWindowTitle(QString::fromLocal8Bit(argv[2]));
    QObject::connect(&line, &QLineEdit::textChanged, [](const QString &text) {
        std::puts(text.toUtf8().constData());
        std::fflush(stdout);
    });
    line.show();
    return QApplication::exec();
}
