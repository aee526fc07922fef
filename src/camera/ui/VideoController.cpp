#include "camera/ui/VideoController.h"

#include "camera/CameraLog.h"
#include "camera/SnapshotDelegate.h"
#include "camera/SnapshotImage.h"
#include "camera/StillPictureCamera.h"
#include "camera/ui/MultimediaCamera.h"
#include "camera/ui/NSWindow_Snapshot.h"
#include "platform/Alerts.h"

#include <QCameraDevice>
#include <QImageReader>
#include <QLabel>
#include <QMediaDevices>
#include <QPixmap>

namespace {
const QString NoCameraTitle = QStringLiteral("No iSight Attached");
const QString NoCameraMessage = QStringLiteral("You must plug in an iSight in order to add a Snapshot.");
const char TestPictureVariable[] = "QUILLORY_TEST_CAMERA_PICTURE";

bool desktopHasCamera()
{
    return !QMediaDevices::videoInputs().isEmpty();
}

std::unique_ptr<CSGCamera> desktopCamera()
{
    return std::make_unique<MultimediaCamera>();
}

VideoController::CameraCheck &cameraCheck()
{
    static VideoController::CameraCheck check = desktopHasCamera;
    return check;
}

VideoController::CameraFactory &cameraFactory()
{
    static VideoController::CameraFactory factory = desktopCamera;
    return factory;
}
} // namespace

VideoController *VideoController::sharedController()
{
    static VideoController *instance = new VideoController;
    return instance;
}

VideoController::VideoController()
    : m_snapshotWindow(std::make_unique<NSWindow_Snapshot>())
{
    setObjectName(QStringLiteral("videoController"));
    connect(m_snapshotWindow.get(), &NSWindow_Snapshot::takeRequested, this, &VideoController::takeSnapshot);
    connect(m_snapshotWindow.get(), &NSWindow_Snapshot::clearRequested, this, [this] { saveSnapshot(QImage()); });
    connect(m_snapshotWindow.get(), &NSWindow_Snapshot::windowWillClose, this, &VideoController::windowWillClose);
    installTestPictureFromEnvironment();
}

VideoController::~VideoController()
{
    stopCamera();
}

void VideoController::setCameraCheck(CameraCheck check)
{
    cameraCheck() = check ? std::move(check) : CameraCheck(desktopHasCamera);
}

void VideoController::setCameraFactory(CameraFactory factory)
{
    cameraFactory() = factory ? std::move(factory) : CameraFactory(desktopCamera);
}

void VideoController::installTestPictureFromEnvironment()
{
    const QString path = qEnvironmentVariable(TestPictureVariable);
    if (path.isEmpty())
        return;
    QImageReader reader(path);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        qCWarning(lcCamera) << "The test picture" << path << "could not be read:" << reader.errorString();
        return;
    }
    qCInfo(lcCamera) << "The live picture is" << path << "in place of a camera";
    setCameraCheck([] { return true; });
    setCameraFactory([picture] { return std::make_unique<StillPictureCamera>(picture); });
}

QLabel *VideoController::imageView() const
{
    return m_snapshotWindow->imageView();
}

bool VideoController::showVideoWindowWithInitialImage(const QImage &image, QObject *delegate)
{
    if (!cameraCheck()()) {
        Alerts::inform(NoCameraTitle, NoCameraMessage, Alerts::Style::Informational);
        return false;
    }
    m_delegate = delegate;
    showImage(image);
    m_snapshotWindow->show();
    m_snapshotWindow->raise();
    m_snapshotWindow->activateWindow();
    m_snapshotWindow->setFocus(Qt::ActiveWindowFocusReason);
    return true;
}

void VideoController::takeSnapshot()
{
    if (m_camera) {
        // A copy: saving stops the camera, and with it goes the frame it holds.
        const QImage frame = m_camera->currentFrame().image();
        saveSnapshot(frame);
        return;
    }
    m_camera = cameraFactory()();
    if (!m_camera)
        return;
    m_camera->setDelegate(this);
    // A capture that fails to start is only logged: the window then shows no live picture, and the
    // next press takes the absent frame, which clears the snapshot.
    if (!m_camera->startWithSize(SnapshotImage::CaptureSize.width(), SnapshotImage::CaptureSize.height()))
        qCWarning(lcCamera) << "The camera did not start.";
}

void VideoController::saveSnapshot(const QImage &image)
{
    // Stopped first, so that no frame arriving while the delegate stores the picture (an alert may
    // wait for the user) replaces the picture shown.
    stopCamera();
    showImage(image);
    if (auto *delegate = dynamic_cast<SnapshotDelegate *>(m_delegate.data()))
        delegate->snapshotImageWasTaken(image);
}

void VideoController::windowWillClose()
{
    stopCamera();
}

void VideoController::cameraDidReceiveFrame(CSGCamera *camera, const CSGImage &frame)
{
    if (camera == m_camera.get())
        showImage(frame.image());
}

void VideoController::stopCamera()
{
    if (!m_camera)
        return;
    m_camera->setDelegate(nullptr);
    if (!m_camera->stop())
        qCWarning(lcCamera) << "The camera did not stop.";
    m_camera.reset();
}

void VideoController::showImage(const QImage &image)
{
    QLabel *view = m_snapshotWindow->imageView();
    if (image.isNull())
        view->clear();
    else
        view->setPixmap(QPixmap::fromImage(image));
}
