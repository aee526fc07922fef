// Dates written by the program read back as what was written, in any format whose fields are kept
// apart and in the stored form, also after small edits. Seeded, so a failure repeats. That the readers
// never crash or hang on any text is the date fuzzer's part (fuzz/fuzz_date_text.cpp).

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

} // namespace

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
