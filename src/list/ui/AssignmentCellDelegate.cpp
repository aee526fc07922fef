#include "list/ui/AssignmentCellDelegate.h"

#include "list/AssignmentTableModel.h"
#include "widgets/Icons.h"
#include "widgets/ReadableColors.h"

#include <QApplication>
#include <QPainter>

namespace {
constexpr int ImageSize = 14;
const QString ImagePrefix = QStringLiteral("main-");
} // namespace

AssignmentCellDelegate::AssignmentCellDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

QIcon AssignmentCellDelegate::image(const QString &imageName)
{
    static QHash<QString, QIcon> cache;
    auto it = cache.find(imageName);
    if (it == cache.end())
        it = cache.insert(imageName, Icons::own(ImagePrefix + imageName));
    return *it;
}

void AssignmentCellDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!ReadableColors::isDark(option->palette))
        return;
    const QColor base = option->palette.color(QPalette::Base);
    QColor background = base;
    if (option->backgroundBrush.style() != Qt::NoBrush) {
        background = ReadableColors::band(option->backgroundBrush.color(), base);
        option->backgroundBrush = background;
    }
    const QVariant foreground = index.data(Qt::ForegroundRole);
    if (foreground.canConvert<QColor>()) {
        const QColor readable = ReadableColors::text(foreground.value<QColor>(), background);
        option->palette.setColor(QPalette::Text, readable);
    }
}

void AssignmentCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const QString imageName = index.data(AssignmentTableModel::ImageNameRole).toString();
    if (imageName.isEmpty())
        return;
    const QRect target(option.rect.center().x() - ImageSize / 2 + 1, option.rect.center().y() - ImageSize / 2 + 1,
                       ImageSize, ImageSize);
    image(imageName).paint(painter, target, Qt::AlignCenter,
                           option.state & QStyle::State_Selected ? QIcon::Selected : QIcon::Normal);
}
