#include "exchange/ui/ExportToiCal.h"

#include "exchange/ICalExport.h"
#include "platform/UserDefaults.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QButtonGroup>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFutureWatcher>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QtConcurrent>

namespace {

void name(QWidget *widget, const QString &objectName, const QString &accessibleName)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
}

} // namespace

ExportToiCal::ExportToiCal(QWidget *mainWindow)
    : QObject(mainWindow)
    , m_mainWindow(mainWindow)
{
    setObjectName(QStringLiteral("ExportToiCal"));
    connect(this, &ExportToiCal::threadTestDidFinishWork, this, &ExportToiCal::hideProgressSheet);
}

ExportToiCal::~ExportToiCal()
{
    // The sheets belong to the main window's tree of widgets; they go with the export.
    delete m_exportSheet;
    delete m_progressSheet;
}

void ExportToiCal::exportAssignments(const AssignmentList &assignments)
{
    m_displayArray = assignments;
    const QVariant advanced =
        UserDefaults().groupValue(PreferenceKeys::General, PreferenceKeys::GeneralKeys::DisplayAdvancedICalSettings);
    if (advanced.toBool()) {
        showExportSheet();
        return;
    }
    m_exportName = ICalExport::DefaultName;
    m_exportFormat = ICalExport::Events;
    beginExport(nullptr);
}

void ExportToiCal::buildExportSheet()
{
    m_exportSheet = new QDialog(m_mainWindow);
    name(m_exportSheet, QStringLiteral("exportSheet"), SheetTitle);
    m_exportSheet->setWindowTitle(SheetTitle);
    m_exportSheet->setWindowModality(Qt::WindowModal);

    auto *prompt = new QLabel(FormatPrompt, m_exportSheet);
    name(prompt, QStringLiteral("exportCustomNamePrompt"), FormatPrompt);
    m_exportCustomName = new QLineEdit(ICalExport::DefaultName, m_exportSheet);
    name(m_exportCustomName, QStringLiteral("exportCustomName"), FormatPrompt);
    prompt->setBuddy(m_exportCustomName);

    auto *legend = new QGroupBox(LegendTitle, m_exportSheet);
    name(legend, QStringLiteral("legend"), LegendTitle);
    auto *grid = new QGridLayout(legend);
    int row = 0;
    auto addCode = [&](const QString &code, const QString &objectName, QLabel **field) {
        auto *codeLabel = new QLabel(code, legend);
        name(codeLabel, objectName + QStringLiteral("Code"), code);
        codeLabel->setTextFormat(Qt::PlainText);
        auto *text = new QLabel(legend);
        name(text, objectName, code);
        text->setTextFormat(Qt::PlainText);
        grid->addWidget(codeLabel, row / 2, (row % 2) * 2);
        grid->addWidget(text, row / 2, (row % 2) * 2 + 1);
        grid->setColumnStretch((row % 2) * 2 + 1, 1);
        ++row;
        if (field)
            *field = text;
        return text;
    };
    addCode(QStringLiteral("%n"), QStringLiteral("nameLabel"), nullptr)->setText(NameCodeText);
    addCode(QStringLiteral("%d"), QStringLiteral("dateLabel"), nullptr)->setText(DateCodeText);
    addCode(QStringLiteral("%c"), QStringLiteral("courseLabel"), &m_courseLabel);
    addCode(QStringLiteral("%t"), QStringLiteral("textbookLabel"), &m_textbookLabel);
    addCode(QStringLiteral("%a"), QStringLiteral("completedLabel"), &m_completedLabel);
    addCode(QStringLiteral("%b"), QStringLiteral("typeLabel"), &m_typeLabel);
    addCode(QStringLiteral("%g"), QStringLiteral("gradeLabel"), &m_gradeLabel);

    m_exportEvents = new QRadioButton(EventsChoice, m_exportSheet);
    name(m_exportEvents, QStringLiteral("exportEvents"), EventsChoice);
    m_exportToDos = new QRadioButton(ToDosChoice, m_exportSheet);
    name(m_exportToDos, QStringLiteral("exportToDos"), ToDosChoice);
    m_exportEvents->setChecked(true);

    auto *buttons = new QDialogButtonBox(m_exportSheet);
    name(buttons, QStringLiteral("exportSheetButtons"), SheetTitle);
    m_cancelButton = buttons->addButton(CancelButton, QDialogButtonBox::RejectRole);
    name(m_cancelButton, QStringLiteral("cancelButton"), CancelButton);
    m_exportButton = buttons->addButton(ExportButton, QDialogButtonBox::AcceptRole);
    name(m_exportButton, QStringLiteral("exportButton"), ExportButton);
    m_exportButton->setDefault(true);
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        hideExportSheet();
        deleteLater();
    });
    connect(m_exportButton, &QPushButton::clicked, this, [this] { beginExport(m_exportButton); });
    // Escape closes the sheet like its cancel button.
    connect(m_exportSheet, &QDialog::rejected, this, &QObject::deleteLater);

    auto *layout = new QVBoxLayout(m_exportSheet);
    layout->addWidget(prompt);
    layout->addWidget(m_exportCustomName);
    layout->addWidget(legend);
    layout->addWidget(m_exportEvents);
    layout->addWidget(m_exportToDos);
    layout->addWidget(buttons);
}

