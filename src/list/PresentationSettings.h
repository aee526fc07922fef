#pragma once

#include <QColor>
#include <QDate>
#include <QHash>
#include <QString>

#include <optional>

// What the table's cells need from the preferences, read once per redraw rather than per cell:
// the date format, the duplicate-date and day-band switches, the colour scheme and the decoded
// colour table, the subproject title format, and today's date.
struct PresentationSettings {
    QString dateFormat;
    bool displayDuplicateDates = false;
    bool alternateRowColors = false;
    qint64 colorFormat = 0;
    // Colour key -> colour; a key whose text is present but no colour string gives no colour.
    QHash<QString, std::optional<QColor>> colors;
    QString subprojectTitleFormat;
    QDate today;

    enum Scheme { ByDueDate = 0, ByCourse = 1, ByType = 2, ByPriority = 3 };

    // Reads the preferences and the clock now.
    static PresentationSettings load();

    bool hasColor(const QString &key) const { return colors.contains(key); }
    // The colour stored under `key`; nullopt when there is none (the default text colour).
    std::optional<QColor> color(const QString &key) const { return colors.value(key); }
};
