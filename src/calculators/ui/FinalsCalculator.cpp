#include "calculators/ui/FinalsCalculator.h"

#include "calculators/FinalsRequirement.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

FinalsCalculator *FinalsCalculator::sharedController()
{
    static FinalsCalculator *instance = new FinalsCalculator;
    return instance;
}

FinalsCalculator::FinalsCalculator()
    : QWidget(nullptr, Qt::Window)
    , m_finalsGrade(new QLineEdit(this))
    , m_finalsPercentage(new QLineEdit(this))
    , m_finalsBox(new QGroupBox(ResultsTitle, this))
    , m_animation(new QPropertyAnimation(this, "geometry", this))
{
    setObjectName(QStringLiteral("FinalsCalculator"));
    setAccessibleName(WindowTitle);
    setWindowTitle(WindowTitle);

    m_finalsGrade->setObjectName(QStringLiteral("FinalsGrade"));
    m_finalsGrade->setAccessibleName(GradePrompt);
    m_finalsPercentage->setObjectName(QStringLiteral("FinalsPercentage"));
    m_finalsPercentage->setAccessibleName(PercentagePrompt);
    auto *form = new QFormLayout;
    form->addRow(GradePrompt, m_finalsGrade);
    form->addRow(PercentagePrompt, m_finalsPercentage);

    auto *calculate = new QPushButton(CalculateButton, this);
    calculate->setObjectName(QStringLiteral("calculateButton"));
    calculate->setAccessibleName(CalculateButton);
    calculate->setDefault(true);
    auto *clear = new QPushButton(ClearButton, this);
    clear->setObjectName(QStringLiteral("clearButton"));
    clear->setAccessibleName(ClearButton);
    connect(calculate, &QPushButton::clicked, this, &FinalsCalculator::calculateFinals);
    connect(clear, &QPushButton::clicked, this, &FinalsCalculator::clearFinals);
    connect(m_finalsGrade, &QLineEdit::returnPressed, this, &FinalsCalculator::calculateFinals);
    connect(m_finalsPercentage, &QLineEdit::returnPressed, this, &FinalsCalculator::calculateFinals);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(clear);
    buttons->addWidget(calculate);
    // Tab follows the row as it reads; Return calculates from either field anyway.
    setTabOrder(m_finalsPercentage, clear);
    setTabOrder(clear, calculate);

    m_finalsBox->setObjectName(QStringLiteral("FinalsBox"));
    m_finalsBox->setAccessibleName(ResultsTitle);
    auto *boxLayout = new QVBoxLayout(m_finalsBox);
    boxLayout->setSpacing(2);
    for (int target : FinalsRequirement::Targets) {
        auto *field = new QLabel(m_finalsBox);
        field->setObjectName(QStringLiteral("Finals%1").arg(target));
        field->setAccessibleName(QStringLiteral("Result for %1%").arg(target));
        field->setTextFormat(Qt::PlainText);
        field->setTextInteractionFlags(Qt::TextSelectableByMouse);
        boxLayout->addWidget(field);
        m_results.append(field);
    }

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->addLayout(form);
    layout->addLayout(buttons);
    layout->addWidget(m_finalsBox);
    layout->addStretch();

    m_animation->setDuration(200);
    m_animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_animation, &QPropertyAnimation::finished, this, [this] { setFixedSize(m_target.size()); });

    // Centred on the screen, compact, no results yet.
    setFixedSize(CompactSize);
    if (QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    m_target = geometry();
    m_finalsBox->hide();
}

void FinalsCalculator::setWindowSize(QSize size)
{
    // The top-right corner stays: the left edge moves by the change of width, the top not at all.
    const QRect current = geometry();
    const QRect target(current.x() - (size.width() - current.width()), current.y(), size.width(), size.height());
    m_target = target;
    if (current == target)
        return;
    m_animation->stop();
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    if (!isVisible()) {
        setGeometry(target);
        setFixedSize(target.size());
        return;
    }
    m_animation->setStartValue(current);
    m_animation->setEndValue(target);
    m_animation->start();
}

void FinalsCalculator::calculateFinals()
{
    const auto sentences = FinalsRequirement::sentences(m_finalsGrade->text(), m_finalsPercentage->text());
    if (!sentences) {
        m_finalsBox->hide();
        setWindowSize(CompactSize);
        return;
    }
    for (int i = 0; i < m_results.size(); ++i)
        m_results.at(i)->setText(sentences->at(i));
    m_finalsBox->show();
    setWindowSize(FullSize);
}

void FinalsCalculator::clearFinals()
{
    setWindowSize(CompactSize);
    m_finalsBox->hide();
    m_finalsGrade->clear();
    m_finalsPercentage->clear();
}
