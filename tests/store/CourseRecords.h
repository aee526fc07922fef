#pragma once

#include "store/CoursesStore.h"

#include <QVariantMap>

// Course and textbook records as the courses window writes them.
namespace CourseRecords {

inline QVariantMap course(const QString &name, QVariantMap extra = {})
{
    extra.insert(CourseKeys::Name, name);
    extra.insert(CourseKeys::DisplayName, name);
    extra.insert(CourseKeys::Type, CourseKeys::CourseType);
    return extra;
}

inline QVariantMap textbook(const QString &name, const QString &owner)
{
    return {{CourseKeys::Name, name},
            {CourseKeys::DisplayName, CourseKeys::Indent + name},
            {CourseKeys::Type, CourseKeys::TextbookType},
            {CourseKeys::Course, owner}};
}

} // namespace CourseRecords
