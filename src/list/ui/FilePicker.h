#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

// The attached file of an assignment: its icon and name, a button to choose a file, one to open it
// and one to take it away. A file dragged from the file manager onto the picker attaches it.
class FilePicker : public QFrame
{
    Q_OBJECT
public:
    explicit FilePicker(QWidget *parent = nullptr);

    QString path() const { return m_path; }
    // Shows a path (empty: no file) without reporting a change.
    void setPath(const QString &path);
    QToolButton *chooseButton() const { return m_choose; }
    QToolButton *clearButton() const { return m_clear; }
    QToolButton *openButton() const { return m_open; }

Q_SIGNALS:
    // The user attached, replaced or removed the file.
    void pathChanged();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void choose();
    void change(const QString &path);
    static QString localFileOf(const class QMimeData *mime);

    QString m_path;
    QLabel *m_icon;
    QLabel *m_name;
    QToolButton *m_choose;
    QToolButton *m_open;
    QToolButton *m_clear;
};
