#pragma once

#include "camera/CSGCamera.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class NSWindow_Snapshot;
class QLabel;

// The video window's controller, one for the program. Opening it shows the current snapshot;
// Space or Return starts the camera and shows its live picture, and the next press takes the
// picture and hands it to the delegate (a SnapshotDelegate), which stores it in the assignment.
// Delete hands over no picture, which clears the snapshot. The camera runs only while the live
// picture shows: taking, clearing and closing the window all stop it.
class VideoController : public QObject, public CSGCameraDelegate
{
    Q_OBJECT
public:
    static VideoController *sharedController();
    ~VideoController() override;

    // Whether the desktop has a camera; by default its list of video inputs. The program's tests
    // and machines without a camera put their own answer here.
    using CameraCheck = std::function<bool()>;
    static void setCameraCheck(CameraCheck check);
    // Makes the capture source for the next live picture; by default the desktop's default camera.
    using CameraFactory = std::function<std::unique_ptr<CSGCamera>()>;
    static void setCameraFactory(CameraFactory factory);

    // Without a camera: the "No iSight Attached" alert and nothing else, returning false. Else shows
    // the picture (or none) and brings the window to the front; the camera is not started yet.
    // The delegate is told of the picture taken when it implements SnapshotDelegate.
    bool showVideoWindowWithInitialImage(const QImage &image, QObject *delegate);
    void takeSnapshot();
    // Shows the picture (or none), hands it to the delegate and stops the camera; the window stays.
    void saveSnapshot(const QImage &image);
    void windowWillClose();

    // CSGCameraDelegate
    void cameraDidReceiveFrame(CSGCamera *camera, const CSGImage &frame) override;

    NSWindow_Snapshot *snapshotWindow() const { return m_snapshotWindow.get(); }
    QLabel *imageView() const;
    // The running capture source, or none.
    CSGCamera *camera() const { return m_camera.get(); }

private:
    VideoController();
    // When QUILLORY_TEST_CAMERA_PICTURE names a picture file, the camera check says yes and the
    // live picture is that file, so the window can be seen working on a machine with no camera.
    static void installTestPictureFromEnvironment();
    void stopCamera();
    void showImage(const QImage &image);

    QPointer<QObject> m_delegate;
    std::unique_ptr<NSWindow_Snapshot> m_snapshotWindow;
    std::unique_ptr<CSGCamera> m_camera;
};
