#pragma once

#include <QByteArray>
#include <QImage>
#include <QToolButton>

// The assignment's snapshot on a button: the full picture is kept as it was taken (and as it is
// stored), while the button shows it stretched over its whole face. Without a picture it reads
// "none".
class NSButton_Snapshot : public QToolButton
{
    Q_OBJECT
public:
    explicit NSButton_Snapshot(QWidget *parent = nullptr);

    // The full-size picture; null when there is none.
    QImage image() const { return m_bigImage; }
    // Keeps the picture at full size and shows a copy stretched to the button; the stored data
    // becomes its PNG encoding. A null image clears the button.
    void setImage(const QImage &image);
    // The stored value: shown as it reads, and handed back unchanged until a new picture is set,
    // so that a snapshot in an older format is not rewritten by merely showing it.
    void setImageData(const QByteArray &data);
    QByteArray imageData() const { return m_data; }
    // What the face shows: the picture stretched to the button's size.
    QImage shownImage() const { return m_shown; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void display(const QImage &image);

    QImage m_bigImage;
    QImage m_shown;
    QByteArray m_data;
};
