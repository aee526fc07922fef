#include "list/ColumnLayout.h"

#include "list/ColumnCatalogue.h"
#include "list/ListLog.h"
#include "platform/UserDefaults.h"
#include "store/ColumnKeys.h"
#include "store/PreferenceKeys.h"

#include <QSet>
#include <QVariantMap>

#include <cmath>

namespace {
const QString IdentifierKey = QStringLiteral("Identifier");
const QString WidthKey = QStringLiteral("Width");
} // namespace

ColumnLayout::ColumnLayout() = default;

ColumnLayout ColumnLayout::initial()
{
    QList<Entry> entries;
    for (const QString &identifier :
         {ColumnCatalogue::Completed, ColumnCatalogue::Name, ColumnCatalogue::Date, ColumnCatalogue::Course})
        entries.append({identifier, ColumnKeys::initialWidth(identifier)});
    return ColumnLayout(entries);
}

std::optional<ColumnLayout> ColumnLayout::fromPreferences(const QVariant &stored)
{
    if (!stored.isValid() || stored.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QList<Entry> entries;
    QSet<QString> seen;
    for (const QVariant &value : stored.toList()) {
        const QVariantMap entry = value.toMap();
        const QString identifier = entry.value(IdentifierKey).toString();
        const ColumnCatalogue::Column *column = ColumnCatalogue::find(identifier);
        if (!column || seen.contains(identifier)) {
            qCInfo(lcList) << "column layout: skipping entry" << identifier;
            continue;
        }
        seen.insert(identifier);
        const QVariant width = entry.value(WidthKey);
        bool ok = false;
        const double points = width.toDouble(&ok);
        entries.append(
            {identifier, ok && std::isfinite(points) ? int(std::trunc(points)) : ColumnKeys::initialWidth(identifier)});
    }
    // The table keeps every column within its limits, whatever the list says.
    ColumnLayout layout(entries);
    for (int i = 0; i < layout.count(); ++i)
        layout.setWidth(i, layout.widthAt(i));
    return layout;
}

std::optional<ColumnLayout> ColumnLayout::load()
{
    return fromPreferences(UserDefaults().object(PreferenceKeys::UserColumnsOrdering));
}

QVariantList ColumnLayout::toPreferences() const
{
    QVariantList list;
    for (const Entry &entry : m_entries)
        list.append(QVariantMap{{IdentifierKey, entry.identifier}, {WidthKey, qint64(entry.width)}});
    return list;
}

void ColumnLayout::save() const
{
    UserDefaults().set(PreferenceKeys::UserColumnsOrdering, toPreferences());
}

QString ColumnLayout::identifierAt(int index) const
{
    return index >= 0 && index < m_entries.size() ? m_entries[index].identifier : QString();
}

int ColumnLayout::indexOf(const QString &identifier) const
{
    for (int i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].identifier == identifier)
            return i;
    return -1;
}

int ColumnLayout::widthAt(int index) const
{
    return index >= 0 && index < m_entries.size() ? m_entries[index].width : 0;
}

void ColumnLayout::setWidth(int index, double width)
{
    if (index < 0 || index >= m_entries.size() || !std::isfinite(width))
        return;
    int points = int(std::trunc(width));
    if (const ColumnCatalogue::Column *column = ColumnCatalogue::find(m_entries[index].identifier)) {
        points = std::max(points, column->minimumWidth);
        if (column->maximumWidth > 0)
            points = std::min(points, column->maximumWidth);
    }
    m_entries[index].width = points;
}

void ColumnLayout::move(int from, int to)
{
    if (from < 0 || from >= m_entries.size() || to < 0 || to >= m_entries.size() || from == to)
        return;
    m_entries.move(from, to);
}
