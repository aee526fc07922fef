#pragma once

#include "caldav/CalDavAccount.h"
#include "store/ui/PreferencePane.h"

#include <QFutureWatcher>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

// Preferences ▸ Calendar Server: the account whose to-do calendar the assignments are synced with.
// "Check" finds the account's to-do calendars off the interface thread; picking one (or creating
// "Quillory") saves the account, the password going only to the keychain.
class CalendarServerPane : public PreferencePane
{
    Q_OBJECT
public:
    static inline const QString Identifier = QStringLiteral("CalendarServer");
    static inline const QString PaneName = QStringLiteral("Calendar Server");

    explicit CalendarServerPane(QWidget *parent = nullptr);
    ~CalendarServerPane() override;
    static void registerWithPreferencesWindow();

    // For tests and screenshots: the check running, and what it found.
    bool isChecking() const { return m_check.isRunning(); }

private:
    void check();
    void checked();
    void create();
    void choose();
    void showCalendars(const QList<CalDavAccount::Calendar> &calendars, const QString &chosen);

    QLineEdit *m_address;
    QLineEdit *m_user;
    QLineEdit *m_password;
    QPushButton *m_checkButton;
    QLabel *m_status;
    QListWidget *m_calendars;
    QPushButton *m_createButton;
    QFutureWatcher<CalDavAccount::Discovery> m_check;
    QUrl m_home;
    bool m_creating = false;
};
