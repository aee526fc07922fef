// Whatever is typed or found in a file, the date readers answer (a real day or nothing) and never crash
// or hang. Seeded, so a failure repeats; the sanitizer build runs the same cases.

#include "DateTextTestPrinters.h"
#include "platform/DateText.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <random>

namespace {

class Fuzzer
{
public:
    explicit Fuzzer(unsigned seed)
        : m_random(seed)
    { }

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    bool chance(int percent) { return below(100) < percent; }

    QChar randomChar()
    {
        static const QString common = QStringLiteral("0123456789/-,. :%+APMapmJFMASONDjfmasondrtyuehb\t");
        switch (below(10)) {
        case 0:
            return QChar(char16_t(below(0x80))); // any ASCII, controls and NUL included
        case 1:
            return QChar(char16_t(below(0x10000))); // any UTF-16 unit, lone surrogates included
        case 2: {
            static const char16_t odd[] = {0x00e9, 0x65e5, 0x0662, 0xff13, 0x00a0, 0x2009, 0xd83d, 0xde00, 0x0130};
            return QChar(odd[below(int(std::size(odd)))]);
        }
        default:
            return common[below(int(common.size()))];
        }
    }

    QString randomString(int maxLength)
    {
        QString text;
        const int length = below(maxLength + 1);
        for (int i = 0; i < length; ++i)
            text += randomChar();
        return text;
    }

    // Small edits of a good text: the typing mistakes and truncations a field really sees.
    QString mutate(QString text)
    {
        const int edits = 1 + below(3);
        for (int e = 0; e < edits; ++e) {
            const int at = text.isEmpty() ? 0 : below(int(text.size()) + 1);
            switch (below(5)) {
            case 0:
                text.insert(at, randomChar());
                break;
            case 1:
                if (!text.isEmpty())
                    text.remove(qMin(at, int(text.size()) - 1), 1 + below(3));
                break;
            case 2:
                if (at < text.size())
                    text[at] = randomChar();
                break;
            case 3:
                text.insert(at, text.mid(below(int(text.size()) + 1), below(6)));
                break;
            default:
                text.truncate(at);
                break;
            }
        }
        return text;
    }

    QString randomFormat()
    {
        static const char directives[] = "AaBbdemyYHIMSpjzZ%qU";
        QString format;
        const int pieces = below(8);
        for (int i = 0; i < pieces; ++i) {
            if (chance(60)) {
                format += u'%';
                format += QChar::fromLatin1(directives[below(int(sizeof directives) - 1)]);
            } else {
                format += randomChar();
            }
        }
        if (chance(10))
            format += u'%';
        return format;
    }

    QDateTime randomMoment()
    {
        // A clock time that a spring change skips is no moment at all; those are drawn again.
        for (;;) {
            const QDate day = QDate(1970, 1, 1).addDays(below(36500));
            const QDateTime moment(day, QTime(below(24), below(60), below(60)));
            if (moment.isValid())
                return moment;
        }
    }

private:
    std::mt19937 m_random;
};

const QStringList Formats
    = {QStringLiteral("%A, %B %e, %Y"), QStringLiteral("%a, %b %e, %Y"), QStringLiteral("%m/%d/%y")};

const QStringList GoodInputs = {QStringLiteral("today"), QStringLiteral("next monday"), QStringLiteral("3/5/2008"),
    QStringLiteral("03/05/08"), QStringLiteral("Mar/ 5/2008"), QStringLiteral("March 5, 2008"),
    QStringLiteral("5 March 2008"), QStringLiteral("2008-03-05"), QStringLiteral("2008-03-05 00:00:00 -0400"),
    QStringLiteral("3 01 2008"), QStringLiteral("Wednesday, March  5, 2008"), QStringLiteral("5th of Sept"),
    QStringLiteral("Wed, Mar  5, 2008"), QStringLiteral("20080305"), QStringLiteral("last fri")};

// A read day is a real day at local midnight (or the first moment of a day the clock skips into).
void expectSane(const std::optional<QDateTime> &moment, const QString &text, const QString &format)
{
    if (!moment)
        return;
    ASSERT_TRUE(moment->isValid()) << text.toStdString() << " with " << format.toStdString();
    EXPECT_EQ(moment->time(), QTime(0, 0)) << text.toStdString() << " with " << format.toStdString();
}

} // namespace

