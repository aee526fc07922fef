#include "platform/Workspace.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QLoggingCategory>
#include <QThread>

#include <mutex>

Q_LOGGING_CATEGORY(lcWorkspace, "quillory.platform.workspace")

namespace {
std::mutex g_mutex;
bool g_recording = false;
QList<Workspace::Opened> g_opened;

bool handOver(const QUrl &url, const QString &application)
{
    {
        std::lock_guard lock(g_mutex);
        if (g_recording) {
            g_opened.append({url, application});
            return true;
        }
    }
    QCoreApplication *app = QCoreApplication::instance();
    if (!app) {
        qCWarning(lcWorkspace) << "No application to open" << url;
        return false;
    }
    if (QThread::currentThread() != app->thread()) {
        // The desktop services belong to the interface thread; a worker only asks for the opening.
        QMetaObject::invokeMethod(app, [url] {
            if (!QDesktopServices::openUrl(url))
                qCWarning(lcWorkspace) << "The desktop could not open" << url;
        }, Qt::QueuedConnection);
        return true;
    }
    const bool opened = QDesktopServices::openUrl(url);
    if (!opened)
        qCWarning(lcWorkspace) << "The desktop could not open" << url;
    return opened;
}
} // namespace

bool Workspace::openUrl(const QUrl &url)
{
    return handOver(url, QString());
}

bool Workspace::openFile(const QString &path, const QString &application)
{
    // xdg-open chooses by the file's type, so the calendar application is the default handler of
    // the .ics file; no other named application is asked for by the program.
    if (!application.isEmpty() && application != CalendarApplication)
        qCWarning(lcWorkspace) << "No application named" << application << "here; using the default for" << path;
    return handOver(QUrl::fromLocalFile(path), application);
}

void Workspace::recordForTest()
{
    std::lock_guard lock(g_mutex);
    g_recording = true;
    g_opened.clear();
}

void Workspace::stopRecordingForTest()
{
    std::lock_guard lock(g_mutex);
    g_recording = false;
}

QList<Workspace::Opened> Workspace::takeOpened()
{
    std::lock_guard lock(g_mutex);
    return std::exchange(g_opened, {});
}
