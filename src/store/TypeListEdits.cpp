#include "store/TypeListEdits.h"

#include <algorithm>

QStringList TypeListEdits::sameEditOn(const QStringList &before, const QStringList &after, QStringList fresh)
{
    qsizetype first = 0;
    while (first < before.size() && first < after.size() && before[first] == after[first])
        ++first;
    if (after.size() == before.size() + 1) {
        fresh.insert(std::min(first == before.size() ? fresh.size() : first, fresh.size()), after[first]);
    } else if (after.size() + 1 == before.size()) {
        fresh.removeOne(before[first]);
    } else if (after.size() == before.size() && first < before.size()) {
        qsizetype last = before.size() - 1;
        while (last > first && before[last] == after[last])
            --last;
        if (first == last) {
            const qsizetype at = fresh.indexOf(before[first]);
            if (at >= 0)
                fresh[at] = after[first];
            return fresh;
        }
        // A move: the type that left its place lands before the type that now follows it.
        const bool forward = after[last] == before[first];
        const QString moved = forward ? before[first] : after[first];
        const qsizetype to = forward ? last : first;
        QStringList check = before;
        check.removeAt(forward ? first : last);
        check.insert(to, moved);
        if (check != after)
            return fresh; // more than one change at once: nothing that can be repeated safely
        const QString next = to + 1 < after.size() ? after[to + 1] : QString();
        if (!fresh.removeOne(moved))
            return fresh;
        const qsizetype at = to + 1 < after.size() ? fresh.indexOf(next) : -1;
        fresh.insert(at >= 0 ? at : fresh.size(), moved);
    }
    return fresh;
}
