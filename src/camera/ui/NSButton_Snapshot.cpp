#include "camera/ui/NSButton_Snapshot.h"

#include "camera/SnapshotImage.h"

#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace {
// The title while the assignment has no snapshot.
const QString NoSnapshotTitle = QStringLiteral("none");
} // namespace

NSButton_Snapshot::NSButton_Snapshot(QWidget *parent)
    : QToolButton(parent)
{
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    setText(NoSnapshotTitle);
}

void NSButton_Snapshot::setImage(const QImage &image)
{
    m_data = SnapshotImage::encode(image);
    display(image);
}

void NSButton_Snapshot::setImageData(const QByteArray &data)
{
    m_data = data;
    display(SnapshotImage::decode(data));
}

void NSButton_Snapshot::display(const QImage &image)
{
    m_bigImage = image;
    m_shown = SnapshotImage::stretched(image, size());
    setText(image.isNull() ? NoSnapshotTitle : QString());
    update();
}

void NSButton_Snapshot::resizeEvent(QResizeEvent *event)
{
    QToolButton::resizeEvent(event);
    // The face always fills the button, whatever size the sidebar gives it.
    m_shown = SnapshotImage::stretched(m_bigImage, size());
}

void NSButton_Snapshot::paintEvent(QPaintEvent *event)
{
    if (m_shown.isNull()) {
        QToolButton::paintEvent(event);
        return;
    }
    QStylePainter painter(this);
    painter.drawImage(rect(), m_shown);
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = rect().adjusted(1, 1, -1, -1);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}