void ExportToiCal::showExportSheet()
{
    if (!m_exportSheet)
        buildExportSheet();
    using namespace PreferenceKeys;
    m_courseLabel->setText(Labels::label(LabelKeys::Course));
    m_textbookLabel->setText(Labels::label(LabelKeys::Textbook));
    m_completedLabel->setText(Labels::label(LabelKeys::Completed));
    m_typeLabel->setText(Labels::label(LabelKeys::Type));
    m_gradeLabel->setText(Labels::label(LabelKeys::Grade));
    m_exportSheet->open();
}

void ExportToiCal::hideExportSheet()
{
    if (m_exportSheet)
        m_exportSheet->done(1);
}

void ExportToiCal::beginExport(QObject *sender)
{
    auto *senderWidget = qobject_cast<QWidget *>(sender);
    const bool fromSheet = m_exportSheet && senderWidget
        && (senderWidget == m_exportSheet || m_exportSheet->isAncestorOf(senderWidget));
    if (fromSheet) {
        m_exportName = m_exportCustomName->text();
        if (m_exportEvents->isChecked())
            m_exportFormat = ICalExport::Events;
        else if (m_exportToDos->isChecked())
            m_exportFormat = ICalExport::ToDos;
        hideExportSheet();
    }
    showProgressSheet();

    // The worker gets its own copies: the records are shared, the list and the settings are not.
    const AssignmentList records = m_displayArray;
    const QString exportName = m_exportName;
    const QString exportFormat = m_exportFormat;
    auto *watcher = new QFutureWatcher<void>(this);
    connect(watcher, &QFutureWatcher<void>::finished, this, &ExportToiCal::threadTestDidFinishWork);
    watcher->setFuture(QtConcurrent::run([records, exportName, exportFormat] {
        ICalExport(exportName, exportFormat).performExport(records);
    }));
}

void ExportToiCal::buildProgressSheet()
{
    m_progressSheet = new QDialog(m_mainWindow);
    name(m_progressSheet, QStringLiteral("progressSheet"), ProgressText);
    m_progressSheet->setWindowTitle(SheetTitle);
    m_progressSheet->setWindowModality(Qt::WindowModal);
    auto *label = new QLabel(ProgressText, m_progressSheet);
    name(label, QStringLiteral("progressLabel"), ProgressText);
    m_progressBar = new QProgressBar(m_progressSheet);
    name(m_progressBar, QStringLiteral("progressBar"), ProgressText);
    m_progressBar->setRange(0, 0); // indeterminate: the export does not report its progress
    m_progressBar->setMinimumWidth(280);
    auto *layout = new QVBoxLayout(m_progressSheet);
    layout->addWidget(label);
    layout->addWidget(m_progressBar);
}

void ExportToiCal::showProgressSheet()
{
    if (!m_progressSheet)
        buildProgressSheet();
    m_progressSheet->open();
}

void ExportToiCal::hideProgressSheet()
{
    if (m_progressSheet)
        m_progressSheet->done(1);
    Q_EMIT exportFinished();
    deleteLater();
}
