#include "sync/ui/SyncProgressSheet.h"

#include "sync/Syncing.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int SheetWidth = 360;
QPointer<SyncProgressSheet> g_current;

void onInterfaceThread(std::function<void()> work)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app)
        return;
    if (QThread::currentThread() == app->thread())
        work();
    else
        QMetaObject::invokeMethod(app, std::move(work), Qt::QueuedConnection);
}

void showSheet(const QString &title)
{
    if (g_current)
        g_current->deleteLater();
    auto *sheet = new SyncProgressSheet(title);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    g_current = sheet;
    sheet->adjustSize();
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        QRect frame = sheet->frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        sheet->move(frame.topLeft());
    }
    sheet->show();
    sheet->raise();
    sheet->activateWindow();
    // The sequence runs on this thread right after: let the sheet paint first.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void hideSheet()
{
    if (!g_current)
        return;
    g_current->done(1);
    g_current->hide();
    g_current->deleteLater();
    g_current = nullptr;
}

QWidget *visibleMainWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (qobject_cast<QMainWindow *>(window) && window->isVisible())
            return window;
    }
    return nullptr;
}

// A message that leaves everything usable: the program goes on while it is read. It stands over the
// main window, so that a notice from the start-up's download is not hidden by the window shown
// after it: until that window is up (a few seconds at most) the notice waits for it.
void showNotice(const QString &title, const QString &text, int attemptsLeft = 50)
{
    QWidget *parent = visibleMainWindow();
    if (!parent && attemptsLeft > 0) {
        QTimer::singleShot(200, qApp, [title, text, attemptsLeft] { showNotice(title, text, attemptsLeft - 1); });
        return;
    }
    auto *box = new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    box->setObjectName(QStringLiteral("syncNotice"));
    box->setAccessibleName(title);
    box->setAccessibleDescription(text);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::NonModal);
    box->show();
}

} // namespace

SyncProgressSheet::SyncProgressSheet(const QString &title, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_progressLabel(new QLabel(title))
    , m_progressBar(new QProgressBar)
{
    setObjectName(QStringLiteral("progressSheet"));
    setAccessibleName(title);
    setWindowTitle(title);
    m_progressLabel->setObjectName(QStringLiteral("progressLabel"));
    m_progressLabel->setAccessibleName(QStringLiteral("Sync progress"));
    QFont bold = m_progressLabel->font();
    bold.setBold(true);
    m_progressLabel->setFont(bold);
    m_progressBar->setObjectName(QStringLiteral("progressBar"));
    m_progressBar->setAccessibleName(QStringLiteral("Sync in progress"));
    m_progressBar->setRange(0, 0); // indeterminate: it animates by itself
    m_progressBar->setTextVisible(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 18);
    layout->setSpacing(12);
    layout->addWidget(m_progressLabel);
    layout->addWidget(m_progressBar);
    setFixedWidth(SheetWidth);
}

QString SyncProgressSheet::title() const
{
    return m_progressLabel->text();
}

SyncProgressSheet *SyncProgressSheet::current()
{
    return g_current;
}

void SyncProgressSheet::install()
{
    Syncing::setProgressPresenter({[](const QString &title) { onInterfaceThread([title] { showSheet(title); }); },
                                   [] { onInterfaceThread(hideSheet); }});
    Syncing::setNoticePresenter([](const QString &title, const QString &text) {
        onInterfaceThread([title, text] { showNotice(title, text); });
    });
}
