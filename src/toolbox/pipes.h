// The functions of the system library for pipes and processes, looked up by name at run time.
#ifndef QUILLON_TOOLBOX_PIPES_H
#define QUILLON_TOOLBOX_PIPES_H

namespace quillon {

// Loads the system library at the first call: 1 when it is loaded, else 0.
int SystemFrameworkLoad();
// The function of the system library with that name, to be cast to its type; null when there is none. The
// "popen" given here lets its commands find the programs of the bundle's Contents/Helpers first.
void *SystemFunction(const char *name);

} // namespace quillon

#endif
