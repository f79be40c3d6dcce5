// The rows of the problems window: a view of the shell's list that leaves out the kinds that are not wanted.
#ifndef QUILLON_DESKTOP_PROBLEM_MODEL_H
#define QUILLON_DESKTOP_PROBLEM_MODEL_H

#include <QAbstractTableModel>
#include <QIcon>
#include <vector>

namespace quillon::desktop {

class ProblemModel : public QAbstractTableModel {
  public:
    enum Column { kind_column, place_column, text_column, column_count };

    explicit ProblemModel(QObject *parent);

    // Reads the shell's list anew, with the kinds that are shown.
    void read();
    // The number of the row's problem in the shell's list, and the row of a problem, -1 when it is not shown.
    int problem_of(int row) const { return rows_[static_cast<std::size_t>(row)]; }
    int row_of(int problem) const;

    int rowCount(const QModelIndex &parent) const override;
    int columnCount(const QModelIndex &parent) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    QString text(int problem, int column) const;

    std::vector<int> rows_;
    QIcon icons_[4];
};

// The icon of a kind (0 to 3), and its name for one problem or several.
QIcon problem_icon(int kind);
QString problem_kind_name(int kind);

} // namespace quillon::desktop

#endif
