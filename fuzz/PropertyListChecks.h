#pragma once

#include "platform/PropertyList.h"

#include <cstdio>
#include <cstdlib>

// What must hold for any value a reader accepted: it writes out as XML that reads back without any
// text the writer would change, and writing that again gives the same bytes. Text that was not kept
// (a control character dropped from a key moves the key in the order) settles after one round.
inline void checkWritesBackStably(const QVariant &value)
{
    QByteArray first = PropertyList::toXml(value);
    QString error;
    auto again = PropertyList::parse(first, &error);
    if (again && PropertyList::toXml(*again) != first) {
        first = PropertyList::toXml(*again);
        again = PropertyList::parse(first, &error);
    }
    if (!again) {
        std::fprintf(stderr, "what was written does not read back: %s\n", qPrintable(error));
        std::abort();
    }
    PropertyList::ReadReport report;
    PropertyList::parse(first, nullptr, &report);
    if (report.textWillChange) {
        std::fprintf(stderr, "what was written holds text that would change on the next write\n");
        std::abort();
    }
    if (PropertyList::toXml(*again) != first) {
        std::fprintf(stderr, "writing what was read back gives different bytes\n");
        std::abort();
    }
}

// A refused input is refused with a message saying why.
inline void checkSaysWhy(const QString &error)
{
    if (error.isEmpty()) {
        std::fprintf(stderr, "refused without a message\n");
        std::abort();
    }
}
