#include "dialogs/message_windows.h"

#include <cstdlib>

#include "front/front.h"

namespace quillon {

void aboutApp() {
    front->message_window("about box");
}

void DoQuit() {
    front->message_window("Quit");
    std::exit(0);
}

int ConfirmDelete() {
    return front->message_window("ConfirmDelete");
}

void longName() {
    front->message_window("LongName");
}

} // namespace quillon
