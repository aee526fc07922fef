#include "store/ui/DragRows.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QModelIndex>

#include <algorithm>

namespace DragRows {

QMimeData *encode(const QString &type, const QList<int> &rows)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    QList<int> sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    stream << sorted;
    auto *data = new QMimeData;
    data->setData(type, bytes);
    return data;
}

QList<int> decode(const QMimeData *data, const QString &type)
{
    if (!data || !data->hasFormat(type))
        return {};
    QDataStream stream(data->data(type));
    QList<int> rows;
    stream >> rows;
    if (stream.status() != QDataStream::Ok)
        return {};
    std::sort(rows.begin(), rows.end());
    return rows;
}

int dropRow(int row, const QModelIndex &parent, int rowCount)
{
    if (row >= 0)
        return std::min(row, rowCount);
    if (parent.isValid())
        return parent.row();
    return rowCount;
}

} // namespace DragRows
