// Activation tokens for the programs that the shell starts or raises.
#ifndef QUILLON_DESKTOP_ACTIVATION_H
#define QUILLON_DESKTOP_ACTIVATION_H

#include "toolbox/bounded.h"

namespace quillon::desktop {

// Asks the desktop for a fresh token (front/front.h, activation_token).
int activation_token(const char *app_id, BoundedBuffer &token);

} // namespace quillon::desktop

#endif
