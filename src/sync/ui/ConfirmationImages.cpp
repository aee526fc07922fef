#include "sync/ui/ConfirmationImages.h"

#include <QPainter>
#include <QPainterPath>

namespace ConfirmationImages {

QPixmap image(const QString &name, int side, qreal devicePixelRatio)
{
    QPixmap pixmap(QSize(side, side) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool accepted = name == GreenCheck;
    const QRectF disc(1, 1, side - 2, side - 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accepted ? QColor(0x2e, 0xa0, 0x43) : QColor(0xd0, 0x2b, 0x2b));
    painter.drawEllipse(disc);

    QPen mark(Qt::white, side / 8.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(mark);
    painter.setBrush(Qt::NoBrush);
    const qreal s = side;
    if (accepted) {
        QPainterPath check;
        check.moveTo(s * 0.28, s * 0.53);
        check.lineTo(s * 0.44, s * 0.69);
        check.lineTo(s * 0.73, s * 0.35);
        painter.drawPath(check);
    } else {
        painter.drawLine(QPointF(s * 0.33, s * 0.33), QPointF(s * 0.67, s * 0.67));
        painter.drawLine(QPointF(s * 0.67, s * 0.33), QPointF(s * 0.33, s * 0.67));
    }
    return pixmap;
}

} // namespace ConfirmationImages
