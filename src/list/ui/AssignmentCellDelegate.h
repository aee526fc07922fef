#pragma once

#include <QHash>
#include <QIcon>
#include <QStyledItemDelegate>

// Draws the assignment table's cells: the model's text, colour and day band as usual, and the small
// image of an attachment column centred in its cell.
class AssignmentCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit AssignmentCellDelegate(QObject *parent = nullptr);
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The artwork for one of the model's image names.
    static QIcon image(const QString &imageName);
};
