#include "camera/CSGImage.h"

QString CSGImage::description() const
{
    return QString::asprintf("<%s: %p> (sampleTime=%.4f)", "CSGImage", static_cast<const void *>(this), m_sampleTime);
}
