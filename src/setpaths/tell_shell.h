// Tells the shell that runs what the set-up has changed.
#ifndef QUILLON_SETPATHS_TELL_SHELL_H
#define QUILLON_SETPATHS_TELL_SHELL_H

namespace setpaths {

// Has the shell read its settings and databases again. Does nothing where none runs, and starts none.
void tell_shell();

} // namespace setpaths

#endif
