#include "exchange/ui/ExportProgressSheet.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

ExportProgressSheet::ExportProgressSheet(const QString &message, QWidget *mainWindow)
    : QDialog(mainWindow)
    , m_progressBar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("exportWindow"));
    setAccessibleName(message);
    setWindowTitle(message);
    setWindowModality(Qt::WindowModal);
    auto *label = new QLabel(message, this);
    label->setObjectName(QStringLiteral("exportMessage"));
    label->setAccessibleName(message);
    m_progressBar->setObjectName(QStringLiteral("exportProgressBar"));
    m_progressBar->setAccessibleName(message);
    m_progressBar->setRange(0, 0);
    m_progressBar->setMinimumWidth(280);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_progressBar);
}
