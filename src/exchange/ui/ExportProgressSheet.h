#pragma once

#include <QDialog>

class QProgressBar;

// The sheet that covers the main window while an export runs: a line of text and an indeterminate
// progress bar (exports do not report how far they are).
class ExportProgressSheet : public QDialog
{
    Q_OBJECT

public:
    static inline const QString TextExportMessage = QStringLiteral("Exporting to a text file...");

    ExportProgressSheet(const QString &message, QWidget *mainWindow);
    QProgressBar *progressBar() const { return m_progressBar; }

private:
    QProgressBar *m_progressBar;
};
