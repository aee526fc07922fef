#include "widgets/AnimatingTabView.h"

#include "widgets/CopyMachineTransition.h"
#include "widgets/DisintegrateWithMaskTransition.h"
#include "widgets/DissolveTransition.h"
#include "widgets/FlashTransition.h"
#include "widgets/ModTransition.h"
#include "widgets/PageCurlTransition.h"
#include "widgets/RippleTransition.h"
#include "widgets/SwipeTransition.h"
#include "widgets/TabViewAnimation.h"
#include "widgets/TransitionArtwork.h"
#include "widgets/TransitionOverlay.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QStackedWidget>

Q_LOGGING_CATEGORY(lcAnimatingTabView, "quillory.widgets")

namespace
{

constexpr char kObjectName[] = "animatingTabView";
constexpr char kAccessibleName[] = "Assignment views";
constexpr char kStackObjectName[] = "animatingTabViewContent";
constexpr char kStackAccessibleName[] = "Current assignment view";

enum TransitionIndex {
    CopyMachine = 1,
    DisintegrateWithMask = 2,
    Dissolve = 3,
    Flash = 4,
    Mod = 5,
    PageCurl = 6,
    Ripple = 7,
    Swipe = 8,
};

} // namespace

AnimatingTabView::AnimatingTabView(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QLatin1String(kObjectName));
    setAccessibleName(QLatin1String(kAccessibleName));
    m_stack = new QStackedWidget(this);
    m_stack->setObjectName(QLatin1String(kStackObjectName));
    m_stack->setAccessibleName(QLatin1String(kStackAccessibleName));
    m_overlay = new TransitionOverlay(this);
    connect(m_stack, &QStackedWidget::currentChanged, this, &AnimatingTabView::currentChanged);
    // The artwork is read now rather than in the middle of the first switch.
    TransitionArtwork::maskImage();
    TransitionArtwork::shadingImage();
}

AnimatingTabView::~AnimatingTabView()
{
    if (m_animation)
        m_animation->disconnect(this);
    m_overlay->stop();
}

int AnimatingTabView::addTab(QWidget *page, const QString &label)
{
    if (!page)
        return -1;
    if (isAnimating())
        finishTransition();
    const int index = m_stack->addWidget(page);
    m_labels.insert(index, label);
    return index;
}

void AnimatingTabView::removeTab(int index)
{
    QWidget *page = widget(index);
    if (!page)
        return;
    if (isAnimating())
        finishTransition();
    m_stack->removeWidget(page);
    m_labels.removeAt(index);
}

int AnimatingTabView::count() const
{
    return m_stack->count();
}

int AnimatingTabView::currentIndex() const
{
    return m_stack->currentIndex();
}

QWidget *AnimatingTabView::currentWidget() const
{
    return m_stack->currentWidget();
}

QWidget *AnimatingTabView::widget(int index) const
{
    return m_stack->widget(index);
}

int AnimatingTabView::indexOf(const QWidget *page) const
{
    return m_stack->indexOf(page);
}

QString AnimatingTabView::tabLabel(int index) const
{
    return m_labels.value(index);
}

QSize AnimatingTabView::sizeHint() const
{
    return m_stack->sizeHint();
}

QSize AnimatingTabView::minimumSizeHint() const
{
    return m_stack->minimumSizeHint();
}

void AnimatingTabView::setTransition(int index)
{
    m_transitionIndex = index;
}

bool AnimatingTabView::isAnimating() const
{
    return m_animation != nullptr;
}

void AnimatingTabView::selectTabViewItem(int index)
{
    selectTabViewItem(index, QGuiApplication::keyboardModifiers());
}

void AnimatingTabView::selectTabViewItem(QWidget *page)
{
    selectTabViewItem(indexOf(page));
}

