#include "camera/ui/NSWindow_Snapshot.h"

#include "camera/SnapshotImage.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace {
bool isTake(const QKeyEvent *key)
{
    return key->key() == Qt::Key_Space || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
}

bool isClear(const QKeyEvent *key)
{
    // The key labelled Delete on some keyboards is Backspace on others.
    return key->key() == Qt::Key_Delete || key->key() == Qt::Key_Backspace;
}
} // namespace

NSWindow_Snapshot::NSWindow_Snapshot(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_imageView(new QLabel)
{
    setObjectName(QStringLiteral("snapshotWindow"));
    setWindowTitle(tr("Snapshot"));
    setAccessibleName(tr("Snapshot"));
    setFocusPolicy(Qt::StrongFocus);
    m_imageView->setObjectName(QStringLiteral("imageView"));
    m_imageView->setAccessibleName(tr("Camera picture"));
    m_imageView->setFixedSize(SnapshotImage::CaptureSize);
    m_imageView->setScaledContents(true);
    m_imageView->setAlignment(Qt::AlignCenter);
    m_imageView->setFrameShape(QFrame::StyledPanel);
    m_imageView->setBackgroundRole(QPalette::Dark);
    m_imageView->setAutoFillBackground(true);
    auto *hint = new QLabel(tr("Space or Return starts the camera, and again takes the picture.  "
                               "Delete clears the snapshot."));
    hint->setObjectName(QStringLiteral("snapshotHint"));
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignCenter);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_imageView, 0, Qt::AlignCenter);
    layout->addWidget(hint);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

bool NSWindow_Snapshot::event(QEvent *event)
{
    // The window's keys come before any shortcut of the program's other windows; the standard
    // close shortcut still closes it.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (!key->matches(QKeySequence::Close)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void NSWindow_Snapshot::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Close)) {
        close();
    } else if (event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier) {
        if (isTake(event))
            Q_EMIT takeRequested();
        else if (isClear(event))
            Q_EMIT clearRequested();
    }
    event->accept();
}

void NSWindow_Snapshot::closeEvent(QCloseEvent *event)
{
    Q_EMIT windowWillClose();
    QWidget::closeEvent(event);
}
