#include "list/ui/DateEditor.h"

#include "list/DatePullDowns.h"
#include "platform/Clock.h"
#include "widgets/Icons.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const QString TodayTitle = QStringLiteral("Today");
} // namespace

DateEditor::DateEditor(const QString &name, const QString &objectPrefix, QWidget *parent)
    : QWidget(parent)
    , m_faces(new QStackedWidget(this))
    , m_text(new QLineEdit)
    , m_today(new QToolButton)
    , m_up(new QToolButton)
    , m_down(new QToolButton)
    , m_month(new QComboBox)
    , m_day(new QComboBox)
    , m_year(new QComboBox)
{
    setObjectName(objectPrefix + QStringLiteral("Editor"));
    setAccessibleName(name);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_faces);

    auto *textFace = new QWidget;
    auto *textLayout = new QHBoxLayout(textFace);
    textLayout->setContentsMargins(0, 0, 0, 0);
    textLayout->setSpacing(2);
    m_text->setObjectName(objectPrefix + QStringLiteral("Field"));
    m_text->setAccessibleName(name);
    m_today->setObjectName(objectPrefix + QStringLiteral("TodayButton"));
    m_today->setText(TodayTitle);
    m_today->setAccessibleName(name + tr(": today"));
    m_today->setToolTip(tr("Set the date to today"));
    m_today->setIcon(Icons::themed(QStringLiteral("go-jump-today"), QStringLiteral("main-today")));
    m_today->setFocusPolicy(Qt::TabFocus);
    auto *stepper = new QWidget;
    stepper->setObjectName(objectPrefix + QStringLiteral("Stepper"));
    auto *stepperLayout = new QVBoxLayout(stepper);
    stepperLayout->setContentsMargins(0, 0, 0, 0);
    stepperLayout->setSpacing(0);
    for (auto [button, arrow, label, suffix] :
         {std::tuple{m_up, Qt::UpArrow, tr(": one day later"), QStringLiteral("LaterButton")},
          std::tuple{m_down, Qt::DownArrow, tr(": one day earlier"), QStringLiteral("EarlierButton")}}) {
        button->setArrowType(arrow);
        button->setObjectName(objectPrefix + suffix);
        button->setAccessibleName(name + label);
        button->setToolTip(button == m_up ? tr("One day later") : tr("One day earlier"));
        button->setFixedSize(18, 11);
        button->setFocusPolicy(Qt::TabFocus);
        stepperLayout->addWidget(button);
    }
    textLayout->addWidget(m_text, 1);
    textLayout->addWidget(m_today);
    textLayout->addWidget(stepper);
    m_faces->addWidget(textFace);

    auto *pullDownFace = new QWidget;
    auto *pullDownLayout = new QHBoxLayout(pullDownFace);
    pullDownLayout->setContentsMargins(0, 0, 0, 0);
    pullDownLayout->setSpacing(2);
    m_month->addItems(DatePullDowns::monthTitles());
    m_year->addItems(DatePullDowns::yearTitles(Clock::now().toLocalTime().date().year()));
    for (auto [menu, label, suffix] : {std::tuple{m_month, tr(": month"), QStringLiteral("MonthMenu")},
                                       std::tuple{m_day, tr(": day"), QStringLiteral("DayMenu")},
                                       std::tuple{m_year, tr(": year"), QStringLiteral("YearMenu")}}) {
        menu->setObjectName(objectPrefix + suffix);
        menu->setAccessibleName(name + label);
        menu->setCurrentIndex(-1);
        pullDownLayout->addWidget(menu, menu == m_day ? 0 : 1);
    }
    fillDays(QStringLiteral("Jan"));
    m_faces->addWidget(pullDownFace);
    // One line high whatever the face; the form must not hand it spare height.
    for (QWidget *widget : {static_cast<QWidget *>(this), static_cast<QWidget *>(m_faces), textFace, pullDownFace})
        widget->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    connect(m_text, &QLineEdit::editingFinished, this, &DateEditor::textEditingFinished);
    connect(m_today, &QToolButton::clicked, this, &DateEditor::todayClicked);
    connect(m_up, &QToolButton::clicked, this, [this] { Q_EMIT stepped(1); });
    connect(m_down, &QToolButton::clicked, this, [this] { Q_EMIT stepped(-1); });
    connect(m_month, &QComboBox::activated, this, [this] { Q_EMIT pullDownChanged(true); });
    connect(m_day, &QComboBox::activated, this, [this] { Q_EMIT pullDownChanged(false); });
    connect(m_year, &QComboBox::activated, this, [this] { Q_EMIT pullDownChanged(false); });
}

void DateEditor::setFace(int face)
{
    m_faces->setCurrentIndex(face == PullDownFace ? PullDownFace : TextFace);
}

int DateEditor::face() const
{
    return m_faces->currentIndex();
}

QString DateEditor::text() const
{
    return m_text->text();
}

void DateEditor::setText(const QString &text)
{
    if (m_text->text() != text) {
        m_text->setText(text);
        // Long dates read from their start.
        m_text->setCursorPosition(0);
    }
}

QString DateEditor::selectedTitle(const QComboBox *menu)
{
    return menu->currentIndex() >= 0 ? menu->currentText() : QString();
}

void DateEditor::selectTitle(QComboBox *menu, const QString &title)
{
    menu->setCurrentIndex(title.isEmpty() ? -1 : menu->findText(title));
}

QString DateEditor::monthTitle() const
{
    return selectedTitle(m_month);
}

QString DateEditor::dayTitle() const
{
    return selectedTitle(m_day);
}

QString DateEditor::yearTitle() const
{
    return selectedTitle(m_year);
}

void DateEditor::fillDays(const QString &month)
{
    const QStringList days = DatePullDowns::dayTitles(month.isEmpty() ? QStringLiteral("Jan") : month);
    QStringList current;
    for (int i = 0; i < m_day->count(); ++i)
        current.append(m_day->itemText(i));
    if (current != days) {
        m_day->clear();
        m_day->addItems(days);
    }
}

void DateEditor::setTitles(const QString &month, const QString &day, const QString &year)
{
    selectTitle(m_month, month);
    fillDays(month);
    selectTitle(m_day, day);
    if (!year.isEmpty() && m_year->findText(year) < 0)
        m_year->addItem(year);
    selectTitle(m_year, year);
}
