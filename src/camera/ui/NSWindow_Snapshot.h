#pragma once

#include <QWidget>

class QLabel;

// The video window: the live picture and the keys that work it. Space and Return take (the first
// press starts the camera, the next takes the picture), Delete or Backspace clears the snapshot;
// every other key is swallowed here, so nothing typed in this window reaches another.
class NSWindow_Snapshot : public QWidget
{
    Q_OBJECT
public:
    explicit NSWindow_Snapshot(QWidget *parent = nullptr);

    QLabel *imageView() const { return m_imageView; }

Q_SIGNALS:
    void takeRequested();
    void clearRequested();
    void windowWillClose();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QLabel *m_imageView;
};
