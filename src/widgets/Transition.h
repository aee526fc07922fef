#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QString>

// An image transition: from a picture of what was shown ("inputImage") to a picture of what will be
// shown ("inputTargetImage"), rendered for any moment ("inputTime", 0 to 1) into a frame
// ("outputImage"). Every transition shows exactly the first picture at 0 and exactly the second at 1,
// so the switch never jumps at either end.
//
// Frames are rendered on the CPU into a reused buffer; each kind keeps whatever it can compute once
// per pair of pictures (masks, maps) and does only per-frame work in render().
class Transition
{
public:
    virtual ~Transition();

    // The name of the effect, e.g. "CIDissolveTransition".
    virtual QString name() const = 0;

    // Both pictures become 32-bit (opaque or premultiplied); a target of another size is scaled to
    // the first picture's size. Empty pictures make every frame empty.
    void setImages(const QImage &inputImage, const QImage &inputTargetImage);
    const QImage &inputImage() const { return m_initial; }
    const QImage &inputTargetImage() const { return m_target; }
    QSize size() const { return m_initial.size(); }

    // Renders the moment `time` (clamped to 0..1) into `output`, which is reallocated only when its
    // size or format does not match.
    void renderFrame(double time, QImage &output);
    QImage outputImage(double time);

protected:
    // Work done once per pair of pictures (and again after an input changes: call invalidate()).
    virtual void prepare() { }
    // `output` has the pictures' size and format.
    virtual void render(double time, QImage &output) = 0;
    void invalidate() { m_prepared = false; }

    static const quint32 *row(const QImage &image, int y)
    {
        return reinterpret_cast<const quint32 *>(image.constScanLine(y));
    }
    static quint32 *row(QImage &image, int y) { return reinterpret_cast<quint32 *>(image.scanLine(y)); }

private:
    QImage m_initial;
    QImage m_target;
    bool m_prepared = false;
};
