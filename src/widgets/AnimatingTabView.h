#pragma once

#include <QImage>
#include <QRectF>
#include <QStringList>
#include <QWidget>

#include <memory>

class QStackedWidget;
class TabViewAnimation;
class Transition;
class TransitionOverlay;

// Holds pages like a tab view without tabs and plays an image transition from a picture of the old
// page to a picture of the new one whenever another page is selected. Which transition plays is an
// index fed in by the owner (the user's "Main Window Transition" setting): 0 swaps at once, 1 copy
// machine, 2 disintegrate with a mask, 3 dissolve, 4 flash, 5 mod, 6 page curl, 7 ripple, 8 swipe,
// anything else ripple. A transition lasts a second, or five while Shift is held for that switch.
class AnimatingTabView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kPlainSwitch = 0;
    static constexpr int kDefaultTransition = 3;
    static constexpr int kNormalDurationMs = 1000;
    static constexpr int kSlowMotionDurationMs = 5000;

    explicit AnimatingTabView(QWidget *parent = nullptr);
    ~AnimatingTabView() override;

    // The view takes ownership of the page. Returns its index.
    int addTab(QWidget *page, const QString &label = QString());
    void removeTab(int index);
    int count() const;
    int currentIndex() const;
    QWidget *currentWidget() const;
    QWidget *widget(int index) const;
    int indexOf(const QWidget *page) const;
    QString tabLabel(int index) const;

    // Shows another page, with the transition if one is set. Shift counts if the event being handled
    // has it down.
    void selectTabViewItem(int index);
    void selectTabViewItem(QWidget *page);
    void selectTabViewItem(int index, Qt::KeyboardModifiers modifiers);

    void setTransition(int index);
    int transition() const { return m_transitionIndex; }

    bool isAnimating() const;
    // The running animation, or nullptr.
    TabViewAnimation *animation() const { return m_animation.get(); }
    // The length of the transition played last (or playing now), in milliseconds; 0 after a plain swap.
    int lastDuration() const { return m_lastDuration; }
    // Ends a running transition at once, on the new page.
    void finishTransition();

    // The transition for an index, made for a rectangle of the pictures (in picture pixels). Never
    // null for an index other than 0.
    static std::unique_ptr<Transition> createTransitionFilterForRect(
        int index, const QRectF &rect, const QImage &initialImage, const QImage &finalImage);

    // The pages decide how much room the view asks for.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void currentChanged(int index);
    void transitionFinished();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void switchPlainly(int index);
    void endTransition();

    QStackedWidget *m_stack = nullptr;
    TransitionOverlay *m_overlay = nullptr;
    int m_transitionIndex = kDefaultTransition;
    bool m_slowMotion = false;
    int m_lastDuration = 0;
    bool m_focusWasInside = false;
    std::unique_ptr<Transition> m_transition;
    std::unique_ptr<TabViewAnimation> m_animation;
    QStringList m_labels;
};
