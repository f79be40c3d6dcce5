// The front with windows: its procedures, and the one that the shell's program looks up in this library.
#include <QApplication>
#include <QFontDatabase>
#include <QScreen>
#include <QSessionManager>
#include <QTimer>

#include <algorithm>

#include "desktop/activation.h"
#include "desktop/attention.h"
#include "desktop/choosers.h"
#include "desktop/console_access.h"
#include "desktop/dialogs.h"
#include "desktop/event_pump.h"
#include "desktop/main_window.h"
#include "desktop/problems_window.h"
#include "front/front.h"
#include "linux/events/loop.h"
#include "widgets/colours.h"
#include "widgets/display.h"
#include "widgets/icon.h"

namespace quillon::desktop {

namespace {

constexpr int smallest_font = 4, largest_font = 144, icon_delay = 300;

// The shell only gives the window's reference back, so the address of this serves as one.
char window_identity;

WindowRef window_ref() {
    return reinterpret_cast<WindowRef>(&window_identity);
}

ConsoleView *console() {
    return main_window() ? main_window()->console() : nullptr;
}

int nothing_to_do() {
    return 0;
}

void nothing_to_wait_for() {}

void commands_admitted(int admitted) {
    if (!main_window())
        return;
    if (admitted)
        run_ends();
    else
        run_begins();
    main_window()->set_busy(admitted == 0);
    main_window()->menus().set_commands_admitted(admitted != 0);
    console()->set_commands_admitted(admitted != 0);
}

int is_front() {
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

WindowRef new_window(const Rect *bounds, const char *title) {
    MainWindow *const window = make_main_window(QString::fromUtf8(title ? title : "Quillon"));
    window->place_content(*bounds);
    return window_ref();
}

// Uses up the token that the desktop started the shell with, so that no program started from here is taken
// for the shell itself. The display comes by the token when the window asks to be raised.
void end_start() {
    if (!qEnvironmentVariableIsEmpty("XDG_ACTIVATION_TOKEN"))
        main_window()->activateWindow();
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
}

void show_window(WindowRef window, int show) {
    if (!window || !main_window())
        return;
    main_window()->setVisible(show != 0);
    if (show)
        end_start();
}

void select_window(WindowRef window) {
    if (!window || !main_window())
        return;
    main_window()->show();
    main_window()->raise();
    main_window()->activateWindow();
}

WindowRef front_window() {
    return main_window() && main_window()->isVisible() ? window_ref() : nullptr;
}

void window_bounds(WindowRef window, Rect *bounds) {
    *bounds = window && main_window() ? main_window()->content() : Rect{};
}

// The desktop moves and sizes the window by its title bar and its edges.
void drag_window(WindowRef, Point) {}
void grow_window(WindowRef, Point) {}

WindowPart find_window(const EventRecord *, WindowRef *window) {
    *window = front_window();
    return *window ? inContent : inDesk;
}

int screens(Rect *rects, int room) {
    QList<QScreen *> list = QGuiApplication::screens();
    list.removeOne(QGuiApplication::primaryScreen());
    list.prepend(QGuiApplication::primaryScreen());
    int count = 0;
    for (const QScreen *const screen : list) {
        if (!screen || count == room)
            continue;
        const QRect area = screen->geometry();
        rects[count++] = {static_cast<std::int16_t>(area.top()), static_cast<std::int16_t>(area.left()),
                          static_cast<std::int16_t>(area.top() + area.height()),
                          static_cast<std::int16_t>(area.left() + area.width())};
    }
    return count;
}

void set_cursor(CursorShape shape) {
    static CursorShape shown = arrowCursor;
    if (shape == shown || !main_window())
        return;
    shown = shape;
    const Qt::CursorShape cursor = shape == watchCursor   ? Qt::WaitCursor
                                   : shape == iBeamCursor ? Qt::IBeamCursor
                                                          : Qt::ArrowCursor;
    main_window()->setCursor(cursor);
    console()->viewport()->setCursor(cursor);
}

int navigate(const NavRequest *request, BoundedBuffer &posix_path) {
    return run_chooser(*request, main_window(), posix_path);
}

void text_attach(TextStore *store, WindowRef) {
    if (console())
        console()->attach(store);
}

int font_installed(const char *family) {
    return family && QFontDatabase::hasFamily(QString::fromUtf8(family));
}

void text_font(const char *family, int size) {
    if (!console())
        return;
    QFont font = fixed_width_font(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    if (font_installed(family))
        font = QFont(QString::fromUtf8(family));
    font.setPointSize(std::clamp(size, smallest_font, largest_font));
    console()->set_text_font(font);
}

void text_appended(const void *, std::size_t) {
    if (ConsoleView *const view = console())
        view->appended();
}

void text_update(int force) {
    if (ConsoleView *const view = console())
        view->refresh(force != 0);
}

void text_selection(int shown) {
    if (ConsoleView *const view = console())
        view->show_caret(shown != 0);
}

void text_focus(int focus, int) {
    // The bar that finds text keeps the keyboard while the person types into it.
    if (focus == 1 && console() && !console()->hasFocus() && !main_window()->finds())
        console()->setFocus();
}

void text_idle() {
    if (ConsoleView *const view = console())
        view->blink_caret();
}

// A click has no effect on the text; the toolkit serves the scroll bars itself.
void text_click(const EventRecord *) {}

void text_margin(int margin) {
    if (ConsoleView *const view = console())
        view->set_margin(margin);
}

void text_selectable(int on) {
    if (ConsoleView *const view = console())
        view->set_select_text(on != 0);
}

void find_text() {
    if (main_window())
        main_window()->find_bar()->open();
}

void copy_text() {
    if (ConsoleView *const view = console())
        view->copy_all();
}

// The installed families, those of a fixed width first.
QStringList ordered_families() {
    QStringList families = QFontDatabase::families();
    std::stable_partition(families.begin(), families.end(),
                          [](const QString &name) { return QFontDatabase::isFixedPitch(name); });
    return families;
}

int font_family(int index, BoundedBuffer &family) {
    static const QStringList families = ordered_families();
    if (index < 0 || index >= families.size())
        return 0;
    const QByteArray name = families[index].toUtf8();
    family.copy_cut({name.constData(), static_cast<std::size_t>(name.size())});
    return 1;
}

constexpr Front desktop_front = {
    .name = "desktop",
    .sleep = pump_events,
    .idle = nothing_to_do,
    .tool_wait = nothing_to_wait_for,
    .front_wait = nothing_to_wait_for,
    .commands_admitted = commands_admitted,
    .is_front = is_front,
    .bring_to_front = bring_to_front,
    .new_window = new_window,
    .show_window = show_window,
    .select_window = select_window,
    .front_window = front_window,
    .window_bounds = window_bounds,
    .drag_window = drag_window,
    .grow_window = grow_window,
    .find_window = find_window,
    .screens = screens,
    .set_cursor = set_cursor,
    .beep = QApplication::beep,
    .notify = notify,
    .new_dialog = new_dialog,
    .dispose_dialog = dispose_dialog,
    .run_dialog = run_dialog,
    .end_dialog = end_dialog,
    .show_sheet = show_sheet,
    .set_control_text = set_control_text,
    .control_text = control_text,
    .set_control_value = set_control_value,
    .control_value = control_value,
    .select_control = select_control,
    .add_list_row = add_list_row,
    .control_bounds = control_bounds,
    .navigate = navigate,
    .text_attach = text_attach,
    .text_font = text_font,
    .font_installed = font_installed,
    .text_appended = text_appended,
    .text_update = text_update,
    .text_selection = text_selection,
    .text_focus = text_focus,
    .text_idle = text_idle,
    .text_click = text_click,
    .text_margin = text_margin,
    .copy_text = copy_text,
    .font_family = font_family,
    .text_selectable = text_selectable,
    .find_text = find_text,
    .activation_token = activation_token,
    .show_problems = show_problems,
    .problems_changed = problems_changed,
    .problem_opened = problem_opened,
};

void sync_menus() {
    if (main_window())
        main_window()->menus().sync();
}

void make_application(int argc, char **argv) {
    static int count = argc;
    static char **const arguments = argv;
    // This makes the event loop, which must block the host's signals before the toolkit starts threads.
    LoopDescriptor();
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillon.Shell"));
    QCoreApplication::setApplicationName(QStringLiteral("org.quillon.Shell"));
    // The object is never freed, since the shell ends by exit().
    auto *const application = new QApplication(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    widgets::keep_quiet_texts_readable();
    QObject::connect(application, &QGuiApplication::commitDataRequest, application,
                     [](QSessionManager &) { post_leave(); });
    watch_activation();
    offer_console_access();
    set_before_wait(sync_menus);
    // The icon is set later, so that the first paint does not wait for it.
    QTimer::singleShot(icon_delay, application, [] { QApplication::setWindowIcon(widgets::shell_icon()); });
}

} // namespace

} // namespace quillon::desktop

// Starts the toolkit and gives the front's procedures; null when no display can be opened. ARGV must last as
// long as the process.
extern "C" __attribute__((visibility("default"))) const quillon::Front *quillon_desktop_front(int argc,
                                                                                              char **argv) {
    if (!widgets::display_opens())
        return nullptr;
    quillon::desktop::make_application(argc, argv);
    return &quillon::desktop::desktop_front;
}
