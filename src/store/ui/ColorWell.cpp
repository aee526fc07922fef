#include "store/ui/ColorWell.h"

#include "platform/ColorString.h"

#include <QColorDialog>
#include <QPainter>
#include <QStyleOptionToolButton>

namespace {
const QString PickerTitle = QStringLiteral("Colors");
}

ColorWell::ColorWell(QWidget *parent)
    : QToolButton(parent)
{
    setFixedSize(44, 22);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QToolButton::clicked, this, &ColorWell::pick);
}

void ColorWell::setColorText(const QString &text, const QColor &fallback)
{
    m_text = text;
    m_fallback = fallback;
    update();
}

QColor ColorWell::color() const
{
    if (const auto color = ColorString::toColor(m_text))
        return *color;
    return m_fallback;
}

void ColorWell::chooseColor(const QColor &color)
{
    if (!color.isValid())
        return;
    m_text = ColorString::fromColor(color);
    update();
    Q_EMIT colorChosen(m_text);
}

void ColorWell::pick()
{
    const QColor initial = color().isValid() ? color() : QColor(Qt::white);
    const QColor chosen = QColorDialog::getColor(initial, this, PickerTitle, QColorDialog::ShowAlphaChannel);
    if (chosen.isValid())
        chooseColor(chosen);
}

void ColorWell::paintEvent(QPaintEvent *event)
{
    QToolButton::paintEvent(event);
    QPainter painter(this);
    const QRect swatch = rect().adjusted(5, 5, -5, -5);
    const QColor shown = color();
    if (shown.isValid()) {
        painter.fillRect(swatch, shown);
    } else {
        // No colour stored: an empty well with a diagonal, as wells show "nothing".
        painter.fillRect(swatch, palette().base());
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(swatch.bottomLeft(), swatch.topRight());
    }
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
}
