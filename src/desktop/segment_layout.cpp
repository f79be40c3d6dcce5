#include "desktop/segment_layout.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextOption>
#include <algorithm>
#include <cmath>

#include "common/utf8.h"

namespace quillon::desktop {

namespace {

constexpr char16_t replacement = 0xFFFD, no_break_space = 0x00A0, control_pictures = 0x2400,
                   delete_mark = 0x2421;
constexpr int tab_columns = 8;

// The length in bytes of the UTF-8 character at BYTES, whose code point goes into CODE; 0 if malformed.
std::size_t utf8_character(const unsigned char *bytes, std::size_t size, char32_t *code) {
    const std::size_t length = common::utf8_length({reinterpret_cast<const char *>(bytes), size}, 0);
    *code = length > 1 ? bytes[0] & (0xFFu >> (length + 1)) : bytes[0];
    for (std::size_t i = 1; i < length; ++i)
        *code = *code << 6 | (bytes[i] & 0x3Fu);
    return length;
}

// A harmless stand-in for a character that would end a row or turn the direction of the text around.
char32_t harmless(char32_t code) {
    const bool breaks = (code >= 0x80 && code < 0xA0) || code == 0x2028 || code == 0x2029;
    const bool turns = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return breaks || turns || code == 0xFFFC ? replacement : code;
}

void append_code(QString &text, char32_t code) {
    if (code < 0x10000) {
        text.append(QChar(static_cast<char16_t>(code)));
    } else {
        text.append(QChar(QChar::highSurrogate(code)));
        text.append(QChar(QChar::lowSurrogate(code)));
    }
}

} // namespace

void TextMetrics::set_font(const QFont &new_font) {
    font = new_font;
    const QFontMetricsF measured(font);
    row_height = std::max(1.0, std::ceil(measured.height() + std::max(0.0, measured.leading())));
    ascent = std::ceil(measured.ascent());
    cell = std::max(1.0, measured.horizontalAdvance(QString(64, u'x')) / 64);
    const qreal narrow = measured.horizontalAdvance(QStringLiteral("iiiiiiii"));
    fixed_pitch = std::abs(narrow - measured.horizontalAdvance(QStringLiteral("WWWWWWWW"))) < 0.01;
    set_width(width);
}

void TextMetrics::set_width(qreal new_width) {
    width = std::max(cell, new_width);
    columns = std::max(1, static_cast<int>(std::floor(width / cell + 0.001)));
}

QString shown_text(const char *bytes, std::size_t size, int space_substitute, bool *ascii) {
    const auto *const at = reinterpret_cast<const unsigned char *>(bytes);
    QString text;
    text.reserve(static_cast<qsizetype>(size));
    bool plain = true;
    for (std::size_t i = 0; i < size;) {
        const unsigned char byte = at[i];
        char32_t code = byte;
        std::size_t length = 1;
        if (byte >= 0x80) {
            length = utf8_character(at + i, size - i, &code);
            code = length ? harmless(code) : replacement;
            if (length == 0 && byte == space_substitute)
                code = no_break_space;
            plain = plain && length == 0 && code == no_break_space;
            length = std::max<std::size_t>(length, 1);
        } else if (byte == space_substitute && byte != ' ') {
            code = no_break_space;
        } else if ((byte < ' ' && byte != '\t') || byte == 0x7F) {
            code = byte == 0x7F ? delete_mark : static_cast<char16_t>(control_pictures + byte);
            plain = false;
        } else if (byte == '\t') {
            plain = false;
        }
        append_code(text, code);
        i += length;
    }
    if (ascii)
        *ascii = plain;
    return text;
}

SegmentLayout::SegmentLayout(const char *bytes, std::size_t size, const TextMetrics &metrics,
                             int space_substitute)
    : metrics_(metrics) {
    bool ascii = false;
    text_ = shown_text(bytes, size, space_substitute, &ascii);
    if (ascii && metrics.fixed_pitch)
        wrap_cells();
    else
        wrap_clusters();
}

// Wraps a text whose characters all take one cell. A row breaks after the last blank that fits, else at the
// edge; blanks at a row's end may stand beyond the edge.
void SegmentLayout::wrap_cells() {
    const qsizetype columns = metrics_.columns;
    qsizetype start = 0;
    starts_.push_back(0);
    while (text_.size() - start > columns) {
        const qsizetype blank = text_.lastIndexOf(u' ', start + columns);
        qsizetype next = blank > start ? blank + 1 : start + columns;
        while (blank > start && next < text_.size() && text_[next] == u' ')
            ++next;
        if (next >= text_.size())
            break;
        starts_.push_back(next);
        start = next;
    }
}

void SegmentLayout::wrap_clusters() {
    layout_ = std::make_unique<QTextLayout>(text_, metrics_.font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LeftToRight);
    option.setTabStopDistance(tab_columns * metrics_.cell);
    layout_->setTextOption(option);
    layout_->setCacheEnabled(true);
    layout_->beginLayout();
    for (QTextLine line = layout_->createLine(); line.isValid(); line = layout_->createLine()) {
        line.setLineWidth(metrics_.width);
        // A row in which another font stands in keeps the base line of all rows.
        const qreal top = static_cast<qreal>(starts_.size()) * metrics_.row_height;
        line.setPosition(QPointF(0, top + metrics_.ascent - line.ascent()));
        starts_.push_back(line.textStart());
    }
    layout_->endLayout();
    if (starts_.empty())
        starts_.push_back(0);
}

QString SegmentLayout::row_text(int row) const {
    const std::size_t at = static_cast<std::size_t>(row);
    const qsizetype end = at + 1 < starts_.size() ? starts_[at + 1] : text_.size();
    return text_.mid(starts_[at], end - starts_[at]);
}

int SegmentLayout::row_of(qsizetype index) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), index);
    return static_cast<int>(after - starts_.begin()) - 1;
}

qreal SegmentLayout::x_of(qsizetype index) const {
    const int row = row_of(index);
    if (layout_ && row < layout_->lineCount())
        return layout_->lineAt(row).cursorToX(static_cast<int>(index));
    return static_cast<qreal>(index - starts_[static_cast<std::size_t>(row)]) * metrics_.cell;
}

qsizetype SegmentLayout::index_at(int row, qreal x) const {
    if (layout_ && row < layout_->lineCount())
        return layout_->lineAt(row).xToCursor(x);
    const qsizetype start = starts_[static_cast<std::size_t>(row)];
    const auto column = static_cast<qsizetype>(std::max(0.0, x) / metrics_.cell);
    return start + std::min(column, row_text(row).size());
}

void SegmentLayout::draw(QPainter &painter, int row, QPointF at) const {
    if (layout_) {
        if (row < layout_->lineCount())
            layout_->lineAt(row).draw(&painter, at - QPointF(0, row * metrics_.row_height));
        return;
    }
    painter.drawText(at + QPointF(0, metrics_.ascent), row_text(row));
}

} // namespace quillon::desktop
