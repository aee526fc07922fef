#pragma once

#include <QWidget>

// One pane of the preferences window. A pane reads its settings when it is made and saves on every
// change, so the window simply makes a fresh pane each time one is shown.
class PreferencePane : public QWidget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

    // The height the pane needs at the window's width.
    virtual int getViewSize() const;
    // Applies the user's labels to the captions.
    virtual void updateLabels() {}
    // The window is about to show another pane or close.
    virtual void preferencesPanelWillClose() {}
    // The window came to the front again: what other windows may have changed since the pane was
    // made is read again (only panes that show such things do anything).
    virtual void reloadFromSettings() {}

Q_SIGNALS:
    // The pane's content grew or shrank: the window follows getViewSize().
    void viewSizeChanged();
};
