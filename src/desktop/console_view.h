// The console on screen: a scrolling text view over the text store that lays out only what is seen.
//
// The view stays at the end of the text unless the person has scrolled up. Text wraps at the view's edge. A
// click becomes an event for the shell. Where the shell allows it, mouse and keyboard also select text; that
// selection is the view's own, and the place where text is inserted stays at the end.
#ifndef QUILLON_DESKTOP_CONSOLE_VIEW_H
#define QUILLON_DESKTOP_CONSOLE_VIEW_H

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

#include "desktop/console_selection.h"
#include "desktop/segment_layout.h"
#include "front/text_store.h"

namespace quillon::desktop {

class ConsoleSearch;

// The font WANTED when all its characters are equally wide, else the first installed family of which that
// holds; WANTED where there is none.
QFont fixed_width_font(const QFont &wanted);

class ConsoleView : public QAbstractScrollArea {
  public:
    // A row of the text, by the number of its segment and its number in that.
    struct Place {
        std::size_t segment = 0;
        int row = 0;
        auto operator<=>(const Place &) const = default;
    };

    // Makes a view without text; PARENT, where there is one, owns it.
    explicit ConsoleView(QWidget *parent = nullptr);
    ~ConsoleView() override;

    // Shows the text of STORE, which the caller owns and which must last until the next attach (null: none).
    void attach(TextStore *store);
    // The store that is shown; null for none.
    const TextStore *store() const { return store_; }
    // Sets the font of the text.
    void set_text_font(const QFont &font);
    // Makes the text STEPS points larger (smaller when negative) than it is, or gives it the size of the font
    // that was set (0).
    void zoom(int steps);
    // Sets the distance of the text from the edges, in pixels.
    void set_margin(int margin);
    // Says that the text has grown, which the next paint shows.
    void appended() {
        if (!stale_)
            mark_stale();
    }
    // Paints at once when the text has changed and the last paint is a frame of the display ago. FORCE paints
    // in any case.
    void refresh(bool force);
    // Shows or hides the caret at the end of the text.
    void show_caret(bool shown);
    // Turns the caret on or off when half its period has passed; to be called often.
    void blink_caret();
    // Says whether commands can be chosen. While they cannot, the view itself copies the text on Ctrl+C.
    void set_commands_admitted(bool admitted) { commands_admitted_ = admitted; }
    bool commands_admitted() const { return commands_admitted_; }
    // Puts the text that the person selected on the clipboard, or the whole text when nothing is selected;
    // with line feeds, and blanks for the shell's substitute of a blank.
    void copy_all() const;

    // Lets the person select text, or takes the selection away and ignores what would select (as at first).
    void set_select_text(bool on);
    bool select_text() const { return select_text_; }
    // The bytes that are marked; START and END are equal when there are none. select marks a range whether
    // the person may select or not, and scrolls to it.
    ByteRange selection() const { return store_ ? selection_.range(*store_) : ByteRange{}; }
    void select(ByteRange range);
    void select_all();
    void clear_selection();
    // The text of a range as it goes to the clipboard.
    QString text_of(ByteRange range) const;
    // The offset of the first byte that is seen.
    std::size_t top_offset();
    // Tints the hits of SEARCH, which must last longer than the view shows them (null: none).
    void show_hits(const ConsoleSearch *search);
    // Has PROCEDURE called whenever the view has taken up a change of the text or of the selection.
    void on_change(std::function<void()> procedure) { changed_ = std::move(procedure); }
    // What stands in the place of the text while there is none.
    static QString hint();

    // True while the view stays at the end of the text; the first visible row; the number of rows that fit.
    bool at_end() const { return at_end_; }
    Place top() const { return top_; }
    int visible_rows() const;
    // Scroll down by ROWS (up when negative), to the start or to the end; the text's ends are the limits.
    void scroll_rows(int rows);
    void scroll_to_start();
    void scroll_to_end();
    // Scrolls so that SEGMENT is at the top, unless its first row can be seen already.
    void show_segment(std::size_t segment);
    // The text of the visible row number INDEX (from 0); null past the end of the text.
    QString row_text(int index);
    // The layout of a segment of the store; it belongs to the view and holds until the text, the font or the
    // width changes.
    const SegmentLayout &layout_of(std::size_t segment);
    // The distance of the first row of SEGMENT from the view's upper edge; -1 for a segment above the first
    // that is seen, and at least the view's height for one below.
    int y_of(std::size_t segment);
    // The margin in pixels, and the measures of the text.
    int margin() const { return margin_; }
    const TextMetrics &metrics() const { return metrics_; }
    // Brings the scroll position and the scroll bar in line with the text after a change.
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
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
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
    void lay_out_anew();
    bool scroll_by_key(const QKeyEvent *event);

    Place place_at(std::size_t offset);
    qsizetype index_at(std::size_t segment, std::size_t offset) const;
    std::size_t offset_in(Place place, qsizetype index) const;
    std::size_t offset_in_row(Place place, qreal x, bool nearest);
    std::size_t offset_at_point(QPoint point, bool nearest);
    void show_offset(std::size_t offset, int rows_above, int rows_below);
    void selection_changed();
    void draw_rows(QPainter &painter);
    void draw_row(QPainter &painter, Place place, QPointF at, const std::vector<ByteRange> &hits);
    void draw_hint(QPainter &painter);
    std::vector<ByteRange> visible_hits();
    QRectF range_rect(Place place, QPointF at, ByteRange range);
    void press(const QMouseEvent *event, SelectionUnit unit);
    void drag_to(QPoint point);
    bool select_by_key(const QKeyEvent *event);
    std::size_t keyboard_start();
    std::size_t moved_by_key(const QKeyEvent *event, std::size_t from);
    std::size_t moved_by_rows(std::size_t from, int rows);

    TextStore *store_ = nullptr;
    TextMetrics metrics_;
    std::unordered_map<std::size_t, std::pair<std::size_t, std::unique_ptr<SegmentLayout>>> layouts_;
    std::size_t laid_out_bytes_ = 0, generation_ = 0;
    Place top_;
    int margin_ = 5, wheel_rest_ = 0;
    bool at_end_ = true, stale_ = false, settling_ = false, commands_admitted_ = true;
    bool caret_shown_ = false, caret_on_ = false, keyboard_focus_ = false;
    std::int64_t painted_at_ = 0, blinked_at_ = 0;
    ConsoleSelection selection_;
    SelectionUnit unit_ = SelectionUnit::character; // what the mouse selects by
    bool select_text_ = false, dragging_ = false, was_empty_ = true;
    bool at_row_end_ = false; // the selection's moving end stands at the end of a row, not before the next
    qreal goal_x_ = -1;       // where keys that move by rows began; negative for nowhere
    QPoint pressed_at_, drag_at_;
    std::uint64_t double_clicked_at_ = 0;
    QBasicTimer drag_timer_;
    const ConsoleSearch *hits_shown_ = nullptr;
    std::function<void()> changed_;
    QFont set_font_; // as the shell set it; the person may have made the text larger or smaller since
};

} // namespace quillon::desktop

#endif
