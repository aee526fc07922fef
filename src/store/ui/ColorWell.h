#pragma once

#include <QColor>
#include <QString>
#include <QToolButton>

// A colour well: a swatch that opens the colour picker when clicked. It keeps the colour as the
// preferences store it (the colour-string text), so a colour the user never touched is written back
// exactly as it was read, grey-scale texts included.
class ColorWell : public QToolButton
{
    Q_OBJECT
public:
    explicit ColorWell(QWidget *parent = nullptr);

    // The text shown; a null text shows `fallback` and counts as "no colour stored".
    void setColorText(const QString &text, const QColor &fallback = QColor());
    QString colorText() const { return m_text; }
    QColor color() const;

    // What the user's choice in the picker does: the text becomes the colour's colour string and
    // colorChosen is emitted.
    void chooseColor(const QColor &color);

Q_SIGNALS:
    void colorChosen(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void pick();

    QString m_text;
    QColor m_fallback;
};
