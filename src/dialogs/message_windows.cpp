#include "dialogs/message_windows.h"

#include <cstdlib>

#include "dialogs/dialog.h"

namespace quillon {

void aboutApp() {
    run_message("about box");
}

void DoQuit() {
    run_message("Quit");
    std::exit(0);
}

int ConfirmDelete() {
    return run_message("ConfirmDelete");
}

void longName() {
    run_message("LongName");
}

} // namespace quillon
