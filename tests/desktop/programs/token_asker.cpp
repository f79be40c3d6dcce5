// "token-asker PLUG-IN" shows a window and asks the plug-in for a token at each line that it reads. It prints
// a line for each: the token, or "none", and the milliseconds that it took. The toolkit serves nothing
// meanwhile.
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QRasterWindow>
#include <cstdio>
#include <dlfcn.h>

#include "desktop/wayland/tokens.h"

int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    QRasterWindow window;
    window.show();
    while (!window.isExposed())
        QGuiApplication::processEvents(QEventLoop::WaitForMoreEvents);
    void *const library = argc == 2 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    const auto ask = reinterpret_cast<quillon::desktop::TokenProc>(
        library ? dlsym(library, quillon::desktop::token_symbol) : nullptr);
    if (!ask)
        return 2;
    while (std::getchar() != EOF) {
        char token[128];
        QElapsedTimer time;
        time.start();
        const int given = ask(&window, "org.example.Viewer", 100, token, sizeof token);
        std::printf("%s %lld\n", given ? token : "none", static_cast<long long>(time.elapsed()));
        std::fflush(stdout);
    }
    return 0;
}
