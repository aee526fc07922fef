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

#include <algorithm>
#include <memory>

namespace CalendarImport {

namespace {

// Larger than any course calendar; a bigger file is something else picked by mistake.
constexpr qint64 MaximumFileSize = 64 * 1024 * 1024;

// Adds the named courses; returns each as it was written, to know it again when the import is
// undone.
QList<QVariantMap> addCourses(const QStringList &names)
{
    QList<QVariantMap> added;
    CoursesStore courses;
    if (!courses.isUsable()) {
        Alerts::inform(AlertTitle, QStringLiteral("The courses file could not be read, so the new courses were not "
                                                  "added.  Their assignments keep the course names."));
        return added;
    }
    for (const QString &name : names) {
        int row = courses.addCourse();
        if (row < 0)
            return added;
        CoursesStore::CourseForm form;
        form.name = name;
        row = courses.editCourse(row, form, false);
        if (row >= 0)
            added.append(courses.recordAt(row));
    }
    return added;
}

bool hasCourse(const CoursesStore &courses, const QString &name)
{
    return courses.getCoursesArray().contains(name, Qt::CaseInsensitive);
}

// Undoing an import takes back the courses it added, each only while it is as the import made it
// (the courses window has given it no details and no textbooks) and no assignment names it: a
// course the student has taken up is theirs now. Redo adds back those the undo took.
std::shared_ptr<HistoryRecorder::Companion> coursesCompanion(const QList<QVariantMap> &added)
{
    auto courses = std::make_shared<QList<QVariantMap>>(added);
    auto companion = std::make_shared<HistoryRecorder::Companion>();
    companion->undone = [courses](const AssignmentList &records) {
        CoursesStore store;
        store.reloadIfChangedOnDisk();
        QList<QVariantMap> removed;
        for (const QVariantMap &course : std::as_const(*courses)) {
            const QString name = course.value(CourseKeys::Name).toString();
            const QVariantList &combined = store.getCombined();
            const qsizetype row = combined.indexOf(course);
            const bool hasTextbooks = row >= 0 && row + 1 < combined.size()
                                      && !CoursesStore::isCourse(combined[row + 1].toMap());
            const bool used = std::any_of(records.cbegin(), records.cend(), [&](const AssignmentRef &record) {
                return record->string(AssignmentKeys::Course) == name;
            });
            if (row >= 0 && !hasTextbooks && !used && store.deleteCourseNamed(name))
                removed.append(course);
        }
        *courses = removed;
    };
    companion->redone = [courses](const AssignmentList &) {
        CoursesStore store;
        QStringList names;
        for (const QVariantMap &course : std::as_const(*courses))
            if (!hasCourse(store, course.value(CourseKeys::Name).toString()))
                names.append(course.value(CourseKeys::Name).toString());
        *courses = names.isEmpty() ? QList<QVariantMap>() : addCourses(names);
    };
    return companion;
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
    QList<QVariantMap> addedCourses;
    if (!result.newCourses.isEmpty())
        addedCourses = addCourses(result.newCourses);
    controller.setAllAssignments(records);
    controller.history().nameNextChange(HistoryRecorder::ImportName);
    if (!addedCourses.isEmpty())
        controller.history().accompanyNextChange(coursesCompanion(addedCourses));
    if (!controller.saveData()) {
        // Nothing may count as imported: a subscription would take its items for ones the student
        // deleted, and never bring them back.
        Alerts::inform(AlertTitle, QStringLiteral("Nothing was imported: the assignments file changed on disk "
                                                  "meanwhile, or could not be written.  Import again to add to it as "
                                                  "it is now."));
        return {};
    }
    // Rebuilds the filter bar and the course choices with any course just added.
    controller.updateWindowInformation();
    return result;
}

} // namespace CalendarImport
