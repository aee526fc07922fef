#pragma once

#include <QAbstractListModel>
#include <QDate>

class CalendarData;

// The rows of one day's list: row 0 the day of the month, row n the title of the day's entry n - 1.
// Row 0 cannot be selected or dragged.
class DayCellModel : public QAbstractListModel
{
    Q_OBJECT
public:
    DayCellModel(const CalendarData &data, QObject *parent = nullptr);

    QDate date() const { return m_date; }
    // Shows another day, or the same day's changed entries.
    void reload(const QDate &date);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    const CalendarData &m_data;
    QDate m_date;
};
