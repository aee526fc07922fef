#include "widgets/DissolveTransition.h"

#include "widgets/PixelBlend.h"

void DissolveTransition::render(double time, QImage &output)
{
    const quint32 weight = PixelBlend::weightFor(time);
    const int width = output.width();
    for (int y = 0; y < output.height(); ++y)
        PixelBlend::mixSpan(row(inputImage(), y), row(inputTargetImage(), y), row(output, y), width, weight);
}
