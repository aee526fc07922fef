#pragma once

#include <QString>

class CoursesStore;

// What the courses window tells the student about data files it cannot use: a courses file that
// does not read (once, until it reads again; the file is left as it is) and a universal types
// file that kept a change from being saved.
class CoursesFileWarnings
{
public:
    static inline const QString Title = QStringLiteral("Courses Error");
    static inline const QString UnreadableMessage = QStringLiteral(
        "The courses and textbooks file could not be read, so changes made in this window cannot be saved.  The "
        "file has been left as it is.");
    static inline const QString UnreadableTypesMessage = QStringLiteral(
        "The universal types file could not be read, so the change could not be saved.  The file has been left as "
        "it is.");

    explicit CoursesFileWarnings(const CoursesStore &store);

    // Warns when the store's file cannot be used, unless it was already said since it last could.
    void warnIfUnusable();
    void typesNotSaved();

private:
    const CoursesStore &m_store;
    bool m_warned = false;
};
