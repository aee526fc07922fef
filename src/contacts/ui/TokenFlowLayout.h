#pragma once

#include <QLayout>
#include <QList>

// Lays its items out left to right and wraps to a new line when the width runs out, the way the
// words of a paragraph flow. The last item may stretch over what is left of its line (the typing
// part of a token field).
class TokenFlowLayout : public QLayout
{
public:
    explicit TokenFlowLayout(QWidget *parent = nullptr, int spacing = 3);
    ~TokenFlowLayout() override;

    void addItem(QLayoutItem *item) override;
    void insertWidget(int index, QWidget *widget);
    int count() const override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;
    // The narrowest the last item may be before it moves to a line of its own.
    void setLastItemMinimumWidth(int width) { m_lastMinimum = width; }

private:
    int doLayout(const QRect &rect, bool apply) const;

    QList<QLayoutItem *> m_items;
    int m_spacing;
    int m_lastMinimum = 80;
};
