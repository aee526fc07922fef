#pragma once

#include "store/ui/PreferencePane.h"

class QLabel;
class QLineEdit;

// The Personal Info pane: name, school and student ID for the sidebar, captioned by the user's
// labels and saved on every change.
class PersonalInfoPane : public PreferencePane
{
    Q_OBJECT
public:
    explicit PersonalInfoPane(QWidget *parent = nullptr);

    void updateLabels() override;
    // `setPersonalInfo`
    void setPersonalInfo();

private:
    QLineEdit *m_name;
    QLineEdit *m_school;
    QLineEdit *m_studentID;
    QLabel *m_nameCaption;
    QLabel *m_schoolCaption;
    QLabel *m_studentIDCaption;
    bool m_filling = false;
};
