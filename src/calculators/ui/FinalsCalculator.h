#pragma once

#include <QList>
#include <QSize>
#include <QWidget>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPropertyAnimation;

// The final-exam window: the current course grade and the final's weight in, six sentences out, one
// for each overall result of 100, 90, 80, 70, 60 and 50 per cent. The window is compact until there
// is a result and grows downward to show it, keeping its top-right corner.
class FinalsCalculator : public QWidget
{
    Q_OBJECT

public:
    static inline const QString WindowTitle = QStringLiteral("Finals Calculator");
    static inline const QString GradePrompt = QStringLiteral("Current grade in the class (%):");
    static inline const QString PercentagePrompt = QStringLiteral("The final is worth (%):");
    static inline const QString CalculateButton = QStringLiteral("Calculate");
    static inline const QString ClearButton = QStringLiteral("Clear");
    static inline const QString ResultsTitle = QStringLiteral("To get...");
    static constexpr QSize CompactSize{416, 205};
    static constexpr QSize FullSize{416, 347};

    static FinalsCalculator *sharedController();

    void calculateFinals();
    void clearFinals();

    QLineEdit *gradeField() const { return m_finalsGrade; }
    QLineEdit *percentageField() const { return m_finalsPercentage; }
    QGroupBox *finalsBox() const { return m_finalsBox; }
    // Finals100 ... Finals50, in target order.
    QList<QLabel *> resultFields() const { return m_results; }
    // Where the window is going (the animation may still be on its way there).
    QRect targetGeometry() const { return m_target; }

private:
    FinalsCalculator();
    void setWindowSize(QSize size);

    QLineEdit *m_finalsGrade;
    QLineEdit *m_finalsPercentage;
    QGroupBox *m_finalsBox;
    QList<QLabel *> m_results;
    QPropertyAnimation *m_animation;
    QRect m_target;
};
