#pragma once

#include <QString>

// The fixed texts of the crash reporter, the debug window and their e-mails.
namespace SupportTexts {

// No one answers at this address: the reserved .invalid domain never resolves, so a report can
// only ever go where the user's own mail set-up sends it.
inline const QString ReportAddress = QStringLiteral("reports@quillory.invalid");
inline const QString CrashReportSubject = QStringLiteral("Quillory - Crash Report");
inline const QString ConfigurationSubject = QStringLiteral("Quillory - Configuration");
inline constexpr auto MailerHeader = "X-Mailer";
inline constexpr auto MailerName = "Apple Message";
inline const QString DataAttachmentName = QStringLiteral("Quillory");
inline const QString PreferencesAttachmentName = QStringLiteral("com.brevandt.Quillory.plist");
// The comments, then the build version.
inline const QString ConfigurationBodyFormat = QStringLiteral("%1\n\n -- version %2 --\n\n");

inline const QString DeletePreferencesMessage = QStringLiteral("Delete Preferences?");
inline const QString DeletePreferencesText =
    QStringLiteral("Are you sure you want to delete all of your preferences?  This cannot be undone.");
inline const QString DeleteDataMessage = QStringLiteral("Delete Data?");
inline const QString DeleteDataText = QStringLiteral(
    "Are you sure you want to delete all of your assignments, courses and textbooks?  This cannot be undone.");
inline const QString YesButton = QStringLiteral("Yes");
inline const QString NoButton = QStringLiteral("No");
inline const QString OkButton = QStringLiteral("OK");
inline const QString ConfigurationSentMessage = QStringLiteral("Configuration Sent");
inline const QString ConfigurationSentText =
    QStringLiteral("Your configuration has been sent to Brevandt.  Thank you very much.");
inline const QString ConfigurationFailedMessage = QStringLiteral("Configuration Sending Failed");
inline const QString ConfigurationFailedText = QStringLiteral(
    "The sending of your configuration failed.  Please verify your internet connection and try again.");

} // namespace SupportTexts
