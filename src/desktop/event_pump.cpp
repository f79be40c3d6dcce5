#include "desktop/event_pump.h"

#include <QApplication>
#include <QBasicTimer>
#include <QDialog>
#include <QObject>
#include <QSocketNotifier>
#include <QTimerEvent>

#include "linux/events/ae_data.h"
#include "linux/events/ae_receive.h"
#include "linux/events/loop.h"

namespace quillon::desktop {

namespace {

bool something_happened = false;
void (*before_wait)() = nullptr;

// Closes the modal windows, since the shell's loop goes on only when they have gone.
void close_modal_windows() {
    for (int depth = 0; depth < 8; ++depth) {
        auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        dialog->reject();
    }
}

class Waker : public QObject {
  public:
    Waker() : notifier_(LoopDescriptor(), QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, this, [] {
            something_happened = LoopDispatch() != 0 || something_happened;
            if (LeaveRequested())
                close_modal_windows();
        });
    }

    void start(int milliseconds) {
        expired_ = false;
        if (milliseconds > 0)
            timer_.start(milliseconds, Qt::CoarseTimer, this);
    }
    void stop() { timer_.stop(); }
    bool expired() const { return expired_; }

  protected:
    void timerEvent(QTimerEvent *) override {
        expired_ = true;
        timer_.stop();
    }

  private:
    QSocketNotifier notifier_;
    QBasicTimer timer_;
    bool expired_ = false;
};

} // namespace

void set_before_wait(void (*procedure)()) {
    before_wait = procedure;
}

void pump_events(int milliseconds) {
    // The object is never freed, since the shell ends by exit().
    static Waker *const waker = new Waker;
    if (before_wait)
        before_wait();
    // This also readies the descriptor that the notifier watches.
    something_happened = LoopDispatch() != 0;
    QCoreApplication::processEvents();
    if (milliseconds == 0 || something_happened)
        return;
    waker->start(milliseconds);
    while (!something_happened && !waker->expired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    waker->stop();
}

std::uint16_t event_modifiers(Qt::KeyboardModifiers modifiers) {
    unsigned result = 0;
    if (modifiers & Qt::ControlModifier)
        result |= cmdKey;
    if (modifiers & Qt::ShiftModifier)
        result |= shiftKey;
    if (modifiers & Qt::AltModifier)
        result |= optionKey;
    return static_cast<std::uint16_t>(result);
}

void post_event(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where) {
    PostEvent(what, message, modifiers, where);
    something_happened = true;
}

void post_number_event(OSType event_class, OSType id, std::int32_t number) {
    AppleEvent event;
    ae_make_record(&event, event_class, id);
    AEPutParamPtr(&event, keyDirectObject, typeLongInteger, &number, sizeof number);
    queue_received_event(event, nullptr, [](sd_bus_message *, OSErr, const AppleEvent *) {});
    something_happened = true;
}

void post_leave() {
    RequestLeave();
    something_happened = true;
    close_modal_windows();
}

} // namespace quillon::desktop
