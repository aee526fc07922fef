#pragma once

#include <QAbstractButton>
#include <QList>
#include <QWidget>

class FilterBarModel;
class QLabel;
class QMenu;
class QToolButton;

// One toggle button of the filter bar: a recessed pill while it is on, its border shown only while
// the pointer is over it.
class FilterButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit FilterButton(const QString &title, QWidget *parent = nullptr);
    void setOn(bool on);
    bool isOn() const { return m_on; }
    QSize sizeHint() const override;
    // The width a button holding this title takes in this font.
    static int widthFor(const QString &title, const QFont &font);

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void nextCheckState() override;

private:
    bool m_on = false;
    bool m_hovered = false;
};

// The strip above the list offering the view and the course as rows of toggle buttons. It draws
// what its model lays out: the buttons of each segment, the divider image between segments, and
// the overflow button at the right edge whose menu holds every title that did not fit.
class FilterBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int BarHeight = 26;

    explicit FilterBar(FilterBarModel *model, QWidget *parent = nullptr);

    FilterBarModel *model() const { return m_model; }
    // The buttons standing in the bar, left to right (segments and positions in `buttonPlaces`).
    QList<FilterButton *> buttons() const { return m_buttons; }
    QToolButton *overflowButton() const { return m_overflowButton; }
    QMenu *overflowMenu() const { return m_overflowMenu; }
    QList<QLabel *> dividers() const { return m_dividers; }

    // Choose the gradient; blue is what the bar starts with.
    void setBlueBackground();
    void setGrayBackground();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // A title was chosen from the overflow menu.
    void overflowMenuUsed();
    // The bar's width changed and it was laid out again.
    void widthChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void rebuild();
    void updateStates();
    void showOverflowMenu();

    FilterBarModel *m_model;
    QString m_topColor;
    QString m_bottomColor;
    QList<FilterButton *> m_buttons;
    QList<QPair<int, int>> m_buttonPlaces;
    QList<QLabel *> m_dividers;
    QToolButton *m_overflowButton;
    QMenu *m_overflowMenu;
};
