#include "store/DataEraser.h"

#include "platform/Paths.h"
#include "store/AssignmentStore.h"
#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"

#include <QDir>
#include <QLoggingCategory>
#include <QStringList>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

namespace DataEraser {

bool deleteAllData(QString *error)
{
    QDir().mkpath(Paths::dataFolder());
    QStringList failed;
    for (const QString &path : {Paths::assignmentsFile(), Paths::coursesFile(), Paths::universalTypesFile()}) {
        if (!AssignmentStore::writeFile(path, {}))
            failed.append(path);
    }
    // Every window showing the assignments or the courses shows the empty lists now, and none writes its old copy
    // back.
    AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), AssignmentsDocument::Replacement::Erased);
    CoursesDocument::fileReplaced(Paths::coursesFile(), CoursesDocument::Replacement::Erased);
    if (!failed.isEmpty()) {
        qCWarning(lcStore) << "Could not empty" << failed;
        if (error)
            *error = failed.join(QStringLiteral(", "));
    }
    return failed.isEmpty();
}

} // namespace DataEraser
