#pragma once

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/CoursesStore.h"
#include "store/Preferences.h"

#include <QDir>
#include <QStringList>
#include <QVariantMap>
#include <gtest/gtest.h>

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

// The "Display Name" of each record of a combined list, in order.
inline QStringList displayNames(const QVariantList &combined)
{
    QStringList names;
    for (const QVariant &record : combined)
        names.append(record.toMap().value(CourseKeys::DisplayName).toString());
    return names;
}

// A data folder and every preference at its default, as after a first start.
class DataFolderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(Paths::dataFolder());
        Preferences::setAllDefaults();
    }
    static void write(const QString &path, const QVariantList &array) { ASSERT_TRUE(PropertyList::writeFile(path, array)); }
};

} // namespace CourseRecords
