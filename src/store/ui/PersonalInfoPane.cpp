#include "store/ui/PersonalInfoPane.h"

#include "contacts/ui/AddressBookFolderChooser.h"
#include "store/Labels.h"
#include "store/PersonalInfoSettings.h"
#include "store/PreferenceKeys.h"
#include "store/ui/Named.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString PaneName = QStringLiteral("Personal Info");
const QString Explanation = QStringLiteral("This information is shown in the sidebar of the main window.");
} // namespace

PersonalInfoPane::PersonalInfoPane(QWidget *parent)
    : PreferencePane(parent)
{
    named(this, QStringLiteral("personalInfoView"), PaneName);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    m_name = named(new QLineEdit, QStringLiteral("personalName"), QString());
    m_school = named(new QLineEdit, QStringLiteral("personalSchool"), QString());
    m_studentID = named(new QLineEdit, QStringLiteral("personalStudentID"), QString());
    m_nameCaption = captionFor(m_name, QString());
    m_schoolCaption = captionFor(m_school, QString());
    m_studentIDCaption = captionFor(m_studentID, QString());
    form->addRow(m_nameCaption, m_name);
    form->addRow(m_schoolCaption, m_school);
    form->addRow(m_studentIDCaption, m_studentID);
    layout->addLayout(form);
    auto *explanation = named(new QLabel(Explanation), QStringLiteral("personalInfoExplanation"), Explanation);
    explanation->setWordWrap(true);
    layout->addWidget(explanation);
    // Where the contacts field finds the people the student names.
    layout->addSpacing(12);
    layout->addWidget(new AddressBookFolderChooser);
    layout->addStretch();

    m_filling = true;
    const PersonalInfoSettings info = PersonalInfoSettings::load();
    m_name->setText(info.name);
    m_school->setText(info.school);
    m_studentID->setText(info.studentID);
    m_filling = false;
    for (QLineEdit *field : {m_name, m_school, m_studentID})
        connect(field, &QLineEdit::textChanged, this, &PersonalInfoPane::setPersonalInfo);
    updateLabels();
}

void PersonalInfoPane::updateLabels()
{
    const std::pair<QLineEdit *, QLabel *> rows[] = {
        {m_name, m_nameCaption}, {m_school, m_schoolCaption}, {m_studentID, m_studentIDCaption}};
    const QString keys[] = {LabelKeys::Name, LabelKeys::School, LabelKeys::StudentID};
    for (int i = 0; i < 3; ++i) {
        const QString label = Labels::label(keys[i]);
        rows[i].second->setText(label + QLatin1Char(':'));
        rows[i].first->setAccessibleName(label);
        rows[i].first->setPlaceholderText(label.toLower());
    }
}

void PersonalInfoPane::setPersonalInfo()
{
    if (m_filling)
        return;
    PersonalInfoSettings{m_name->text(), m_school->text(), m_studentID->text()}.save();
}
