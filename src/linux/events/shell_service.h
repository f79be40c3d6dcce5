// The service org.quillon.Shell on the bus, through which other programs use the shell.
#ifndef QUILLON_LINUX_EVENTS_SHELL_SERVICE_H
#define QUILLON_LINUX_EVENTS_SHELL_SERVICE_H

#include <systemd/sd-bus.h>

#include "toolbox/console_feed.h"

namespace quillon {

// Offers the service's interfaces, and takes its WELL_KNOWN name unless that is 0: 1, or 0 when another shell
// has the name.
int offer_shell_service(sd_bus *bus, int well_known);
// Has the console's text sent to the client with the unique bus name NAME: 1, or 0 when it follows already.
int follow_console(const char *name);
// Ends that; the client may have left the bus.
void leave_console(const char *name);

} // namespace quillon

#endif
