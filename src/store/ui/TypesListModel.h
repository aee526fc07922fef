#pragma once

#include <QAbstractListModel>
#include <QStringList>

// A list of assignment types (a course's own, or the universal ones) that the user edits in place
// and reorders by dragging within the same table.
class TypesListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    TypesListModel(QString dragType, QObject *parent = nullptr);

    void setTypes(const QStringList &types);
    QStringList types() const { return m_types; }
    // Appends "New Type"; returns its row.
    int addType();
    bool removeType(int row);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
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
    // The list changed by the user (edit, add, remove or move) and must be saved.
    void typesEdited();
    // After a move: the row the moved type landed on.
    void typeMoved(int newRow);

private:
    QString m_dragType;
    QStringList m_types;
};
