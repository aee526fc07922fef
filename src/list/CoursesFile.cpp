#include "list/CoursesFile.h"

#include "list/ListLog.h"
#include "list/ListTexts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/CoursesDocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QVariantMap>


CoursesFile::CoursesFile(QString path)
    : m_path(path.isEmpty() ? Paths::coursesFile() : std::move(path))
{
}

bool CoursesFile::refresh()
{
    const std::optional<FileStamp> stamp = FileStamp::of(m_path);
    if (m_stamp && *m_stamp == stamp)
        return false;
    m_stamp = stamp;
    QVariantList records = stamp ? read(m_path) : QVariantList();
    if (records == m_records)
        return false;
    m_records = std::move(records);
    return true;
}

std::shared_ptr<CoursesDocument> CoursesFile::document(const QString &path)
{
    return CoursesDocument::open(path, QFileInfo(path).dir().filePath(QString::fromLatin1(Paths::UniversalTypesFileName)));
}

QVariantList CoursesFile::read(const QString &path)
{
    // Through the document the courses window and the sidebar share: no second copy to go stale,
    // and no second parse while one of them is open.
    const std::shared_ptr<CoursesDocument> document = CoursesFile::document(path);
    document->refresh();
    if (!document->isUsable())
        qCWarning(lcList) << "cannot read" << path;
    return document->combined();
}

QStringList CoursesFile::courseNames(const QVariantList &records)
{
    QStringList names;
    for (const QVariant &value : records) {
        const QVariantMap record = value.toMap();
        if (record.value(ListTexts::CourseTypeKey).toString() == ListTexts::CourseTypeCourse)
            names.append(record.value(ListTexts::CourseNameKey).toString());
    }
    return names;
}

QStringList CoursesFile::textbooksOf(const QVariantList &records, const QString &course)
{
    QStringList names;
    for (const QVariant &value : records) {
        const QVariantMap record = value.toMap();
        if (record.value(ListTexts::CourseTypeKey).toString() == ListTexts::CourseTypeTextbook
            && record.value(ListTexts::TextbookCourseKey).toString() == course)
            names.append(record.value(ListTexts::CourseNameKey).toString());
    }
    return names;
}

std::optional<QString> CoursesFile::defaultTextbook(const QVariantList &records, const QString &course)
{
    for (const QVariant &value : records) {
        const QVariantMap record = value.toMap();
        if (record.value(ListTexts::CourseNameKey).toString() != course)
            continue;
        const auto it = record.constFind(ListTexts::DefaultTextbookKey);
        if (it != record.constEnd() && it->toString() != ListTexts::NoTextbook)
            return it->toString();
    }
    return std::nullopt;
}
