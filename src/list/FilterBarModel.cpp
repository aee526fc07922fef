#include "list/FilterBarModel.h"

#include "list/ListLog.h"
#include "list/ListTexts.h"

FilterBarModel::FilterBarModel(QObject *parent)
    : QObject(parent)
{
}

void FilterBarModel::setSize(int width, int height)
{
    if (width == m_width && height == m_height)
        return;
    m_width = width;
    m_height = height;

    // The selection survives as a flat list of the titles that were on, segment by segment.
    QStringList selected;
    for (const Segment &segment : std::as_const(m_segments))
        for (const Item &item : segment)
            if (item.on)
                selected.append(item.title);

    clearItems();
    if (m_remembered)
        addTitles(m_originalTitles);
    for (int i = 0; i < m_segments.size(); ++i) {
        if (m_segments[i].isEmpty())
            continue;
        if (i >= selected.size()) {
            // The flat list ran out while this segment still has items: nothing of it is chosen.
            qCDebug(lcList) << "filter bar: no kept title for segment" << i << "after a resize";
            break;
        }
        for (Item &item : m_segments[i])
            if (!item.isDivider() && item.title == selected[i]) {
                item.on = true;
                break;
            }
    }
    Q_EMIT layoutChanged();
    Q_EMIT selectionChanged();
}

void FilterBarModel::addItemsWithTitles(const QStringList &titles, std::function<void()> action)
{
    addTitles(titles);
    if (!m_remembered) {
        m_remembered = true;
        m_originalTitles = titles;
        m_originalAction = std::move(action);
    }
    for (Segment &segment : m_segments)
        if (!segment.isEmpty() && !segment.first().isDivider())
            segment.first().on = true;
    Q_EMIT layoutChanged();
    Q_EMIT selectionChanged();
}

void FilterBarModel::addTitles(const QStringList &titles)
{
    for (const QString &title : titles) {
        if (title == ListTexts::Divider)
            addDivider();
        else
            addButton(title);
    }
}

void FilterBarModel::addButton(const QString &title)
{
    Item item;
    item.title = title;
    item.width = m_metrics.buttonWidth(title);
    item.height = m_metrics.buttonHeight;
    item.x = m_buttonX;
    item.y = (m_height - item.height) / 2;
    m_buttonX = m_buttonX + item.width + 2;
    if (fits()) {
        item.kind = Kind::Button;
    } else {
        // The position has advanced all the same, so every later title overflows too.
        item.kind = Kind::MenuItem;
        m_hasOverflowMenu = true;
    }
    m_segments.last().append(item);
}

void FilterBarModel::addDivider()
{
    Item item;
    item.title = ListTexts::Divider;
    if (fits()) {
        m_buttonX += 3;
        item.kind = Kind::Divider;
        item.width = m_metrics.dividerWidth;
        item.height = m_metrics.dividerHeight;
        item.x = m_buttonX;
        item.y = (m_height - item.height) / 2;
        m_buttonX = m_buttonX + 3 + item.width + 2;
    } else {
        item.kind = Kind::MenuSeparator;
        m_hasOverflowMenu = true;
    }
    m_segments.last().append(item);
    m_segments.append(Segment());
}

void FilterBarModel::clearItems()
{
    m_segments = {Segment()};
    m_hasOverflowMenu = false;
    m_buttonX = FirstButtonX;
}

void FilterBarModel::removeAllItems()
{
    clearItems();
    m_remembered = false;
    m_originalTitles.clear();
    m_originalAction = nullptr;
    Q_EMIT layoutChanged();
    Q_EMIT selectionChanged();
}

QString FilterBarModel::getSelectedTitleInSegment(int segment) const
{
    if (segment < 0 || segment >= m_segments.size())
        return QString(""); // an empty, not a null, string: callers compare it with titles
    for (const Item &item : m_segments[segment])
        if (item.on)
            return item.title;
    return QString("");
}

int FilterBarModel::getSelectedIndexInSegment(int segment) const
{
    if (segment < 0 || segment >= m_segments.size())
        return -1;
    const Segment &items = m_segments[segment];
    for (int i = 0; i < items.size(); ++i)
        if (items[i].on)
            return i;
    return -1;
}

void FilterBarModel::selectTitleInSegment(const QString &title, int segment)
{
    if (segment < 0 || segment >= m_segments.size())
        return;
    const Segment &items = m_segments[segment];
    for (int i = 0; i < items.size(); ++i)
        if (!items[i].isDivider() && items[i].title == title) {
            performAction(segment, i);
            return;
        }
}

void FilterBarModel::selectIndexInSegment(int position, int segment)
{
    if (position < 0 || segment < 0 || segment >= m_segments.size())
        return;
    if (position >= m_segments[segment].size()) {
        qCWarning(lcList) << "filter bar: no item" << position << "in segment" << segment;
        return;
    }
    performAction(segment, position);
}

void FilterBarModel::performAction(int segment, int position)
{
    if (segment < 0 || segment >= m_segments.size() || position < 0 || position >= m_segments[segment].size())
        return;
    Segment &items = m_segments[segment];
    if (items[position].isDivider())
        return;
    for (int i = 0; i < items.size(); ++i)
        items[i].on = i == position;
    Q_EMIT selectionChanged();
    // The action may rebuild the bar; keep a copy so it outlives that.
    if (auto action = m_originalAction)
        action();
}

QStringList FilterBarModel::overflowMenuTitles() const
{
    QStringList titles;
    for (const Segment &segment : m_segments)
        for (const Item &item : segment) {
            if (item.kind == Kind::MenuItem)
                titles.append(item.title);
            else if (item.kind == Kind::MenuSeparator)
                titles.append(ListTexts::Divider);
        }
    return titles;
}
