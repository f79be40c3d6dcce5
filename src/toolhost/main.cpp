// The program inside every <tool>.app.
#include <cstdio>
#include <cstring>

#include "common/bundle.h"
#include "toolhost/guard.h"
#include "toolhost/host.h"

int main(int argc, char **argv) {
    common::Bundle bundle;
    if (!common::find_bundle(argv[0], bundle)) {
        std::fprintf(stderr, "%s: this program is started as <tool>.app/Contents/Linux/<tool>\n", argv[0]);
        return 1;
    }
    toolhost::keep_arguments(argc, argv);
    toolhost::Host host(bundle);
    const int result = host.connect();
    if (result < 0) {
        std::fprintf(stderr, "%s: no session bus: %s\n", bundle.tool.c_str(), std::strerror(-result));
        return 1;
    }
    return host.loop();
}
