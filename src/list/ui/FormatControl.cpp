#include "list/ui/FormatControl.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QToolButton>

FormatControl::FormatControl(QWidget *parent)
    : QWidget(parent)
    , m_group(new QButtonGroup(this))
{
    setObjectName(QStringLiteral("formatControl"));
    setAccessibleName(tr("View format"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    const QStringList titles{ListTitle, WeeklyTitle, MonthlyTitle};
    for (int segment = 0; segment < titles.size(); ++segment) {
        auto *button = new QToolButton(this);
        button->setText(titles[segment]);
        button->setCheckable(true);
        button->setAutoRaise(false);
        button->setObjectName(QStringLiteral("formatSegment") + titles[segment]);
        button->setAccessibleName(titles[segment] + tr(" format"));
        button->setFocusPolicy(Qt::TabFocus);
        m_group->addButton(button, segment);
        layout->addWidget(button);
    }
    m_group->setExclusive(true);
    m_group->button(0)->setChecked(true);
    // A segment turned on by a click, the keyboard or an assistive tool's toggle action chooses its
    // format; turning one on from the program does not.
    connect(m_group, &QButtonGroup::idToggled, this, [this](int segment, bool on) {
        if (on && !m_selecting)
            Q_EMIT formatChosen(segment);
    });
}

int FormatControl::selectedSegment() const
{
    return m_group->checkedId();
}

void FormatControl::setSelectedSegment(int segment)
{
    if (QAbstractButton *button = m_group->button(segment)) {
        m_selecting = true;
        button->setChecked(true);
        m_selecting = false;
    }
}

QToolButton *FormatControl::segmentButton(int segment) const
{
    return qobject_cast<QToolButton *>(m_group->button(segment));
}
