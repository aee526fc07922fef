#pragma once

#include <QAbstractTableModel>

class Controller;

// The sidebar's subprojects table: the subprojects of the selected project, with their completion,
// name and due date, each editable in place through the list's editing.
class SubprojectsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { CompletedColumn, NameColumn, DateColumn, ColumnCount };

    explicit SubprojectsModel(Controller *controller, QObject *parent = nullptr);

    // The selected project or its subprojects changed.
    void reload();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    static QString keyOf(int column);

private:
    Controller *m_controller;
    int m_rows = 0;
};
