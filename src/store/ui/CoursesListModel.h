#pragma once

#include <QAbstractListModel>

class CoursesStore;

// The combined list of courses with their indented textbooks, one row per record, showing each
// record's "Display Name". Courses can be dragged within the list (their textbooks travel with
// them); textbooks cannot be dragged. The move itself is the window's, which knows the selection.
class CoursesListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit CoursesListModel(CoursesStore *store, QObject *parent = nullptr);

    // The store changed underneath: every row is read again.
    void reload();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

Q_SIGNALS:
    // A course row was dropped: `from` is its row, `dropRow` the row it was dropped before.
    void courseDropped(int from, int dropRow);

private:
    CoursesStore *m_store;
};
