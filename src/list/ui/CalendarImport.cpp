#include "list/ui/CalendarImport.h"

#include "importing/CalendarFeedParser.h"
#include "list/Controller.h"
#include "list/ui/CalendarImportSheet.h"
#include "platform/Alerts.h"
#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "store/CoursesStore.h"

#include <QFile>
#include <QFileInfo>

namespace CalendarImport {

namespace {

// Larger than any course calendar; a bigger file is something else picked by mistake.
constexpr qint64 MaximumFileSize = 64 * 1024 * 1024;

void addCourses(const QStringList &names)
{
    CoursesStore courses;
    if (!courses.isUsable()) {
        Alerts::inform(AlertTitle, QStringLiteral("The courses file could not be read, so the new courses were not "
                                                  "added.  Their assignments keep the course names."));
        return;
    }
    for (const QString &name : names) {
        const int row = courses.addCourse();
        if (row < 0)
            return;
        CoursesStore::CourseForm form;
        form.name = name;
        courses.editCourse(row, form, false);
    }
}

} // namespace

QStringList courseNames(const QVariantList &coursesAndTextbooks)
{
    QStringList names;
    for (const QVariant &value : coursesAndTextbooks) {
        const QVariantMap record = value.toMap();
        if (CoursesStore::isCourse(record) && !record.value(CourseKeys::Name).toString().isEmpty())
            names.append(record.value(CourseKeys::Name).toString());
    }
    return names;
}

std::optional<ImportPlan> planFile(const QString &path, Controller &controller, QString *error)
{
    const QString fileName = QFileInfo(path).fileName();
    QFile file(path);
    if (QFileInfo(path).size() > MaximumFileSize) {
        *error = QStringLiteral("“%1” is too large to be a course calendar.").arg(fileName);
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("“%1” could not be opened: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    QString parseError;
    const std::optional<FeedContents> contents = CalendarFeedParser::parse(file.readAll(), &parseError);
    if (!contents) {
        *error = QStringLiteral("“%1” could not be imported.  %2  Nothing was imported.").arg(fileName, parseError);
        return std::nullopt;
    }
    if (contents->events.isEmpty()) {
        *error = QStringLiteral("“%1” holds no events or to-dos to import.").arg(fileName);
        return std::nullopt;
    }
    // Plan against what is on disk now, not against an older copy in memory.
    controller.updateWindowInformation();
    return ImportPlan::make(*contents, controller.allAssignments(), courseNames(controller.coursesAndTextbooks()),
                            fileName);
}

CalendarImportSheet *previewFile(QWidget *window, Controller &controller, const QString &path)
{
    controller.commitPendingEdit();
    QString error;
    std::optional<ImportPlan> plan = planFile(path, controller, &error);
    if (!plan) {
        Alerts::inform(AlertTitle, error);
        return nullptr;
    }
    auto *sheet = new CalendarImportSheet(window, controller, std::move(*plan));
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return sheet;
}

CalendarImportSheet *chooseAndPreview(QWidget *window, Controller &controller)
{
    const QString path = FilePanels::runOpen({Paths::home()});
    if (path.isEmpty())
        return nullptr;
    return previewFile(window, controller, path);
}

ImportPlan::Result apply(Controller &controller, const ImportPlan &plan)
{
    controller.commitPendingEdit();
    // Whatever another window wrote since the preview is read first, so it is neither lost nor
    // written back over.
    controller.updateWindowInformation();
    if (!controller.isStoreUsable()) {
        Alerts::inform(AlertTitle, QStringLiteral("The assignments file could not be read, so nothing was imported."));
        return {};
    }
    AssignmentList records = controller.allAssignments();
    const ImportPlan::Result result = plan.apply(records, courseNames(controller.coursesAndTextbooks()));
    if (result.added == 0 && result.updated == 0)
        return result;
    if (!result.newCourses.isEmpty())
        addCourses(result.newCourses);
    controller.setAllAssignments(records);
    controller.history().nameNextChange(HistoryRecorder::ImportName);
    controller.saveData();
    // Rebuilds the filter bar and the course choices with any course just added.
    controller.updateWindowInformation();
    return result;
}

} // namespace CalendarImport
