#pragma once

#include <QWidget>

class QButtonGroup;
class QToolButton;

// The toolbar's format control: three joined buttons, List, Weekly and Monthly; one is always
// chosen. Segment 0 is the list, 1 the weekly and 2 the monthly calendar.
class FormatControl : public QWidget
{
    Q_OBJECT
public:
    static inline const QString ListTitle = QStringLiteral("List");
    static inline const QString WeeklyTitle = QStringLiteral("Weekly");
    static inline const QString MonthlyTitle = QStringLiteral("Monthly");

    explicit FormatControl(QWidget *parent = nullptr);

    int selectedSegment() const;
    // Selects without sending formatChosen.
    void setSelectedSegment(int segment);
    QToolButton *segmentButton(int segment) const;

Q_SIGNALS:
    // The user chose a segment.
    void formatChosen(int segment);

private:
    QButtonGroup *m_group;
    bool m_selecting = false;
};
