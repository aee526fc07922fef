#pragma once

#include <QHash>
#include <QIcon>
#include <QStyledItemDelegate>

// Draws the assignment table's cells: the model's text, colour and day band as usual, and the small
// image of an attachment column centred in its cell. On a dark colour scheme the text colours and
// the band are adjusted so they stay readable.
class AssignmentCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit AssignmentCellDelegate(QObject *parent = nullptr);
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The artwork for one of the model's image names.
    static QIcon image(const QString &imageName);

protected:
    // On a dark colour scheme the model's colours, chosen for a light one, are drawn lighter.
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
