#include "platform/Alerts.h"

#include <QLoggingCategory>

#include <mutex>

Q_LOGGING_CATEGORY(lcAlerts, "quillory.platform.alerts")

namespace {
std::mutex g_mutex;
Alerts::Presenter g_presenter;
QStringList g_answers;
QList<Alerts::Request> g_asked;
bool g_testing = false;
bool g_quitting = false;
} // namespace

QString Alerts::run(const Request &request)
{
    Presenter presenter;
    {
        std::lock_guard lock(g_mutex);
        g_asked.append(request);
        if (g_quitting) {
            qCInfo(lcAlerts) << "Not asked while quitting:" << request.title << request.message;
            return QString();
        }
        if (g_testing || !g_answers.isEmpty()) {
            if (g_answers.isEmpty()) {
                qCWarning(lcAlerts) << "Unanswered alert:" << request.title << request.message;
                return QString();
            }
            return g_answers.takeFirst();
        }
        presenter = g_presenter;
    }
    if (!presenter) {
        qCWarning(lcAlerts) << "No one to show the alert:" << request.title << request.message
                            << request.informativeText;
        return QString();
    }
    // One line per alert shown, so that a log tells what the program was waiting for.
    qCInfo(lcAlerts).noquote() << "Asking:" << request.title << request.message.section(QLatin1Char('\n'), 0, 0);
    return presenter(request);
}

bool Alerts::askYesNo(const QString &title, const QString &message)
{
    static const QString yes = QStringLiteral("Yes");
    static const QString no = QStringLiteral("No");
    return run({title, message, QString(), {yes, no}, Style::Warning}) == yes;
}

void Alerts::inform(const QString &title, const QString &message, Style style)
{
    run({title, message, QString(), {QStringLiteral("OK")}, style});
}

void Alerts::cancelForQuit()
{
    std::lock_guard lock(g_mutex);
    g_quitting = true;
}

bool Alerts::isQuitting()
{
    std::lock_guard lock(g_mutex);
    return g_quitting;
}

void Alerts::setPresenter(Presenter presenter)
{
    std::lock_guard lock(g_mutex);
    g_presenter = std::move(presenter);
}

void Alerts::queueAnswer(const QString &buttonText)
{
    std::lock_guard lock(g_mutex);
    g_testing = true;
    g_answers.append(buttonText);
}

QList<Alerts::Request> Alerts::takeAsked()
{
    std::lock_guard lock(g_mutex);
    return std::exchange(g_asked, {});
}

void Alerts::resetForTest()
{
    std::lock_guard lock(g_mutex);
    g_testing = true;
    g_quitting = false;
    g_answers.clear();
    g_asked.clear();
}