void AnimatingTabView::selectTabViewItem(int index, Qt::KeyboardModifiers modifiers)
{
    // Shift slows down exactly the switch it was held for; the flag never outlives this call, even
    // when nothing is played, so a later switch without Shift runs at normal speed.
    m_slowMotion = modifiers.testFlag(Qt::ShiftModifier);
    if (index < 0 || index >= count()) {
        qCWarning(lcAnimatingTabView) << "No page" << index << "to select among" << count();
        m_slowMotion = false;
        return;
    }
    // A switch asked for mid-transition first lands the one under way.
    if (isAnimating())
        finishTransition();
    if (index == currentIndex()) {
        m_slowMotion = false;
        return;
    }
    if (m_transitionIndex == kPlainSwitch || !isVisible() || width() <= 0 || height() <= 0) {
        switchPlainly(index);
        return;
    }

    QWidget *focus = QApplication::focusWidget();
    m_focusWasInside = focus && m_stack->isAncestorOf(focus);
    const QImage initialImage = m_stack->grab().toImage();
    m_stack->setCurrentIndex(index);
    const QImage finalImage = m_stack->grab().toImage();
    if (initialImage.isNull() || finalImage.isNull()) {
        // Without both pictures there is nothing to animate: the page has already changed.
        qCWarning(lcAnimatingTabView) << "Could not take pictures of the views; switching without a transition";
        m_slowMotion = false;
        m_lastDuration = 0;
        return;
    }

    m_transition = createTransitionFilterForRect(
        m_transitionIndex, QRectF(QPointF(0, 0), QSizeF(initialImage.size())), initialImage, finalImage);
    m_lastDuration = m_slowMotion ? kSlowMotionDurationMs : kNormalDurationMs;
    m_slowMotion = false;
    m_animation = std::make_unique<TabViewAnimation>(m_lastDuration);
    connect(m_animation.get(), &QAbstractAnimation::finished, this, &AnimatingTabView::endTransition);

    m_overlay->setGeometry(rect());
    m_overlay->play(m_transition.get(), m_animation.get(), initialImage.devicePixelRatio());
    m_overlay->show();
    m_overlay->raise();
    m_stack->hide();
    m_animation->start();
}

void AnimatingTabView::switchPlainly(int index)
{
    m_slowMotion = false;
    m_lastDuration = 0;
    m_stack->setCurrentIndex(index);
}

void AnimatingTabView::finishTransition()
{
    if (!m_animation)
        return;
    m_animation->disconnect(this);
    m_animation->stop();
    endTransition();
}

void AnimatingTabView::endTransition()
{
    if (!m_animation)
        return;
    m_overlay->stop();
    m_overlay->hide();
    // The animation may be the one reporting its end right now, so it goes once control returns.
    m_animation.release()->deleteLater();
    m_transition.reset();
    m_stack->show();
    if (m_focusWasInside && currentWidget())
        currentWidget()->setFocus(Qt::OtherFocusReason);
    m_focusWasInside = false;
    update();
    Q_EMIT transitionFinished();
}

void AnimatingTabView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // The pictures of a transition under way no longer fit.
    if (isAnimating())
        finishTransition();
    m_stack->setGeometry(rect());
    m_overlay->setGeometry(rect());
}

std::unique_ptr<Transition> AnimatingTabView::createTransitionFilterForRect(
    int index, const QRectF &rect, const QImage &initialImage, const QImage &finalImage)
{
    if (index == kPlainSwitch)
        return nullptr;
    const QPointF center(rect.x() + rect.width() * 0.5, rect.y() + rect.height() * 0.5);
    std::unique_ptr<Transition> transition;
    switch (index) {
    case CopyMachine: {
        auto copyMachine = std::make_unique<CopyMachineTransition>();
        copyMachine->setExtent(rect);
        transition = std::move(copyMachine);
        break;
    }
    case DisintegrateWithMask: {
        auto disintegrate = std::make_unique<DisintegrateWithMaskTransition>();
        // The mask is stretched to cover the view exactly.
        disintegrate->setMaskImage(TransitionArtwork::maskImage().scaled(
            rect.size().toSize(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        transition = std::move(disintegrate);
        break;
    }
    case Dissolve:
        transition = std::make_unique<DissolveTransition>();
        break;
    case Flash: {
        auto flash = std::make_unique<FlashTransition>();
        flash->setCenter(center);
        flash->setExtent(rect);
        transition = std::move(flash);
        break;
    }
    case Mod: {
        auto mod = std::make_unique<ModTransition>();
        mod->setCenter(center);
        transition = std::move(mod);
        break;
    }
    case PageCurl: {
        auto curl = std::make_unique<PageCurlTransition>();
        curl->setBacksideImage(PageCurlTransition::defaultBackside(initialImage));
        curl->setShadingImage(TransitionArtwork::shadingImage());
        transition = std::move(curl);
        break;
    }
    case Swipe: {
        auto swipe = std::make_unique<SwipeTransition>();
        swipe->setExtent(rect);
        transition = std::move(swipe);
        break;
    }
    default: {
        auto ripple = std::make_unique<RippleTransition>();
        ripple->setCenter(center);
        ripple->setExtent(rect);
        ripple->setShadingImage(TransitionArtwork::shadingImage());
        transition = std::move(ripple);
        break;
    }
    }
    transition->setImages(initialImage, finalImage);
    return transition;
}
