#include "platform/Clock.h"
#include "platform/DateText.h"

#include <QTimeZone>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// The date readers: what a student types, the stored form and dates read with a display format.
// The first byte picks the reader; the rest up to a NUL is the text, after it the format.
namespace {

void fail(const char *what, const QString &text)
{
    std::fprintf(stderr, "%s: \"%s\"\n", what, qPrintable(text));
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // A zone with daylight saving, as the tests use.
    setenv("TZ", "America/New_York", 1);
    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(10, 30, 0)));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return -1;
    const QByteArray rest(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    const qsizetype split = rest.indexOf('\0');
    const QString text = QString::fromUtf8(split < 0 ? rest : rest.left(split));
    const QString format = split < 0 ? QStringLiteral("%A, %B %e, %Y") : QString::fromUtf8(rest.mid(split + 1));
    const QDateTime now = Clock::now();
    switch (data[0] % 4) {
    case 0:
        if (const auto day = DateText::parseNatural(text, format, now)) {
            if (!day->isValid())
                fail("parseNatural gave an invalid moment", text);
            // The day it names reads back from its stored form.
            const QString stored = DateText::toStoredForm(*day);
            if (DateText::fromStoredForm(stored) != *day)
                fail("the stored form of a typed date does not read back", text);
        }
        break;
    case 1:
        if (const auto moment = DateText::fromStoredForm(text)) {
            if (!moment->isValid())
                fail("fromStoredForm gave an invalid moment", text);
            if (!DateText::storedDay(text))
                fail("a stored form has no day", text);
        }
        break;
    case 2:
        if (const auto day = DateText::parseWithFormat(text, format, 2026)) {
            if (!day->isValid())
                fail("parseWithFormat gave an invalid day", text);
        }
        break;
    default: {
        // Any format applied to a moment near the input's hash, then read back with that format.
        const QDateTime moment = now.addSecs(qint64(qHash(text)) % (400LL * 86400 * 366));
        const QString written = DateText::format(moment, format);
        (void)DateText::parseWithFormat(written, format, moment.date().year());
        break;
    }
    }
    return 0;
}
