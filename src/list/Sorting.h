#pragma once

#include "store/Assignment.h"

#include <QString>

#include <memory>

// The sort of the assignment list: three keys in one direction, the clicked column, then the due
// date, then the name. "Date", "Completed" and "Priority" compare by the values' own order (the
// stored date text as text, the numbers as numbers); every other column compares its text without
// regard to case. Records without a value sort together before every present value in ascending
// order, after them in descending order.
//
// The keys are read out of the records once rather than looked up inside the comparison: each key
// becomes a rank among its distinct values (equal values share a rank, missing values rank
// lowest), the three ranks of a record pack into one integer, and the sort orders integers. A
// KeyCache keeps the ranks of one list between sorts, so sorting the same records again (a header
// click) reads no record map at all. The result is always that of a stable sort.
namespace Sorting {

// The ranks of one list's records, valid while the list holds the same records at the same
// revisions; it follows the list through the sorts it is given to, and rebuilds itself after any
// other change.
class KeyCache
{
public:
    KeyCache();
    ~KeyCache();
    KeyCache(const KeyCache &) = delete;
    KeyCache &operator=(const KeyCache &) = delete;

    struct Data;

private:
    friend Data &dataOf(KeyCache &cache);
    std::unique_ptr<Data> d;
};

struct Order {
    QString column;
    bool ascending = true;
    bool operator==(const Order &) const = default;
};

void sort(AssignmentList &list, const Order &order, KeyCache *cache = nullptr);
// How `a` compares with `b` in `order` (direction included): negative when `a` sorts first, zero
// when all three keys are equal (the stable sort then keeps the order they came in).
int compare(const Assignment &a, const Assignment &b, const Order &order);
// Whether `list` is in `order` already.
bool isSorted(const AssignmentList &list, const Order &order);
// True for the columns whose values compare by their own order rather than as text.
bool comparesByValue(const QString &column);

} // namespace Sorting
