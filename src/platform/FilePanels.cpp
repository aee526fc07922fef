#include "platform/FilePanels.h"

#include <QLoggingCategory>
#include <QStringList>

#include <mutex>

Q_LOGGING_CATEGORY(lcPanels, "quillory.platform.panels")

namespace {
std::mutex g_mutex;
FilePanels::SavePresenter g_save;
FilePanels::OpenPresenter g_open;
QStringList g_answers;
bool g_testing = false;

template<typename Presenter, typename Request>
QString present(const Presenter &fallback, const Request &request)
{
    Presenter presenter;
    {
        std::lock_guard lock(g_mutex);
        if (g_testing || !g_answers.isEmpty())
            return g_answers.isEmpty() ? QString() : g_answers.takeFirst();
        presenter = fallback;
    }
    if (!presenter) {
        qCWarning(lcPanels) << "No file panel available";
        return QString();
    }
    return presenter(request);
}
} // namespace

QString FilePanels::runSave(const SaveRequest &request)
{
    QString path = present(g_save, request);
    if (!path.isEmpty() && !request.extension.isEmpty()
        && !path.endsWith(QLatin1Char('.') + request.extension, Qt::CaseInsensitive))
        path += QLatin1Char('.') + request.extension;
    return path;
}

QString FilePanels::runOpen(const OpenRequest &request)
{
    return present(g_open, request);
}

void FilePanels::setPresenters(SavePresenter save, OpenPresenter open)
{
    std::lock_guard lock(g_mutex);
    g_save = std::move(save);
    g_open = std::move(open);
}

void FilePanels::queueAnswer(const QString &path)
{
    std::lock_guard lock(g_mutex);
    g_testing = true;
    g_answers.append(path);
}

void FilePanels::resetForTest()
{
    std::lock_guard lock(g_mutex);
    g_testing = true;
    g_answers.clear();
}
