#include "OpenRequests.h"

#include "exchange/Backup.h"
#include "platform/Alerts.h"
#include "platform/PropertyList.h"

#include <QApplication>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTimer>
#include <QWidget>

Q_LOGGING_CATEGORY(lcOpen, "quillory.app.open")

namespace {
// While a question is open the request waits; this is how often it looks again.
constexpr int ModalRetryMs = 300;
} // namespace

OpenRequests::OpenRequests(QObject *parent)
    : QObject(parent)
{
}

void OpenRequests::add(const QStringList &files, bool raise)
{
    m_pending.append(files);
    m_raise = m_raise || raise;
    if (raise)
        qCInfo(lcOpen) << "A later start asks for the window" << files;
    scheduleProcessing();
}

void OpenRequests::windowShown(QWidget *window)
{
    m_window = window;
    scheduleProcessing();
}

void OpenRequests::scheduleProcessing(int delayMs)
{
    // Never from inside the socket's or the start-up's own call: the import asks questions in a
    // nested event loop, which is only safe from a clean turn of the main loop.
    if (m_scheduled)
        return;
    m_scheduled = true;
    QTimer::singleShot(delayMs, this, [this] {
        m_scheduled = false;
        process();
    });
}

void OpenRequests::process()
{
    if (Alerts::isQuitting()) {
        m_pending.clear();
        return;
    }
    if (!m_window)
        return; // start-up has not shown the window yet; windowShown() comes back here
    QWidget *modal = QApplication::activeModalWidget();
    if (m_raise) {
        m_raise = false;
        if (m_window->isMinimized())
            m_window->showNormal();
        QWidget *front = modal ? modal : m_window.data();
        front->raise();
        front->activateWindow();
        qCInfo(lcOpen) << "Raised the window for a later start";
    }
    if (m_pending.isEmpty())
        return;
    if (modal) {
        // A question is being answered (maybe the previous file's); the next file waits for it.
        scheduleProcessing(ModalRetryMs);
        return;
    }
    const QString path = m_pending.takeFirst();
    open(path);
    if (!m_pending.isEmpty())
        scheduleProcessing();
}

void OpenRequests::open(const QString &path)
{
    qCInfo(lcOpen) << "Opening" << path;
    const QString name = QFileInfo(path).fileName();
    if (!isBackup(path)) {
        const bool calendar = name.endsWith(QLatin1String(".ics"), Qt::CaseInsensitive)
            || name.endsWith(QLatin1String(".ical"), Qt::CaseInsensitive);
        Alerts::inform(Backup::ErrorTitle, (calendar ? CalendarFileMessage : NotABackupMessage).arg(name));
        return;
    }
    const Backup::ImportOutcome outcome = Backup::sharedController()->importFromFile(path);
    qCInfo(lcOpen) << "Import of" << path << "ended with outcome" << int(outcome);
}

bool OpenRequests::isBackup(const QString &path)
{
    QString why;
    const auto parsed = PropertyList::readFile(path, &why);
    if (!parsed || parsed->typeId() != QMetaType::QVariantList) {
        qCInfo(lcOpen) << path << "is not a property-list array:" << (parsed ? QStringLiteral("another root") : why);
        return false;
    }
    const QVariantList lists = parsed->toList();
    if (lists.size() < 3)
        return false;
    for (int i = 0; i < 3; ++i) {
        if (lists.at(i).typeId() != QMetaType::QVariantList)
            return false;
    }
    return true;
}
