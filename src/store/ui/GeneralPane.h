#pragma once

#include "store/GeneralSettings.h"
#include "store/ui/PreferencePane.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The General pane: start-up view and format, date entry and display, warnings, the window
// transition and the other switches of "Preferences - General"; saved on every change. It also
// offers the reset and "Delete All Data".
class GeneralPane : public PreferencePane
{
    Q_OBJECT
public:
    explicit GeneralPane(QWidget *parent = nullptr);

    void updateLabels() override;

    // `setGeneral:`
    void setGeneral();
    // `setGeneralDefaultsAndSave:`
    void setGeneralDefaultsAndSave();
    // `deleteAllData:`
    void deleteAllData();

    // The current date in the typed custom format.
    QString customPreview() const;

private:
    void fill(const GeneralSettings &settings);
    GeneralSettings fromControls() const;
    void updateCustomFormat();
    QComboBox *popUp(const QString &objectName, const QString &accessibleName, const QStringList &items);
    QCheckBox *checkBox(const QString &objectName, const QString &text);

    QComboBox *m_defaultView;
    QComboBox *m_calendarFormat;
    QComboBox *m_dateEntry;
    QComboBox *m_dateFormat;
    QLineEdit *m_customFormat;
    QLabel *m_preview;
    QComboBox *m_transition;
    QCheckBox *m_duplicateDates;
    QCheckBox *m_warnings;
    QCheckBox *m_advancedICal;
    QCheckBox *m_doubleClick;
    QCheckBox *m_alternateRows;
    QCheckBox *m_hideWeekends;
    QCheckBox *m_checkForUpdates;
    QLineEdit *m_subprojectFormat;
    QPushButton *m_reset;
    QPushButton *m_deleteAll;
    bool m_filling = false;
};
