#include "list/ui/FilterBar.h"

#include "list/FilterBarModel.h"
#include "platform/ColorString.h"
#include "widgets/Icons.h"
#include "widgets/ReadableColors.h"

#include <QLabel>
#include <QLinearGradient>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QResizeEvent>
#include <QTimer>
#include <QToolButton>

namespace {
const QString OverflowImage = QStringLiteral("main-overflow");
const QString OverflowPressedImage = QStringLiteral("main-overflow-pressed");
const QString DividerImage = QStringLiteral("main-filter-divider");
constexpr int ButtonHeight = 18;
constexpr int ButtonPadding = 18;
constexpr QSize OverflowSize{16, 16};
constexpr QSize DividerSize{2, 18};
} // namespace

// --- FilterButton ----------------------------------------------------------------------------------

FilterButton::FilterButton(const QString &title, QWidget *parent)
    : QAbstractButton(parent)
{
    setText(title);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(title);
    // Checkable only so that a screen reader says which button of a group is chosen; the bar's
    // model decides that, never a click on its own.
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
}

void FilterButton::setOn(bool on)
{
    setChecked(on);
    if (m_on == on)
        return;
    m_on = on;
    update();
}

void FilterButton::nextCheckState()
{
    // The click goes to the model, which answers through setOn().
}

int FilterButton::widthFor(const QString &title, const QFont &font)
{
    QFont bold = font;
    bold.setBold(true);
    return QFontMetrics(bold).horizontalAdvance(title) + ButtonPadding;
}

QSize FilterButton::sizeHint() const
{
    return {widthFor(text(), font()), ButtonHeight};
}

void FilterButton::enterEvent(QEnterEvent *event)
{
    m_hovered = true;
    update();
    QAbstractButton::enterEvent(event);
}

void FilterButton::leaveEvent(QEvent *event)
{
    m_hovered = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void FilterButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = frame.height() / 2;
    QFont font = this->font();
    font.setBold(true);
    painter.setFont(font);
    if (m_on || isDown()) {
        // Recessed: a darker pill with a shadow along its top edge.
        QLinearGradient fill(frame.topLeft(), frame.bottomLeft());
        fill.setColorAt(0, QColor(0x55, 0x63, 0x7a, isDown() && !m_on ? 150 : 200));
        fill.setColorAt(1, QColor(0x7b, 0x88, 0x9e, isDown() && !m_on ? 150 : 200));
        painter.setPen(QPen(QColor(0x3c, 0x46, 0x58, 160), 1));
        painter.setBrush(fill);
        painter.drawRoundedRect(frame, radius, radius);
        painter.setPen(Qt::white);
    } else {
        if (m_hovered || hasFocus()) {
            painter.setPen(QPen(hasFocus() ? palette().highlight().color() : QColor(0x5a, 0x66, 0x7c, 140), 1));
            painter.setBrush(QColor(255, 255, 255, 50));
            painter.drawRoundedRect(frame, radius, radius);
        }
        // The bar behind is drawn dark on a dark scheme; the title is then the scheme's own light text.
        painter.setPen(ReadableColors::isDark(palette()) ? palette().color(QPalette::Active, QPalette::WindowText)
                                                         : QColor(0x2c, 0x34, 0x44));
    }
    painter.drawText(rect(), Qt::AlignCenter, text());
}

// --- FilterBar -------------------------------------------------------------------------------------

