// The console on screen: a scrolling text view over the text store that lays out only what is seen.
//
// The view stays at the end of the text until the person scrolls up, and again once they scroll back down.
// Text wraps at the view's edge. Nothing is selected with the mouse: a click becomes an event for the shell.
#ifndef QUILLON_DESKTOP_CONSOLE_VIEW_H
#define QUILLON_DESKTOP_CONSOLE_VIEW_H

#include <QAbstractScrollArea>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "desktop/segment_layout.h"
#include "front/text_store.h"

namespace quillon::desktop {

class ConsoleView : public QAbstractScrollArea {
  public:
    // A row of the text.
    struct Place {
        std::size_t segment = 0;
        int row = 0;
        auto operator<=>(const Place &) const = default;
    };

    explicit ConsoleView(QWidget *parent = nullptr);
    ~ConsoleView() override;

    // STORE is not owned; null detaches.
    void attach(TextStore *store);
    const TextStore *store() const { return store_; }
    void set_text_font(const QFont &font);
    void set_margin(int margin);
    // The text has grown; shown with the next paint.
    void appended() {
        if (!stale_)
            mark_stale();
    }
    // Paints now when the text has changed and the last paint is a display's frame ago (FORCE: whenever).
    void refresh(bool force);
    void show_caret(bool shown);
    void blink_caret();
    // 0: commands are held back, so Ctrl+C is the view's own.
    void set_commands_admitted(bool admitted) { commands_admitted_ = admitted; }
    void copy_all() const;

    bool at_end() const { return at_end_; }
    Place top() const { return top_; }
    int visible_rows() const;
    void scroll_rows(int rows);
    void scroll_to_start();
    void scroll_to_end();
    // Scrolls only when no part of the segment is seen.
    void show_segment(std::size_t segment);
    // Text of the visible row INDEX from the top; null past the end.
    QString row_text(int index);
    const SegmentLayout &layout_of(std::size_t segment);
    // Where the first row of SEGMENT stands, in the view's coordinates.
    int y_of(std::size_t segment);
    int margin() const { return margin_; }
    const TextMetrics &metrics() const { return metrics_; }
    // Brings the scroll position in line with the text.
    void settle();

  protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void mousePressEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool) override { return false; }

  private:
    void mark_stale();
    void drop_layouts();
    Place moved(Place place, int rows);
    Place end_top();
    int bar_value(Place place);
    Place place_of(int value);
    void go_to(Place place);
    void update_bar(Place end);
    QRect caret_rect();
    bool scroll_by_key(const QKeyEvent *event);

    TextStore *store_ = nullptr;
    TextMetrics metrics_;
    std::unordered_map<std::size_t, std::pair<std::size_t, std::unique_ptr<SegmentLayout>>> layouts_;
    std::size_t laid_out_bytes_ = 0, generation_ = 0;
    Place top_;
    int margin_ = 5, wheel_rest_ = 0;
    bool at_end_ = true, stale_ = false, settling_ = false, commands_admitted_ = true;
    bool caret_shown_ = false, caret_on_ = false, keyboard_focus_ = false;
    std::int64_t painted_at_ = 0, blinked_at_ = 0;
};

} // namespace quillon::desktop

#endif
