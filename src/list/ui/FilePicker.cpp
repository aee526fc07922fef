#include "list/ui/FilePicker.h"

#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "platform/Workspace.h"
#include "widgets/Icons.h"

#include <QDragEnterEvent>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QToolButton>

namespace {
const QString NoFileText = QStringLiteral("No file — drop one here");
} // namespace

FilePicker::FilePicker(QWidget *parent)
    : QFrame(parent)
    , m_icon(new QLabel(this))
    , m_name(new QLabel(this))
    , m_choose(new QToolButton(this))
    , m_open(new QToolButton(this))
    , m_clear(new QToolButton(this))
{
    setObjectName(QStringLiteral("filePicker"));
    setAccessibleName(tr("Attached file"));
    setFrameShape(QFrame::StyledPanel);
    setAcceptDrops(true);
    m_icon->setFixedSize(20, 20);
    m_name->setObjectName(QStringLiteral("filePickerName"));
    m_name->setAccessibleName(tr("Attached file name"));
    m_name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_name->setMinimumWidth(40);
    m_choose->setObjectName(QStringLiteral("filePickerChooseButton"));
    m_choose->setText(tr("Choose…"));
    m_choose->setAccessibleName(tr("Choose a file to attach"));
    m_open->setObjectName(QStringLiteral("filePickerOpenButton"));
    m_open->setIcon(Icons::themed(QStringLiteral("document-open"), QStringLiteral("main-open")));
    m_open->setToolTip(tr("Open the attached file"));
    m_open->setAccessibleName(tr("Open the attached file"));
    m_clear->setObjectName(QStringLiteral("filePickerClearButton"));
    m_clear->setIcon(Icons::themed(QStringLiteral("edit-clear"), QStringLiteral("main-clear")));
    m_clear->setToolTip(tr("Remove the attached file"));
    m_clear->setAccessibleName(tr("Remove the attached file"));
    for (QToolButton *button : {m_choose, m_open, m_clear})
        button->setFocusPolicy(Qt::TabFocus);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 2, 2);
    layout->setSpacing(4);
    layout->addWidget(m_icon);
    layout->addWidget(m_name, 1);
    layout->addWidget(m_open);
    layout->addWidget(m_clear);
    layout->addWidget(m_choose);
    connect(m_choose, &QToolButton::clicked, this, &FilePicker::choose);
    connect(m_clear, &QToolButton::clicked, this, [this] { change(QString()); });
    connect(m_open, &QToolButton::clicked, this, [this] {
        if (!m_path.isEmpty())
            Workspace::openFile(m_path);
    });
    setPath(QString());
}

void FilePicker::setPath(const QString &path)
{
    m_path = path;
    const QFileInfo info(path);
    m_name->setText(path.isEmpty() ? NoFileText : info.fileName());
    m_name->setToolTip(path);
    m_name->setEnabled(!path.isEmpty());
    m_icon->setPixmap(path.isEmpty() ? QPixmap() : QFileIconProvider().icon(info).pixmap(18, 18));
    m_open->setEnabled(!path.isEmpty());
    m_clear->setEnabled(!path.isEmpty());
}

void FilePicker::change(const QString &path)
{
    if (path == m_path)
        return;
    setPath(path);
    Q_EMIT pathChanged();
}

void FilePicker::choose()
{
    const QString start = m_path.isEmpty() ? Paths::home() : QFileInfo(m_path).absolutePath();
    const QString chosen = FilePanels::runOpen({start});
    if (!chosen.isEmpty())
        change(chosen);
}

QString FilePicker::localFileOf(const QMimeData *mime)
{
    if (!mime || !mime->hasUrls() || mime->urls().isEmpty())
        return QString();
    const QUrl url = mime->urls().first();
    return url.isLocalFile() ? url.toLocalFile() : QString();
}

void FilePicker::dragEnterEvent(QDragEnterEvent *event)
{
    if (!localFileOf(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void FilePicker::dropEvent(QDropEvent *event)
{
    const QString path = localFileOf(event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    change(path);
}

void FilePicker::mouseDoubleClickEvent(QMouseEvent *)
{
    if (!m_path.isEmpty())
        Workspace::openFile(m_path);
}
