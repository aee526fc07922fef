#pragma once

#include "store/Assignment.h"

#include <QString>

// The sort of the assignment list: three keys in one direction, the clicked column, then the due
// date, then the name. "Date", "Completed" and "Priority" compare by the values' own order (the
// stored date text as text, the numbers as numbers); every other column compares its text without
// regard to case. Records without a value sort together before every present value in ascending
// order, after them in descending order.
//
// The keys are read out of every record once per sort (text from the records' lowered caches)
// rather than looked up inside the comparison, and a list that is already sorted apart from a few
// records at its end (the usual case after an add) is merged rather than sorted again. The result
// is always that of a stable sort.
namespace Sorting {

struct Order {
    QString column;
    bool ascending = true;
    bool operator==(const Order &) const = default;
};

void sort(AssignmentList &list, const Order &order);
// Whether `list` is in `order` already.
bool isSorted(const AssignmentList &list, const Order &order);
// True for the columns whose values compare by their own order rather than as text.
bool comparesByValue(const QString &column);

} // namespace Sorting
