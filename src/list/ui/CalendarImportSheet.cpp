#include "list/ui/CalendarImportSheet.h"

#include "list/ui/CalendarImport.h"
#include "platform/DateText.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

enum Column { ChosenColumn, NameColumn, CourseColumn, DueColumn, WhyColumn, ColumnCount };

QString actionText(ImportPlan::Action action)
{
    switch (action) {
    case ImportPlan::Action::Add:
        return QStringLiteral("Add");
    case ImportPlan::Action::Update:
        return QStringLiteral("Update");
    case ImportPlan::Action::Skip:
        break;
    }
    return QStringLiteral("Skip");
}

QString dueText(const ImportPlan::Item &item)
{
    const std::optional<QDateTime> due = DateText::fromStoredForm(item.date);
    if (!due)
        return QStringLiteral("No due date");
    const QDateTime local = due->toLocalTime();
    return DateText::format(local, item.allDay ? QStringLiteral("%a %b %e, %Y") : QStringLiteral("%a %b %e, %Y %I:%M %p"))
        .simplified();
}

} // namespace

CalendarImportSheet::CalendarImportSheet(QWidget *parent, Controller &controller, ImportPlan plan)
    : QDialog(parent)
    , m_controller(controller)
    , m_plan(std::move(plan))
{
    setObjectName(QStringLiteral("calendarImportSheet"));
    setWindowTitle(SheetTitle);
    setAccessibleName(SheetTitle);
    setWindowModality(Qt::WindowModal);
    resize(760, 440);

    m_title = new QLabel(this);
    m_title->setObjectName(QStringLiteral("calendarImportTitle"));
    m_title->setText(QStringLiteral("<b>Import “%1”</b>").arg(m_plan.source().toHtmlEscaped()));
    m_title->setAccessibleName(QStringLiteral("Calendar file"));
    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("calendarImportSummary"));
    m_summary->setWordWrap(true);
    m_summary->setAccessibleName(QStringLiteral("Import summary"));

    m_items = new QTreeWidget(this);
    m_items->setObjectName(QStringLiteral("calendarImportItems"));
    m_items->setAccessibleName(QStringLiteral("Calendar entries"));
    m_items->setAccessibleDescription(QStringLiteral("Check the entries to import"));
    m_items->setRootIsDecorated(false);
    m_items->setUniformRowHeights(true);
    m_items->setAlternatingRowColors(true);
    m_items->setColumnCount(ColumnCount);
    m_items->setHeaderLabels({QStringLiteral("Action"), QStringLiteral("Name"), QStringLiteral("Course"),
                              QStringLiteral("Due"), QStringLiteral("Details")});
    m_items->header()->setStretchLastSection(true);
    m_items->header()->setAccessibleName(QStringLiteral("Entry columns"));

    auto *buttons = new QDialogButtonBox(this);
    m_import = buttons->addButton(ImportButtonTitle, QDialogButtonBox::AcceptRole);
    m_import->setObjectName(QStringLiteral("calendarImportButton"));
    m_import->setAccessibleName(ImportButtonTitle);
    m_import->setDefault(true);
    m_cancel = buttons->addButton(QDialogButtonBox::Cancel);
    m_cancel->setObjectName(QStringLiteral("calendarImportCancel"));
    m_cancel->setAccessibleName(QStringLiteral("Cancel"));
    connect(m_import, &QPushButton::clicked, this, &CalendarImportSheet::importChosen);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_title);
    layout->addWidget(m_summary);
    layout->addWidget(m_items, 1);
    layout->addWidget(buttons);

    fill();
    connect(m_items, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *row, int column) {
        if (column != ChosenColumn)
            return;
        const int index = m_items->indexOfTopLevelItem(row);
        if (index >= 0 && index < m_plan.items().size())
            m_plan.items()[index].chosen = row->checkState(ChosenColumn) == Qt::Checked;
        updateSummary();
    });
    updateSummary();
}

void CalendarImportSheet::fill()
{
    const QSignalBlocker blocker(m_items);
    m_items->clear();
    QList<QTreeWidgetItem *> rows;
    rows.reserve(m_plan.items().size());
    for (const ImportPlan::Item &item : m_plan.items()) {
        auto *row = new QTreeWidgetItem;
        row->setText(ChosenColumn, actionText(item.action));
        row->setText(NameColumn, item.name);
        row->setText(CourseColumn, item.newCourse ? QStringLiteral("%1 (new)").arg(item.course) : item.course);
        row->setText(DueColumn, dueText(item));
        row->setText(WhyColumn, item.action == ImportPlan::Action::Add ? QString() : item.reason);
        row->setToolTip(NameColumn, item.notes);
        if (item.action == ImportPlan::Action::Skip) {
            row->setFlags(row->flags() & ~(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled));
            row->setCheckState(ChosenColumn, Qt::Unchecked);
        } else {
            row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
            row->setCheckState(ChosenColumn, item.chosen ? Qt::Checked : Qt::Unchecked);
        }
        rows.append(row);
    }
    m_items->addTopLevelItems(rows);
    // Room between columns, so a name does not run into its course.
    for (int column = 0; column < WhyColumn; ++column) {
        m_items->resizeColumnToContents(column);
        m_items->setColumnWidth(column, m_items->columnWidth(column) + 16);
    }
}

void CalendarImportSheet::updateSummary()
{
    int chosen = 0;
    QStringList newCourses;
    for (const ImportPlan::Item &item : m_plan.items()) {
        if (!item.chosen || item.action == ImportPlan::Action::Skip)
            continue;
        ++chosen;
        if (item.newCourse && !newCourses.contains(item.course, Qt::CaseInsensitive))
            newCourses.append(item.course);
    }
    QString text = QStringLiteral("%1 to add, %2 to update, %3 skipped.")
                       .arg(m_plan.count(ImportPlan::Action::Add))
                       .arg(m_plan.count(ImportPlan::Action::Update))
                       .arg(m_plan.count(ImportPlan::Action::Skip));
    if (!newCourses.isEmpty())
        text += QStringLiteral("  New courses: %1.").arg(newCourses.join(QStringLiteral(", ")));
    m_summary->setText(text);
    m_import->setEnabled(chosen > 0);
}

void CalendarImportSheet::importChosen()
{
    m_result = CalendarImport::apply(m_controller, m_plan);
    accept();
}