FilterBar::FilterBar(FilterBarModel *model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_overflowButton(new QToolButton(this))
    , m_overflowMenu(new QMenu(this))
{
    setObjectName(QStringLiteral("filterBar"));
    setAccessibleName(tr("Filter bar"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    FilterBarModel::Metrics metrics;
    metrics.buttonWidth = [this](const QString &title) { return FilterButton::widthFor(title, font()); };
    metrics.buttonHeight = ButtonHeight;
    metrics.dividerWidth = DividerSize.width();
    metrics.dividerHeight = DividerSize.height();
    metrics.overflowButtonWidth = OverflowSize.width();
    metrics.overflowButtonHeight = OverflowSize.height();
    m_model->setMetrics(metrics);

    m_overflowButton->setObjectName(QStringLiteral("filterBarOverflowButton"));
    m_overflowButton->setAccessibleName(tr("More filters"));
    m_overflowButton->setToolTip(tr("More filters"));
    m_overflowButton->setAutoRaise(true);
    m_overflowButton->setIcon(Icons::own(OverflowImage));
    m_overflowButton->setIconSize(OverflowSize);
    m_overflowButton->setFixedSize(OverflowSize);
    m_overflowButton->setStyleSheet(QStringLiteral("QToolButton { border: none; padding: 0; }"));
    m_overflowButton->hide();
    m_overflowMenu->setObjectName(QStringLiteral("filterBarOverflowMenu"));
    m_overflowMenu->setAccessibleName(tr("More filters"));
    // The pressed image is drawn before the menu opens; the menu opens from the next turn of the
    // event loop.
    connect(m_overflowButton, &QToolButton::pressed, this, [this] {
        m_overflowButton->setIcon(Icons::own(OverflowPressedImage));
        QTimer::singleShot(0, this, &FilterBar::showOverflowMenu);
    });
    connect(m_overflowButton, &QToolButton::clicked, this, [this] {
        // Keyboard activation (space) arrives as a click without a press of the mouse.
        if (!m_overflowMenu->isVisible() && m_overflowButton->hasFocus() && !m_overflowButton->isDown())
            showOverflowMenu();
    });

    connect(m_model, &FilterBarModel::layoutChanged, this, &FilterBar::rebuild);
    connect(m_model, &FilterBarModel::selectionChanged, this, &FilterBar::updateStates);
    setBlueBackground();
    rebuild();
}

QSize FilterBar::sizeHint() const
{
    return {400, BarHeight};
}

QSize FilterBar::minimumSizeHint() const
{
    return {OverflowSize.width() + FilterBarModel::FirstButtonX, BarHeight};
}

void FilterBar::setBlueBackground()
{
    m_topColor = ColorString::fromComponents(0.7137, 0.7529, 0.8118, 1);
    m_bottomColor = ColorString::fromComponents(0.7961, 0.8235, 0.8667, 1);
    update();
}

void FilterBar::setGrayBackground()
{
    m_topColor = ColorString::fromComponents(0.7098, 0.7098, 0.7098, 1);
    m_bottomColor = ColorString::fromComponents(0.8471, 0.8471, 0.8471, 1);
    update();
}

void FilterBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const std::optional<QColor> top = ColorString::toColor(m_topColor);
    const std::optional<QColor> bottom = ColorString::toColor(m_bottomColor);
    if (top && bottom) {
        // The gradient runs upward from the first colour at the bottom edge to the second at the top,
        // so the strip looks lit from above and sunk below the toolbar. On a dark scheme it is as dark
        // as it is light otherwise, still lit from above.
        const bool dark = ReadableColors::isDark(palette());
        QLinearGradient gradient(0, height(), 0, 0);
        gradient.setColorAt(0, dark ? ReadableColors::mirrored(*bottom) : *top);
        gradient.setColorAt(1, dark ? ReadableColors::mirrored(*top) : *bottom);
        painter.fillRect(rect(), gradient);
    }
    painter.setPen(Qt::black);
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

void FilterBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // Re-laying the bar out replays only its first titles (not the courses), so the rebuild that
    // follows could not find the chosen course any more. The choice is noted first and made again
    // afterwards; the list was never filtered otherwise, so that only redraws.
    QList<int> chosen;
    for (int segment = 0; segment < m_model->segments().size(); ++segment)
        chosen.append(m_model->getSelectedIndexInSegment(segment));
    m_model->setSize(width(), height());
    if (event->oldSize().width() == width())
        return;
    Q_EMIT widthChanged();
    for (int segment = 0; segment < chosen.size(); ++segment)
        if (chosen[segment] >= 0 && m_model->getSelectedIndexInSegment(segment) != chosen[segment])
            m_model->selectIndexInSegment(chosen[segment], segment);
}

void FilterBar::rebuild()
{
    // A click or a menu choice can rebuild the bar from inside its own signal, so the old buttons
    // and menu items go only once control is back in the event loop.
    for (FilterButton *button : std::as_const(m_buttons)) {
        button->hide();
        button->deleteLater();
    }
    m_buttons.clear();
    m_buttonPlaces.clear();
    qDeleteAll(m_dividers);
    m_dividers.clear();
    for (QAction *action : m_overflowMenu->actions()) {
        m_overflowMenu->removeAction(action);
        action->deleteLater();
    }

    // New buttons take the bar's own place in the window's tab order (after the search field, before
    // the list), not the end of the chain where new widgets go. The overflow button, made with the
    // bar, holds that place: the buttons go in after it and it moves behind them.
    QWidget *previous = m_overflowButton;
    const QList<FilterBarModel::Segment> &segments = m_model->segments();
    for (int segment = 0; segment < segments.size(); ++segment) {
        for (int position = 0; position < segments[segment].size(); ++position) {
            const FilterBarModel::Item &item = segments[segment][position];
            switch (item.kind) {
            case FilterBarModel::Kind::Button: {
                auto *button = new FilterButton(item.title, this);
                button->setObjectName(QStringLiteral("filterButton_%1_%2").arg(segment).arg(position));
                button->setGeometry(item.x, item.y, item.width, item.height);
                button->setOn(item.on);
                connect(button, &QAbstractButton::clicked, this,
                        [this, segment, position] { m_model->performAction(segment, position); });
                setTabOrder(previous, button);
                previous = button;
                button->show();
                m_buttons.append(button);
                m_buttonPlaces.append({segment, position});
                break;
            }
            case FilterBarModel::Kind::Divider: {
                auto *divider = new QLabel(this);
                divider->setObjectName(QStringLiteral("filterBarDivider"));
                divider->setAccessibleName(tr("Divider"));
                divider->setPixmap(Icons::own(DividerImage).pixmap(DividerSize));
                divider->setGeometry(item.x, item.y, item.width, item.height);
                divider->show();
                m_dividers.append(divider);
                break;
            }
            case FilterBarModel::Kind::MenuItem: {
                auto *action = new QAction(item.title, this);
                m_overflowMenu->addAction(action);
                action->setCheckable(true);
                action->setChecked(item.on);
                connect(action, &QAction::triggered, this, [this, segment, position] {
                    m_model->performAction(segment, position);
                    Q_EMIT overflowMenuUsed();
                });
                break;
            }
            case FilterBarModel::Kind::MenuSeparator:
                m_overflowMenu->addSeparator();
                break;
            }
        }
    }
    if (previous != m_overflowButton)
        setTabOrder(previous, m_overflowButton);
    if (m_model->hasOverflowMenu()) {
        m_overflowButton->move(m_model->overflowButtonX(), m_model->overflowButtonY());
        m_overflowButton->show();
        m_overflowButton->raise();
    } else {
        m_overflowButton->hide();
    }
    update();
}

void FilterBar::updateStates()
{
    const QList<FilterBarModel::Segment> &segments = m_model->segments();
    for (int i = 0; i < m_buttons.size(); ++i) {
        const auto [segment, position] = m_buttonPlaces[i];
        if (segment < segments.size() && position < segments[segment].size())
            m_buttons[i]->setOn(segments[segment][position].on);
    }
    int index = 0;
    const QList<QAction *> menuActions = m_overflowMenu->actions();
    for (const FilterBarModel::Segment &segment : segments)
        for (const FilterBarModel::Item &item : segment) {
            if (item.kind != FilterBarModel::Kind::MenuItem && item.kind != FilterBarModel::Kind::MenuSeparator)
                continue;
            if (index < menuActions.size() && item.kind == FilterBarModel::Kind::MenuItem)
                menuActions[index]->setChecked(item.on);
            ++index;
        }
}

void FilterBar::showOverflowMenu()
{
    if (m_model->hasOverflowMenu() && !m_overflowMenu->isVisible())
        m_overflowMenu->exec(m_overflowButton->mapToGlobal(QPoint(0, m_overflowButton->height())));
    m_overflowButton->setIcon(Icons::own(OverflowImage));
}
