#include "widgets/TransitionOverlay.h"

#include "widgets/TabViewAnimation.h"
#include "widgets/Transition.h"

#include <QPainter>

TransitionOverlay::TransitionOverlay(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("transitionOverlay"));
    setAccessibleName(QStringLiteral("View transition"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void TransitionOverlay::play(Transition *transition, TabViewAnimation *animation, qreal devicePixelRatio)
{
    m_transition = transition;
    m_animation = animation;
    m_devicePixelRatio = devicePixelRatio;
    if (m_animation)
        connect(m_animation, &TabViewAnimation::progressChanged, this, qOverload<>(&QWidget::update));
}

void TransitionOverlay::stop()
{
    if (m_animation)
        disconnect(m_animation, nullptr, this, nullptr);
    m_transition = nullptr;
    m_animation = nullptr;
    m_frame = QImage();
}

void TransitionOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!m_transition || !m_animation) {
        painter.fillRect(rect(), palette().window());
        return;
    }
    m_transition->renderFrame(m_animation->progress(), m_frame);
    m_frame.setDevicePixelRatio(m_devicePixelRatio);
    painter.drawImage(QPointF(0, 0), m_frame);
}
