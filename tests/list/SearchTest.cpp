#include "ListTestSupport.h"

#include "list/DisplayPipeline.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {

// The search written the slow way: every field of every record lowered afresh and tested alone.
AssignmentList referenceSearch(const AssignmentList &filtered, const QString &text, const QString &scope)
{
    if (text.isEmpty())
        return filtered;
    AssignmentList found;
    for (const AssignmentRef &record : filtered)
        for (const DisplayPipeline::Field &field : DisplayPipeline::fields())
            if ((scope.isEmpty() || scope == field.scope) && record->has(field.key)
                && record->string(field.key).toLower().contains(text)) {
                found.append(record);
                break;
            }
    return found;
}

const QStringList Words = {"ab", "Ba", "abc", "Übung", "\x1f", "c", "", "ÄB", "b\x1f" "a"};

QString randomText(QRandomGenerator &random, int words)
{
    QString text;
    for (int i = 0; i < words; ++i)
        text += Words[random.bounded(int(Words.size()))];
    return text;
}

AssignmentRef randomRecord(QRandomGenerator &random)
{
    QVariantMap fields;
    for (const DisplayPipeline::Field &field : DisplayPipeline::fields())
        if (random.bounded(3))
            fields.insert(fieldKey(field.key), randomText(random, random.bounded(4)));
    return Assignments::make(fields);
}

} // namespace

// Typing, narrowing, scopes, texts holding the field separator, edits in place, records replaced,
// removed, reordered and filtered out and back: the cached search always agrees with the plain one.
TEST(Search, AgreesWithAPlainSearchThroughEditsAndNarrowing)
{
    QRandomGenerator random(11);
    AssignmentList all;
    for (int i = 0; i < 300; ++i)
        all.append(randomRecord(random));
    const QStringList scopes = {"", "name", "course", "textbook", "grade", "type", "notes", "nothing"};

    DisplayPipeline pipeline;
    AssignmentList filtered = all;
    QString text;
    QString scope;
    for (int step = 0; step < 600; ++step) {
        switch (random.bounded(8)) {
        case 0: // a new text
            text = randomText(random, 1 + random.bounded(2)).toLower();
            break;
        case 1: // a scope
            scope = scopes[random.bounded(int(scopes.size()))];
            break;
        case 2: // an edit in place
            filtered[random.bounded(int(filtered.size()))]->set(
                DisplayPipeline::fields()[size_t(random.bounded(DisplayPipeline::FieldCount))].key,
                randomText(random, 2));
            break;
        case 3: // a filter: a random part of the records, in order
            filtered.clear();
            for (const AssignmentRef &record : all)
                if (random.bounded(4))
                    filtered.append(record);
            if (filtered.isEmpty())
                filtered = all;
            break;
        case 4: // a sort: the same records in another order
            std::shuffle(filtered.begin(), filtered.end(), random);
            break;
        case 5: // a record replaced by a new one
            filtered[random.bounded(int(filtered.size()))] = randomRecord(random);
            break;
        default: // typing on
            text += randomText(random, 1).toLower();
            break;
        }
        EXPECT_EQ(pipeline.search(filtered, text, scope), referenceSearch(filtered, text, scope))
            << step << " " << text.toStdString() << " in " << scope.toStdString();
    }
}

// Many more records changing than the buffer holds stays correct when the buffer is rebuilt.
TEST(Search, ManyEditsRebuildTheTextWithoutLosingRecords)
{
    AssignmentList list;
    for (int i = 0; i < 50; ++i)
        list.append(record(QStringLiteral("Essay %1").arg(i), {{Notes, QString(4000, QChar('n'))}}));
    DisplayPipeline pipeline;
    for (int round = 0; round < 12; ++round) {
        for (const AssignmentRef &r : list)
            r->set(Notes, QString(4000, QChar('a' + round)));
        const QString wanted = QString(3, QChar('a' + round));
        EXPECT_EQ(pipeline.search(list, wanted, "notes").size(), list.size()) << round;
        EXPECT_EQ(pipeline.search(list, "essay 4", "").size(), 11) << round;
    }
}
