#include "OpenRequests.h"

#include "exchange/Backup.h"
#include "list/ui/CalendarImport.h"
#include "list/ui/MainWindow.h"
#include "platform/Alerts.h"
#include "platform/PropertyList.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
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

void OpenRequests::add(const QStringList &files, bool raise, const Raiser &raiser)
{
    m_pending.append(files);
    m_raise = m_raise || raise;
    // The newest later start's token is the one for the user's latest click.
    if (raise && raiser)
        m_raiser = raiser;
    if (raise)
        qCInfo(lcOpen) << "A later start asks for the window" << files;
    scheduleProcessing();
}

void OpenRequests::windowShown(QWidget *window)
{
    if (window && window != m_window) {
        // Drops land here where no control of the window takes them itself (the attachment field
        // keeps its own, and the calendars their assignments).
        window->setAcceptDrops(true);
        window->installEventFilter(this);
    }
    m_window = window;
    scheduleProcessing();
}

QStringList OpenRequests::localFiles(const QMimeData *data)
{
    QStringList files;
    if (!data || !data->hasUrls())
        return files;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls) {
        // A link from a browser is no file of ours to read; such a drag is not taken at all.
        if (!url.isLocalFile())
            return {};
        files.append(url.toLocalFile());
    }
    return files;
}

bool OpenRequests::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDragMoveEvent *>(event);
        // Every local file is taken, backup or not: one that is not gets the same message as on the
        // command line, which says why better than a cursor that only refuses.
        if (!localFiles(drag->mimeData()).isEmpty() && (drag->possibleActions() & Qt::CopyAction)) {
            drag->setDropAction(Qt::CopyAction);
            drag->accept();
        } else {
            drag->ignore();
        }
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const QStringList files = localFiles(drop->mimeData());
        if (files.isEmpty()) {
            drop->ignore();
            return true;
        }
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        qCInfo(lcOpen) << "Dropped on the window:" << files;
        // Opened from the main loop once the drop has returned: the file manager waits for the
        // drop to end, and the import's questions must not keep it waiting.
        add(files, false);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
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
        QString how = QStringLiteral("activated");
        if (m_raiser) {
            how = m_raiser(front);
            m_raiser = nullptr;
        } else {
            front->raise();
            front->activateWindow();
        }
        qCInfo(lcOpen).noquote() << "Raised the window for a later start:" << how;
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
    if (isCalendarFile(name)) {
        // A course calendar goes to the import's preview, which asks before anything is added.
        if (auto *window = qobject_cast<MainWindow *>(m_window.data())) {
            CalendarImport::previewFile(window, *window->controller(), path);
            return;
        }
    }
    if (!isBackup(path)) {
        Alerts::inform(Backup::ErrorTitle, NotABackupMessage.arg(name));
        return;
    }
    const Backup::ImportOutcome outcome = Backup::sharedController()->importFromFile(path);
    qCInfo(lcOpen) << "Import of" << path << "ended with outcome" << int(outcome);
}

bool OpenRequests::isCalendarFile(const QString &name)
{
    return name.endsWith(QLatin1String(".ics"), Qt::CaseInsensitive)
        || name.endsWith(QLatin1String(".ical"), Qt::CaseInsensitive)
        || name.endsWith(QLatin1String(".ifb"), Qt::CaseInsensitive);
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
