#pragma once

class QImage;

// Who receives a picture taken in the video window (or a null image when the snapshot was cleared).
class SnapshotDelegate
{
public:
    virtual ~SnapshotDelegate() = default;
    virtual void snapshotImageWasTaken(const QImage &image) = 0;
};
