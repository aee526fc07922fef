#include "sync/ui/BusyIndicator.h"

#include <QPainter>
#include <QTimer>

namespace {
constexpr int Spokes = 12;
constexpr int StepMilliseconds = 80;
} // namespace

BusyIndicator::BusyIndicator(QWidget *parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(StepMilliseconds);
    connect(m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % Spokes;
        update();
    });
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BusyIndicator::startAnimation()
{
    m_timer->start();
    update();
}

void BusyIndicator::stopAnimation()
{
    m_timer->stop();
    update();
}

bool BusyIndicator::isAnimating() const
{
    return m_timer->isActive();
}

QSize BusyIndicator::sizeHint() const
{
    return {18, 18};
}

void BusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(width(), height());
    painter.translate(width() / 2.0, height() / 2.0);
    QColor spoke = palette().color(QPalette::WindowText);
    QPen pen;
    pen.setWidthF(side / 9.0);
    pen.setCapStyle(Qt::RoundCap);
    for (int i = 0; i < Spokes; ++i) {
        // The newest spoke is darkest; the ones behind it fade.
        const int age = (m_step - i + Spokes) % Spokes;
        spoke.setAlphaF(0.15 + 0.85 * (1.0 - qreal(age) / Spokes));
        pen.setColor(spoke);
        painter.setPen(pen);
        painter.drawLine(QPointF(0, -side * 0.22), QPointF(0, -side * 0.44));
        painter.rotate(360.0 / Spokes);
    }
}
