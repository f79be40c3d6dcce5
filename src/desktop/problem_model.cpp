#include "desktop/problem_model.h"

#include <QApplication>
#include <QFileInfo>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <cstring>

#include "tools/problems.h"

namespace quillon::desktop {

namespace {

constexpr int icon_size = 16;

QString utf8(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

int kind_number(const ProblemRecord &problem) {
    return static_cast<int>(std::strchr(problem_kinds, problem.kind) - problem_kinds);
}

// A shape a kind, so that nobody has to tell colours apart. The colours are seen on light and on dark.
QPixmap draw_icon(int kind, qreal scale) {
    QPixmap picture(QSize(icon_size, icon_size) * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QPen mark(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap);
    switch (kind) {
    case 0: // a cross in a disc
        painter.setBrush(QColor(0xD3, 0x2F, 0x2F));
        painter.drawEllipse(QRectF(1, 1, 14, 14));
        painter.setPen(mark);
        painter.drawLine(QPointF(5.5, 5.5), QPointF(10.5, 10.5));
        painter.drawLine(QPointF(10.5, 5.5), QPointF(5.5, 10.5));
        break;
    case 1: // an exclamation mark in a triangle
        painter.setBrush(QColor(0xF2, 0x9A, 0x1F));
        painter.drawPolygon(QPolygonF({QPointF(8, 1.5), QPointF(15.2, 14.5), QPointF(0.8, 14.5)}));
        mark.setColor(QColor(0x30, 0x20, 0x00));
        painter.setPen(mark);
        painter.drawLine(QPointF(8, 6), QPointF(8, 9.6));
        painter.drawPoint(QPointF(8, 12.2));
        break;
    case 2: // a question mark in a disc
        painter.setBrush(QColor(0x2F, 0x7F, 0xD3));
        painter.drawEllipse(QRectF(1, 1, 14, 14));
        mark.setWidthF(1.6);
        painter.setPen(mark);
        painter.setBrush(Qt::NoBrush);
        painter.drawArc(QRectF(5.7, 4, 4.6, 4.6), -80 * 16, 250 * 16);
        painter.drawLine(QPointF(8, 8.8), QPointF(8, 9.6));
        painter.drawPoint(QPointF(8, 12.1));
        break;
    default: // a line that sticks out of a box
        painter.setPen(QPen(QColor(0x80, 0x80, 0x88), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(1.5, 3.5, 9, 9));
        painter.setPen(QPen(QColor(0xD3, 0x6F, 0x2F), 2));
        painter.drawLine(QPointF(4, 8), QPointF(15, 8));
        break;
    }
    return picture;
}

} // namespace

QIcon problem_icon(int kind) {
    QIcon icon;
    // The toolkit would tint the icon of a selected row.
    for (const qreal scale : {1.0, 2.0, 3.0})
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected})
            icon.addPixmap(draw_icon(kind, scale), mode);
    return icon;
}

QString problem_kind_name(int kind) {
    const QString names[] = {QObject::tr("Error"), QObject::tr("Warning"), QObject::tr("Reference"),
                             QObject::tr("Box")};
    return names[kind];
}

ProblemModel::ProblemModel(QObject *parent) : QAbstractTableModel(parent) {
    for (int kind = 0; kind < problem_kind_count; kind++)
        icons_[kind] = problem_icon(kind);
}

void ProblemModel::read() {
    beginResetModel();
    rows_.clear();
    for (int i = 0; i < problem_count(); i++)
        if (is_of_kinds(problem_at(i), shown_problem_kinds))
            rows_.push_back(i);
    endResetModel();
}

int ProblemModel::row_of(int problem) const {
    const auto found = std::lower_bound(rows_.begin(), rows_.end(), problem);
    return found != rows_.end() && *found == problem ? static_cast<int>(found - rows_.begin()) : -1;
}

int ProblemModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ProblemModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : column_count;
}

QString ProblemModel::text(int problem, int column) const {
    const ProblemRecord &record = problem_at(problem);
    if (column == kind_column)
        return problem_kind_name(kind_number(record));
    if (column == text_column)
        return utf8(record.text);
    const QString file = utf8(record.file.substr(record.file.rfind('/') + 1));
    return record.line > 0 ? QStringLiteral("%1:%2").arg(file).arg(record.line) : file;
}

QVariant ProblemModel::data(const QModelIndex &index, int role) const {
    // The shell may have taken the next run's list before the view was told.
    if (!index.isValid() || problem_of(index.row()) >= problem_count())
        return {};
    const int problem = problem_of(index.row());
    const ProblemRecord &record = problem_at(problem);
    switch (role) {
    case Qt::DisplayRole:
        return text(problem, index.column());
    case Qt::DecorationRole:
        return index.column() == kind_column ? QVariant(icons_[kind_number(record)]) : QVariant();
    case Qt::ToolTipRole:
        return index.column() == place_column ? utf8(record.file) : utf8(record.text);
    default:
        return {};
    }
}

QVariant ProblemModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const QString names[] = {tr("Kind"), tr("Place"), tr("Text")};
    return orientation == Qt::Horizontal && role == Qt::DisplayRole ? QVariant(names[section]) : QVariant();
}

} // namespace quillon::desktop
