#pragma once

#include "platform/FileStamp.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>
#include <optional>

class CoursesDocument;

// "Courses and Textbooks.plist" as the list reads it: straight from disk, at the moments the list
// needs course names, a course's textbooks or its default textbook. A missing or unreadable file
// is an empty list.
class CoursesFile
{
public:
    explicit CoursesFile(QString path = QString());
    QString path() const { return m_path; }

    // Reads the file again only when its size, modification time or inode changed since the last
    // read; returns whether the records changed.
    bool refresh();
    const QVariantList &records() const { return m_records; }

    // The shared document of the courses file at `path` and the universal types beside it.
    static std::shared_ptr<CoursesDocument> document(const QString &path);
    // Reads the file now, whatever was read before.
    static QVariantList read(const QString &path);
    // "Name" of every course record, in file order.
    static QStringList courseNames(const QVariantList &records);
    // "Name" of every textbook whose "Course" is `course`, in file order.
    static QStringList textbooksOf(const QVariantList &records, const QString &course);
    // The "Default Textbook" of the first course named `course` that has one other than "none".
    static std::optional<QString> defaultTextbook(const QVariantList &records, const QString &course);

private:
    QString m_path;
    // The stamp of the last read (nullopt inside: the file was missing then).
    std::optional<std::optional<FileStamp>> m_stamp;
    QVariantList m_records;
};
