// The system library's process functions, looked up by name at run time.
#ifndef QUILLON_TOOLBOX_PIPES_H
#define QUILLON_TOOLBOX_PIPES_H

namespace quillon {

// 1 when the system's framework is there.
int SystemFrameworkLoad();
// Null when there is no such function. The commands that "popen" runs find those of Contents/Helpers first.
void *SystemFunction(const char *name);

} // namespace quillon

#endif
