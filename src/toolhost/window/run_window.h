// The window of one run. It shows what the program prints and how far it is, and has a line to answer it and
// a Cancel button.
#ifndef QUILLON_TOOLHOST_WINDOW_RUN_WINDOW_H
#define QUILLON_TOOLHOST_WINDOW_RUN_WINDOW_H

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStringDecoder>
#include <QWidget>

#include "toolhost/window/tool_window.h"

namespace toolhost {

class RunWindow : public QWidget {
  public:
    // HOST must outlive the window.
    explicit RunWindow(const ToolWindowHost &host);

    // Shows what is new since the last call. False when the run has ended.
    bool refresh();

    // True while the program waits for an answer.
    bool is_asked() const { return waiting_; }

  protected:
    void closeEvent(QCloseEvent *event) override;

  private:
    QWidget *make_head();
    QWidget *make_answers();
    QPushButton *make_file_button(QWidget *parent);
    void choose_file();
    void fit_to_question();
    void add_answer(QWidget *row, const QString &title, const QString &hint, const char *line);
    void send(const QByteArray &line);
    void cancel();
    void show_text();
    void keep_end();
    void add_lines(const QString &text);
    void ask_for_focus();
    void show_state(const ToolWindowState &state);

    const ToolWindowHost &host_;
    QLabel *pages_;
    QLabel *time_;
    QLabel *says_;
    QPlainTextEdit *text_;
    QWidget *answers_;
    QLineEdit *answer_;
    QPushButton *cancel_;
    QPushButton *file_ = nullptr;
    QWidget *tex_answers_ = nullptr; // the buttons for TeX's answers; null for other programs
    QStringDecoder decoder_{QStringDecoder::Utf8};
    bool after_return_ = false;
    bool waiting_ = false;
    bool at_end_ = true;      // until the person scrolls up
    int focus_tries_ = 0;     // how often the window will still ask for the keyboard
    qsizetype line_size_ = 0; // characters in the last line shown
};

} // namespace toolhost

#endif
