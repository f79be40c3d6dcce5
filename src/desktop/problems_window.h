// The window that lists the problems of the last run.
#ifndef QUILLON_DESKTOP_PROBLEMS_WINDOW_H
#define QUILLON_DESKTOP_PROBLEMS_WINDOW_H

#include <QDialog>

class QCheckBox;
class QLabel;
class QTreeView;

namespace quillon::desktop {

class ProblemModel;

class ProblemsWindow : public QDialog {
  public:
    ProblemsWindow();

    // Shows the window, or brings it forward.
    void open();
    // Reads the shell's list anew.
    void read();
    // Selects the row of a problem that was gone to.
    void select(int problem);

    QTreeView *list() { return list_; }

  protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void lay_out();
    void add_keys();
    void filter();
    void show_counts();
    void go_to_current();
    void fit_columns();

    ProblemModel *const model_;
    QTreeView *const list_;
    QCheckBox *kinds_[4];
    QLabel *const summary_;
    QLabel *const nothing_;
};

// Shows the window of problems, which is made at the first call.
void show_problems();
// Tells it and the main window that there are the problems of another run, and which one was gone to.
void problems_changed();
void problem_opened(int problem);

} // namespace quillon::desktop

#endif
