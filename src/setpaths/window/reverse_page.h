// The page of the set-up's window for viewers that keep the command for their reverse search in settings of
// their own.
#ifndef QUILLON_SETPATHS_WINDOW_REVERSE_PAGE_H
#define QUILLON_SETPATHS_WINDOW_REVERSE_PAGE_H

#include <QString>
#include <functional>
#include <vector>

#include "setpaths/window/setup_window.h"

namespace Ui {
class SetUp;
}

namespace setpaths {

class ReversePage {
  public:
    // HOST and UI must outlive the page. SAY shows a sentence to the person.
    ReversePage(const SetupWindowHost &host, Ui::SetUp &ui, std::function<void(const QString &)> say);

    // Looks again at what the files hold and which viewers run.
    void look();

  private:
    void show();
    void write();

    const SetupWindowHost &host_;
    Ui::SetUp &ui_;
    std::function<void(const QString &)> say_;
    std::vector<ReverseSearch> found_;
};

} // namespace setpaths

#endif
