#pragma once

#include <QString>

// The two report e-mails, put together and handed to the mail service. Both wait for the service,
// and neither touches a window, so the configuration report runs on a worker thread.
namespace SupportReports {

// The description, a blank line, the crash log.
QString crashReportBody(const QString &description, const QString &crashLog);
// The comments and the build version, as the configuration report's body.
QString configurationBody(const QString &comments, const QString &version);

// With `withData`, the data folder (as a tar archive named "Quillory") and the preferences file
// are attached. A file that is not there is left out; false when the message could not be made or
// the service did not take it.
bool sendCrashReport(const QString &description, const QString &crashLog, bool withData);
// Always with both attachments.
bool sendConfiguration(const QString &comments, const QString &version);

} // namespace SupportReports
