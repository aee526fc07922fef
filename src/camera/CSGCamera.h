#pragma once

#include "camera/CSGImage.h"

class CSGCamera;

// Whoever shows the live picture; told of every frame as it arrives.
class CSGCameraDelegate
{
public:
    virtual ~CSGCameraDelegate() = default;
    virtual void cameraDidReceiveFrame(CSGCamera *camera, const CSGImage &frame) = 0;
};

// A capture source: started at a picture size, it hands every frame to its delegate on the
// interface thread and keeps the latest one. The desktop's camera is one kind; a source that
// plays back given pictures is another, so the video window can be shown without a camera.
class CSGCamera
{
public:
    virtual ~CSGCamera() = default;

    void setDelegate(CSGCameraDelegate *delegate) { m_delegate = delegate; }
    CSGCameraDelegate *delegate() const { return m_delegate; }

    // Starts delivering frames of the given size; false (with a line in the log) when the
    // capture could not be started.
    virtual bool startWithSize(int width, int height) = 0;
    // Stops delivering frames; false when stopping failed. Stopping a stopped camera succeeds.
    virtual bool stop() = 0;
    // The latest frame; a null image before the first one arrives.
    const CSGImage &currentFrame() const { return m_currentFrame; }

protected:
    // Keeps the frame as the current one and hands it to the delegate.
    void deliverFrame(const CSGImage &frame);

private:
    CSGCameraDelegate *m_delegate = nullptr;
    CSGImage m_currentFrame;
};
