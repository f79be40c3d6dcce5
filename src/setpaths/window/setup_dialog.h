// The window of the set-up. It shows the distribution, the programs for documents and the search paths.
#ifndef QUILLON_SETPATHS_WINDOW_SETUP_DIALOG_H
#define QUILLON_SETPATHS_WINDOW_SETUP_DIALOG_H

#include <QDialog>
#include <memory>
#include <vector>

#include "common/offered_applications.h"
#include "setpaths/window/reverse_page.h"
#include "setpaths/window/setup_window.h"

class QCheckBox;
class QComboBox;

namespace Ui {
class SetUp;
}

namespace setpaths {

class SetupDialog : public QDialog {
  public:
    // HOST must outlive the window.
    explicit SetupDialog(const SetupWindowHost &host);
    ~SetupDialog() override;

    // False when the last attempt to save failed.
    bool written() const { return written_; }
    // Saves and closes; when something cannot be written, the window says so and stays.
    void accept() override;

  protected:
    void changeEvent(QEvent *event) override;

  private:
    struct Program {
        const char *key;
        QComboBox *box;
        QString before, chosen; // POSIX paths
    };
    struct Flag {
        const char *key;
        QCheckBox *box;
        bool before;
    };
    struct Path {
        const char *key, *help;
        QString before;
    };

    // Return a setting's value: that of the preferences, else the proposed one; and the proposed one alone.
    std::string value_of(const char *key) const;
    std::string proposed(const char *key) const;
    QString list_text(const std::string &value) const;
    std::string list_value(const QString &text) const;
    void add_program(const char *key, QComboBox *box);
    void choose_program(std::size_t number);
    void show_program(Program &program);
    void fill_paths();
    void explain_path(int row);
    bool check_path(int row, const QString &text);
    void show_page();
    void show_findings();
    void take_paths();
    void choose_distribution();
    void show_distribution();
    void write_databases();
    Values changes() const;
    void say(const QString &text);

    const SetupWindowHost &host_;
    std::unique_ptr<Ui::SetUp> ui_;
    ReversePage reverse_;
    Proposal proposal_;
    bool other_distribution_ = false;
    bool written_ = true;
    std::vector<common::DesktopEntry> installed_;
    std::vector<Finding> found_;
    std::vector<Program> programs_;
    std::vector<Flag> flags_;
    std::vector<Path> paths_;
};

} // namespace setpaths

#endif
