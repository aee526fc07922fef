#include "exchange/DueDateTexts.h"
#include "platform/DateText.h"

#include <gtest/gtest.h>

namespace {

// What a due date reads as when every moment is turned into local time on its own.
std::optional<QString> oneByOne(const QString &stored, const QString &format)
{
    const auto moment = DateText::fromStoredForm(stored);
    if (!moment)
        return std::nullopt;
    return DateText::format(moment->toLocalTime(), format);
}

} // namespace

// The shortcuts (one offset per day, one text per day, the stored text kept) give exactly what the
// moment-by-moment way gives, around both changes of the clocks in New York included.
TEST(DueDateTextsTest, MatchesTheMomentByMomentTextsAcrossClockChanges)
{
    const QStringList stored{
        "2026-03-08 01:59:59 -0500", "2026-03-08 03:00:00 -0400", "2026-03-08 06:59:59 +0000",
        "2026-03-08 07:00:00 +0000", "2026-03-08 02:30:00 -0500", "2026-11-01 01:30:00 -0400",
        "2026-11-01 01:30:00 -0500", "2026-11-01 05:59:59 +0000", "2026-11-01 06:00:00 +0000",
        "2026-12-01 09:15:00 -0800", "2026-12-01 09:15:00 -0000", "2026-12-01 09:15:00 +0000",
        "2026-12-01 09:15:00 -0500", "2026-12-01 23:30:00 -0800", "2026-12-02 00:10:00 -0500",
        "1969-12-31 23:59:59 +0000", "1883-11-18 12:00:00 -0500", "0999-06-01 00:00:00 -0500",
        "garbage",                   "2026-02-30 00:00:00 -0500", "2026-12-01 09:15:00 -0500 ",
    };
    const QStringList formats{QString::fromLatin1(DateText::StoredFormat),
                              "%A, %B %e, %Y",
                              "%m/%d/%y",
                              "%a %b %d %j %%",
                              "%I:%M %p %Z",
                              "%H:%M:%S %z",
                              "",
                              "100%",
                              "%Y %q"};
    for (const QString &format : formats) {
        DueDateTexts texts(format);
        for (int round = 0; round < 2; ++round) { // the second round answers from what was kept
            for (const QString &text : stored)
                EXPECT_EQ(texts.text(text), oneByOne(text, format)) << text.toStdString() << " in "
                                                                    << format.toStdString();
        }
    }
}
