#include "support/SupportReports.h"

#include "BuildInfo.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "support/MailDelivery.h"
#include "support/ReportMessage.h"
#include "support/ReportRedaction.h"
#include "support/SupportLog.h"
#include "support/SupportTexts.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

namespace SupportReports {

namespace {

// The data folder as one tar archive in `folder`; empty when there is no data folder or tar failed.
QString packDataFolder(const QTemporaryDir &folder)
{
    const QFileInfo data(Paths::dataFolder());
    if (!data.isDir()) {
        qCInfo(lcSupport) << "No data folder to attach";
        return QString();
    }
    const QString archive = folder.filePath(QStringLiteral("Quillory.tar"));
    QProcess tar;
    tar.setProcessChannelMode(QProcess::MergedChannels);
    tar.start(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-cf"), archive, QStringLiteral("-C"),
                                               data.absolutePath(), data.fileName()});
    if (!tar.waitForFinished(300000) || tar.exitStatus() != QProcess::NormalExit || tar.exitCode() != 0) {
        qCWarning(lcSupport).noquote() << "Could not pack the data folder:" << tar.errorString()
                                       << QString::fromLocal8Bit(tar.readAll());
        return QString();
    }
    return archive;
}

// The preferences file as it is, or, when it holds addresses with secrets in them, a copy in
// `folder` without those; empty when there is none or it cannot be read (and so not checked).
QString preferencesWithoutSecrets(const QTemporaryDir &folder)
{
    const QString preferences = Paths::preferencesFile(QString::fromLatin1(BuildInfo::BundleIdentifier));
    if (!QFileInfo::exists(preferences)) {
        qCInfo(lcSupport) << "No preferences file to attach";
        return QString();
    }
    QString error;
    const std::optional<QVariant> read = PropertyList::readFile(preferences, &error);
    if (!read) {
        qCWarning(lcSupport).noquote() << "The preferences file is not attached: it cannot be read:" << error;
        return QString();
    }
    bool changed = false;
    const QVariant kept = ReportRedaction::withoutSecrets(*read, &changed);
    if (!changed)
        return preferences;
    const QString copy = folder.filePath(QFileInfo(preferences).fileName());
    if (!PropertyList::writeFile(copy, kept, &error)) {
        qCWarning(lcSupport).noquote() << "The preferences file is not attached:" << error;
        return QString();
    }
    return copy;
}

void attachData(ReportMessage &message, const QTemporaryDir &folder)
{
    const QString archive = packDataFolder(folder);
    if (!archive.isEmpty())
        message.attach(archive, SupportTexts::DataAttachmentName, QStringLiteral("application/x-tar"));
    const QString preferences = preferencesWithoutSecrets(folder);
    if (!preferences.isEmpty())
        message.attach(preferences, SupportTexts::PreferencesAttachmentName, QStringLiteral("application/xml"));
}

bool deliver(const QString &subject, const QString &body, bool withData)
{
    QTemporaryDir folder;
    if (!folder.isValid()) {
        qCWarning(lcSupport) << "No temporary folder for the report:" << folder.errorString();
        return false;
    }
    ReportMessage message(SupportTexts::ReportAddress, subject, body);
    message.setDate(Clock::now());
    if (withData)
        attachData(message, folder);
    const QString file = folder.filePath(QStringLiteral("report.eml"));
    QString error;
    if (!message.writeTo(file, &error)) {
        qCWarning(lcSupport).noquote() << "Could not make the report:" << error;
        return false;
    }
    const bool sent = MailDelivery::send(file);
    qCInfo(lcSupport).noquote() << (sent ? "Sent" : "Could not send") << subject;
    return sent;
}

} // namespace

QString crashReportBody(const QString &description, const QString &crashLog)
{
    return description + QStringLiteral("\n\n") + crashLog;
}

QString configurationBody(const QString &comments, const QString &version)
{
    return SupportTexts::ConfigurationBodyFormat.arg(comments, version);
}

bool sendCrashReport(const QString &description, const QString &crashLog, bool withData)
{
    return deliver(SupportTexts::CrashReportSubject, crashReportBody(description, crashLog), withData);
}

bool sendConfiguration(const QString &comments, const QString &version)
{
    return deliver(SupportTexts::ConfigurationSubject, configurationBody(comments, version), true);
}

} // namespace SupportReports