TEST(DateTextFuzz, RandomTextAndMutationsOfGoodText)
{
    Fuzzer fuzz(20081105);
    const QDateTime now = TestEnvironment::pinnedNow();
    int read = 0;
    for (int i = 0; i < 400000; ++i) {
        const QString format = i % 4 == 3 ? fuzz.randomFormat() : Formats[i % 3];
        QString text;
        if (i % 2 == 0)
            text = fuzz.randomString(i % 50 == 0 ? 400 : 30);
        else if (i % 6 == 1)
            text = fuzz.mutate(DateText::format(fuzz.randomMoment(), format));
        else
            text = fuzz.mutate(GoodInputs[fuzz.below(int(GoodInputs.size()))]);
        const auto moment = DateText::parseNatural(text, format, now);
        expectSane(moment, text, format);
        read += moment ? 1 : 0;
        if (testing::Test::HasFailure())
            return;
    }
    // Mutations keep many texts readable; a reader that refused everything would also never crash.
    EXPECT_GT(read, 15000);
}

TEST(DateTextFuzz, RandomFormatsWriteAndReadWithoutHarm)
{
    Fuzzer fuzz(1970);
    for (int i = 0; i < 150000; ++i) {
        const QString format = fuzz.randomFormat();
        const QDateTime moment = fuzz.randomMoment();
        const QString written = DateText::format(moment, format);
        const auto back = DateText::parseWithFormat(written, format, 2026);
        if (back) {
            EXPECT_TRUE(back->isValid());
        }
        const auto mutated = DateText::parseWithFormat(fuzz.mutate(written), format, 2026);
        if (mutated) {
            EXPECT_TRUE(mutated->isValid());
        }
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(DateTextFuzz, FormatsWithSeparatedFieldsReadBackTheirOwnDay)
{
    // Any format whose directives are kept apart by punctuation is read back exactly, whatever the order.
    Fuzzer fuzz(314159);
    static const char *separators[] = {" ", "/", "-", ", ", ".", ": ", " (", ") ", " at "};
    static const char *fillers[] = {"A", "a", "H", "I", "M", "S", "p", "z", "Z", "%"};
    for (int i = 0; i < 30000; ++i) {
        QStringList pieces = {fuzz.chance(50) ? QStringLiteral("%d") : QStringLiteral("%e")};
        const int monthKind = fuzz.below(4);
        if (monthKind < 3)
            pieces << (monthKind == 0 ? QStringLiteral("%m")
                    : monthKind == 1  ? QStringLiteral("%b")
                                      : QStringLiteral("%B"));
        const int yearKind = fuzz.below(3);
        if (yearKind < 2)
            pieces << (yearKind == 0 ? QStringLiteral("%Y") : QStringLiteral("%y"));
        if (monthKind == 3) { // no month: the day of the year instead, which needs a year
            pieces = {QStringLiteral("%j"), QStringLiteral("%Y")};
        }
        for (int extra = fuzz.below(4); extra > 0; --extra)
            pieces << QLatin1Char('%') + QLatin1String(fillers[fuzz.below(int(std::size(fillers)))]);
        std::shuffle(pieces.begin(), pieces.end(), std::mt19937(i));
        QString format;
        for (const QString &piece : pieces) {
            if (!format.isEmpty())
                format += QLatin1String(separators[fuzz.below(int(std::size(separators)))]);
            format += piece;
        }
        const QDateTime moment = fuzz.randomMoment();
        const QString written = DateText::format(moment, format);
        const auto back = DateText::parseWithFormat(written, format, 2026);
        const QDate expected
            = yearKind == 2 && monthKind < 3 ? QDate(2026, moment.date().month(), moment.date().day()) : moment.date();
        if (!expected.isValid()) { // 29 February of another year
            EXPECT_FALSE(back) << written.toStdString() << " with " << format.toStdString();
            continue;
        }
        ASSERT_TRUE(back) << written.toStdString() << " with " << format.toStdString();
        EXPECT_EQ(*back, expected) << written.toStdString() << " with " << format.toStdString();
    }
}

TEST(DateTextFuzz, StoredFormsReadBackToTheSameInstant)
{
    Fuzzer fuzz(4242);
    for (int i = 0; i < 200000; ++i) {
        const QString good = DateText::toStoredForm(fuzz.randomMoment());
        const QString text = i % 2 ? fuzz.mutate(good) : good;
        const auto moment = DateText::fromStoredForm(text);
        if (text == good) {
            ASSERT_TRUE(moment) << text.toStdString();
        }
        if (!moment)
            continue;
        ASSERT_TRUE(moment->isValid()) << text.toStdString();
        const auto again = DateText::fromStoredForm(DateText::toStoredForm(*moment));
        ASSERT_TRUE(again) << text.toStdString();
        EXPECT_EQ(*again, *moment) << text.toStdString();
    }
}
