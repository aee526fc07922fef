#include "camera/CSGCamera.h"

void CSGCamera::deliverFrame(const CSGImage &frame)
{
    m_currentFrame = frame;
    if (m_delegate)
        m_delegate->cameraDidReceiveFrame(this, frame);
}
