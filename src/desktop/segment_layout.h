// One segment of the console's text laid out in rows: bytes decoded for show, wrapped at the view's edge.
#ifndef QUILLON_DESKTOP_SEGMENT_LAYOUT_H
#define QUILLON_DESKTOP_SEGMENT_LAYOUT_H

#include <QFont>
#include <QString>
#include <QTextLayout>
#include <memory>
#include <vector>

class QPainter;

namespace quillon::desktop {

// What the layout of a segment depends on.
struct TextMetrics {
    QFont font;
    qreal row_height = 1, ascent = 0, cell = 1;
    bool fixed_pitch = true;
    qreal width = 1; // of a row
    int columns = 1; // that fit a row

    void set_font(const QFont &new_font);
    void set_width(qreal new_width);
};

// Bytes as they are shown: UTF-8, what is not UTF-8 as the replacement character, control bytes as visible
// marks, SPACE_SUBSTITUTE as a no-break space. ASCII says that every byte is a plain one-cell character.
QString shown_text(const char *bytes, std::size_t size, int space_substitute, bool *ascii = nullptr);

class SegmentLayout {
  public:
    SegmentLayout(const char *bytes, std::size_t size, const TextMetrics &metrics, int space_substitute);

    int rows() const { return static_cast<int>(starts_.size()); }
    QString row_text(int row) const;
    const QString &text() const { return text_; }
    // The row that character INDEX stands in, and where in it.
    int row_of(qsizetype index) const;
    qreal x_of(qsizetype index) const;
    qsizetype index_at(int row, qreal x) const;
    qreal end_x() const { return x_of(text_.size()); }
    // Draws one row with its top left corner at AT.
    void draw(QPainter &painter, int row, QPointF at) const;

  private:
    void wrap_cells();
    void wrap_clusters();

    QString text_;
    const TextMetrics &metrics_;
    std::vector<qsizetype> starts_;       // of the rows, in characters
    std::unique_ptr<QTextLayout> layout_; // null where every character takes one cell
};

} // namespace quillon::desktop

#endif
