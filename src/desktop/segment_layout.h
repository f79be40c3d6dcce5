// Lays one segment of the console's text out in rows: decodes its bytes and wraps them at the view's edge.
#ifndef QUILLON_DESKTOP_SEGMENT_LAYOUT_H
#define QUILLON_DESKTOP_SEGMENT_LAYOUT_H

#include <QFont>
#include <QString>
#include <QTextLayout>
#include <memory>
#include <vector>

class QPainter;

namespace quillon::desktop {

// The measures that the layout of a segment depends on; lengths are in pixels.
struct TextMetrics {
    QFont font;
    qreal row_height = 1, ascent = 0, cell = 1;
    bool fixed_pitch = true;
    qreal width = 1; // of a row
    int columns = 1; // that fit a row

    // Set the font, and the width of a row; all other measures follow from these two.
    void set_font(const QFont &new_font);
    void set_width(qreal new_width);
};

// The characters that show SIZE bytes: UTF-8 is decoded, a byte that is not UTF-8 becomes the replacement
// character, a control byte a visible mark, and the byte SPACE_SUBSTITUTE a no-break space. ASCII (may be
// null) becomes true when every byte is a plain character of one cell.
QString shown_text(const char *bytes, std::size_t size, int space_substitute, bool *ascii = nullptr);

// The rows of a segment. An index is a place in text(), in UTF-16 characters; rows count from 0.
class SegmentLayout {
  public:
    // BYTES are not kept; METRICS must last longer than the layout.
    SegmentLayout(const char *bytes, std::size_t size, const TextMetrics &metrics, int space_substitute);

    // The number of rows, at least 1; the text of one row, and that of the whole segment.
    int rows() const { return static_cast<int>(starts_.size()); }
    QString row_text(int row) const;
    const QString &text() const { return text_; }
    // The row in which the character INDEX stands, and its distance from the row's left end in pixels.
    int row_of(qsizetype index) const;
    qreal x_of(qsizetype index) const;
    // The index of the character at distance X from the left end of the row; that of the row's end behind it.
    qsizetype index_at(int row, qreal x) const;
    // The distance of the text's end from the left end of the last row.
    qreal end_x() const { return x_of(text_.size()); }
    // Draws one row, which has its top left corner at AT.
    void draw(QPainter &painter, int row, QPointF at) const;

  private:
    void wrap_cells();
    void wrap_clusters();

    QString text_;
    const TextMetrics &metrics_;
    std::vector<qsizetype> starts_;       // the index of each row's first character
    std::unique_ptr<QTextLayout> layout_; // null when every character takes one cell
};

} // namespace quillon::desktop

#endif
