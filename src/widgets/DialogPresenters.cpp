#include "widgets/DialogPresenters.h"

#include "platform/Alerts.h"
#include "platform/FilePanels.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace {

QPointer<QWidget> g_parent;

QWidget *parentWindow()
{
    if (QWidget *active = QApplication::activeWindow())
        return active;
    return g_parent && g_parent->isVisible() ? g_parent.data() : nullptr;
}

QString present(const Alerts::Request &request)
{
    QMessageBox box(parentWindow());
    box.setWindowTitle(request.title.isEmpty() ? QApplication::applicationName() : request.title);
    box.setText(request.message);
    box.setInformativeText(request.informativeText);
    switch (request.style) {
    case Alerts::Style::Informational:
        box.setIcon(QMessageBox::Information);
        break;
    case Alerts::Style::Warning:
        box.setIcon(QMessageBox::Warning);
        break;
    case Alerts::Style::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    }
    box.setAccessibleName(request.title);
    box.setAccessibleDescription(request.message);
    QList<QPushButton *> buttons;
    for (qsizetype i = 0; i < request.buttons.size(); ++i) {
        const QString &text = request.buttons[i];
        // The first button is the default; "Cancel" and "No" answer Escape.
        const bool rejects = text == QLatin1String("Cancel") || text == QLatin1String("No");
        QPushButton *button = box.addButton(text, i == 0 ? QMessageBox::AcceptRole
                                                         : (rejects ? QMessageBox::RejectRole : QMessageBox::ActionRole));
        button->setAccessibleName(text);
        buttons.append(button);
        if (rejects)
            box.setEscapeButton(button);
    }
    if (!buttons.isEmpty())
        box.setDefaultButton(buttons.first());
    if (box.parentWidget())
        box.setWindowModality(Qt::WindowModal);
    box.exec();
    auto *clicked = qobject_cast<QPushButton *>(box.clickedButton());
    const qsizetype index = buttons.indexOf(clicked);
    return index >= 0 ? request.buttons[index] : QString();
}

QString save(const FilePanels::SaveRequest &request)
{
    QFileDialog dialog(parentWindow());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDirectory(request.directory);
    dialog.selectFile(request.suggestedName);
    if (!request.extension.isEmpty()) {
        dialog.setDefaultSuffix(request.extension);
        dialog.setNameFilter(QStringLiteral("*.") + request.extension);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    return dialog.selectedFiles().first();
}

QString open(const FilePanels::OpenRequest &request)
{
    return QFileDialog::getOpenFileName(parentWindow(), QString(), request.directory);
}

} // namespace

namespace DialogPresenters {

void install(QWidget *parent)
{
    g_parent = parent;
    Alerts::setPresenter(present);
    FilePanels::setPresenters(save, open);
}

void setParent(QWidget *parent)
{
    g_parent = parent;
}

} // namespace DialogPresenters
