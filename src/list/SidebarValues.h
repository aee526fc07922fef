#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

// The values of the details sidebar's editors, as the window fills them in for an edit and as the
// list hands them back to be shown. Text fields hold what the field shows; an empty text means the
// user left the field empty.
struct SidebarValues {
    QString name;
    QString dateText; // as typed or shown; read with the "Date Format" and natural language
    QString course;
    QString textbook;
    bool completed = false;
    QString type;
    QString grade;
    double priority = 1.0;
    QString notes;
    QVariantList contacts;
    QString contactsText; // the contacts line as shown: each record by its name
    QString file;         // the file picker's path; empty when it holds no file
    QByteArray snapshot;  // image data as stored; empty when there is no image
    QVariant reminder;    // the record's own reminder in minutes before (0: none); invalid: the preferences'

    // The three date pull-downs: the selected titles, empty when nothing is selected.
    QString monthTitle;
    QString dayTitle;
    QString yearTitle;

    bool operator==(const SidebarValues &) const = default;
};

// Where the sidebar's values come from and go to. The window implements it.
class SidebarEditor
{
public:
    virtual ~SidebarEditor() = default;
    virtual SidebarValues sidebarValues() const = 0;
    // Shows changed values (a course's default textbook, a date moved by days).
    virtual void setSidebarValues(const SidebarValues &values) = 0;
    // Hands an edit the user has not finished (the keyboard still in a field) to the list. Called
    // before anything that changes the selection, the lists or the store, since a click on a
    // control that takes no focus, or a shortcut, never ends the edit by itself.
    virtual void commitPendingEdit() {}
};
