#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

// The small panel that stands alone while syncing runs: a title and an indeterminate bar. A new
// one is made at every show, as the engine retitles it by hiding and showing again.
class SyncProgressSheet : public QDialog
{
    Q_OBJECT
public:
    explicit SyncProgressSheet(const QString &title, QWidget *parent = nullptr);

    QString title() const;

    // Hands the engine a presenter that shows and hides sheets on the interface thread, whichever
    // thread the engine runs on, and one for its notices (message boxes that block nothing).
    static void install();
    // The sheet on screen now, or null.
    static SyncProgressSheet *current();

private:
    QLabel *m_progressLabel;
    QProgressBar *m_progressBar;
};
