#include "widgets/Transition.h"

#include <algorithm>

Transition::~Transition() = default;

namespace
{

// Opaque pictures stay opaque (cheaper to draw); anything with alpha is premultiplied so the
// per-channel blends stay valid.
QImage::Format workingFormat(const QImage &first, const QImage &second)
{
    if (!first.hasAlphaChannel() && !second.hasAlphaChannel())
        return QImage::Format_RGB32;
    return QImage::Format_ARGB32_Premultiplied;
}

} // namespace

void Transition::setImages(const QImage &inputImage, const QImage &inputTargetImage)
{
    m_prepared = false;
    if (inputImage.isNull() || inputTargetImage.isNull()) {
        m_initial = QImage();
        m_target = QImage();
        return;
    }
    const QImage::Format format = workingFormat(inputImage, inputTargetImage);
    m_initial = inputImage.convertToFormat(format);
    QImage target = inputTargetImage;
    if (target.size() != m_initial.size())
        target = target.scaled(m_initial.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_target = target.convertToFormat(format);
    m_initial.setDevicePixelRatio(1.0);
    m_target.setDevicePixelRatio(1.0);
}

void Transition::renderFrame(double time, QImage &output)
{
    if (m_initial.isNull()) {
        output = QImage();
        return;
    }
    if (output.size() != m_initial.size() || output.format() != m_initial.format())
        output = QImage(m_initial.size(), m_initial.format());
    if (!m_prepared) {
        prepare();
        m_prepared = true;
    }
    render(std::clamp(time, 0.0, 1.0), output);
}

QImage Transition::outputImage(double time)
{
    QImage output;
    renderFrame(time, output);
    return output;
}
