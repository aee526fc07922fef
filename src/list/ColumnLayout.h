#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <optional>

// The columns the assignment table shows, left to right, with their widths in whole points, as
// kept in "Preferences - User Columns Ordering".
class ColumnLayout
{
public:
    struct Entry {
        QString identifier;
        int width = 0;
        bool operator==(const Entry &) const = default;
    };

    ColumnLayout();
    explicit ColumnLayout(QList<Entry> entries) : m_entries(std::move(entries)) {}

    // The catalogue's first four columns as the table starts before a layout is applied.
    static ColumnLayout initial();

    // Reads the stored list; entries naming a column the catalogue lacks, naming one a second
    // time, or without an identifier are skipped. nullopt when the list is missing (the table then
    // keeps its columns).
    static std::optional<ColumnLayout> fromPreferences(const QVariant &stored);
    // Reads "Preferences - User Columns Ordering" from the preferences.
    static std::optional<ColumnLayout> load();
    QVariantList toPreferences() const;
    // Writes "Preferences - User Columns Ordering".
    void save() const;

    const QList<Entry> &entries() const { return m_entries; }
    int count() const { return int(m_entries.size()); }
    QString identifierAt(int index) const;
    int indexOf(const QString &identifier) const;
    int widthAt(int index) const;

    // A width from the widget, truncated toward zero and kept within the column's limits.
    void setWidth(int index, double width);
    void move(int from, int to);

    bool operator==(const ColumnLayout &) const = default;

private:
    QList<Entry> m_entries;
};
