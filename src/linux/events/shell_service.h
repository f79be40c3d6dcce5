// org.quillon.Shell on the bus: the shell as other programs call it.
#ifndef QUILLON_LINUX_EVENTS_SHELL_SERVICE_H
#define QUILLON_LINUX_EVENTS_SHELL_SERVICE_H

#include <systemd/sd-bus.h>

#include "toolbox/console_feed.h"

namespace quillon {

// Takes the name org.quillon.Shell and offers its interfaces: 0 when another shell has it.
int offer_shell_service(sd_bus *bus);

} // namespace quillon

#endif
