#include "support/StoreGenerator.h"

#include "platform/PropertyList.h"
#include "store/Assignment.h"

#include <QByteArray>
#include <QVariantMap>

#include <array>
#include <cstdio>

namespace {

// splitmix64: the same sequence everywhere, unlike the standard library's distributions.
class Random
{
public:
    explicit Random(quint64 seed) : m_state(seed) {}
    quint64 next()
    {
        quint64 z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int below(int bound) { return int(next() % quint64(bound)); }
    bool chance(int percent) { return below(100) < percent; }
    double unit() { return double(next() >> 11) / double(quint64(1) << 53); }
    template<typename T, size_t N>
    const T &pick(const std::array<T, N> &items)
    {
        return items[size_t(below(int(N)))];
    }

private:
    quint64 m_state;
};

constexpr int SnapshotBytes = 50 * 1024;
constexpr qint64 FirstCreated = 1756000000; // late August 2025, the start of a school year

const std::array<const char *, 10> Courses = {
    "Calculus II", "Organic Chemistry", "World History", "Français 201", "Computer Science 101",
    "English Literature", "Physics: Mechanics & Waves", "Music Theory", "Español III", "Psychology"};
const std::array<const char *, 8> Textbooks = {
    "Stewart, Calculus (8th ed.)", "Clayden, Organic Chemistry", "Bentley & Ziegler, Traditions",
    "Alter Ego+ 3", "Structure and Interpretation of Computer Programs", "The Norton Anthology",
    "Halliday, Fundamentals of Physics", "Tonal Harmony"};
const std::array<const char *, 8> Types = {"Homework", "Quiz", "Test", "Project", "Paper", "Lab", "Reading",
                                           "Presentation"};
const std::array<const char *, 9> Grades = {"A", "A-", "B+", "B", "C+", "93%", "17/20", "Pass", "100"};
const std::array<const char *, 8> NameForms = {
    "Read chapter %d", "Problem set %d", "Lab report %d", "Essay draft #%d", "Übungsblatt %d",
    "Vocabulary quiz %d", "Milestone %d — outline", "Exercices de révision %d"};
const std::array<const char *, 12> Sentences = {
    "Remember to show all work on the integrals.",
    "Bring the lab notebook & safety goggles.",
    "Ask Prof. Müller about the <extra credit> question.",
    "Révisez le subjonctif et les verbes irréguliers.",
    "Meet the group in the library at 7 — room 2.14.",
    "数学の宿題は金曜日までに提出すること。",
    "Focus on sections 4.2–4.5; skip the proofs.",
    "Cite at least three primary sources (Chicago style).",
    "Повторить лекции 5–7 перед контрольной.",
    "Upload the PDF before midnight, not the .docx!",
    "¿Dónde está la biblioteca? Practicar el diálogo.",
    "Group chat says the test moved to Thursday ✓"};
const std::array<const char *, 8> People = {"Ana García", "Jörg Schmidt", "李明", "Priya Natarajan",
                                              "Olivia O'Brien", "Kwame Mensah", "Søren Kierkegaard",
                                              "Zoë Martin"};

// "%Y-%m-%d %H:%M:%S %z" with the offset of New York (daylight saving from mid-March to early
// November), written directly so the store does not depend on the machine's time zone.
QString stampText(qint64 secondsSince1970)
{
    const QDateTime utc = QDateTime::fromSecsSinceEpoch(secondsSince1970, Qt::UTC);
    const int month = utc.date().month();
    const bool summer = month > 3 && month < 11;
    const QDateTime local = utc.addSecs(summer ? -4 * 3600 : -5 * 3600);
    const QDate d = local.date();
    const QTime t = local.time();
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d %s", d.year(), d.month(), d.day(), t.hour(),
                  t.minute(), t.second(), summer ? "-0400" : "-0500");
    return QString::fromLatin1(text);
}

QString formatted(const char *form, int number)
{
    char text[128];
    std::snprintf(text, sizeof text, form, number);
    return QString::fromUtf8(text);
}

QByteArray snapshot(Random &random)
{
    // A little-endian TIFF header followed by noise, which base64 cannot shrink.
    QByteArray bytes(SnapshotBytes, Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); i += 8) {
        const quint64 bits = random.next();
        for (qsizetype j = 0; j < 8 && i + j < bytes.size(); ++j)
            bytes[i + j] = char(bits >> (8 * j));
    }
    bytes.replace(0, 4, QByteArray("II*\0", 4));
    return bytes;
}

} // namespace

namespace StoreGenerator {

QVariantList assignments(int count, quint64 seed)
{
    using namespace AssignmentKeys;
    Random random(seed);
    QVariantList records;
    records.reserve(count);
    QStringList projects;
    for (int i = 0; i < count; ++i) {
        QVariantMap record;
        const qint64 created = FirstCreated + qint64(i) * 2700 + random.below(2700);
        const double createdExact = double(created) + random.unit();
        record.insert(Name, formatted(random.pick(NameForms), 1 + random.below(40)));
        if (random.chance(92)) {
            const qint64 due = created + 86400 * (1 + random.below(30));
            record.insert(Date, stampText(due - due % 3600 + (random.chance(50) ? 0 : 3599)));
        }
        if (random.chance(95))
            record.insert(Course, QString::fromUtf8(random.pick(Courses)));
        if (random.chance(60))
            record.insert(Textbook, QString::fromUtf8(random.pick(Textbooks)));
        if (random.chance(90))
            record.insert(Type, QString::fromUtf8(random.pick(Types)));
        if (random.chance(35))
            record.insert(Grade, QString::fromUtf8(random.pick(Grades)));
        // The slider's value has full precision; an untouched one is the repaired 1.0.
        record.insert(Priority, random.chance(50) ? 1.0 : 2.0 * random.unit());
        if (random.chance(70))
            record.insert(Completed, random.chance(60));
        if (random.chance(75)) {
            QString notes;
            for (int s = 1 + random.below(6); s > 0; --s) {
                if (!notes.isEmpty())
                    notes += random.chance(30) ? QStringLiteral("\n") : QStringLiteral(" ");
                notes += QString::fromUtf8(random.pick(Sentences));
            }
            record.insert(Notes, notes);
        }
        if (random.chance(8)) {
            QVariantList people;
            for (int c = 1 + random.below(3); c > 0; --c)
                people.append(QString::fromUtf8(random.pick(People)));
            record.insert(AssignmentKeys::Contacts, people);
        }
        if (random.chance(5))
            record.insert(File, QStringLiteral("/home/student/Documents/Assignment %1.pdf").arg(i));
        // Exactly one record in a hundred, so the store's size does not hinge on the dice.
        if (i % 100 == 50)
            record.insert(Snapshot, snapshot(random));
        if (random.chance(4)) {
            const QString id = stampText(created);
            record.insert(Project, id);
            projects.append(id);
        } else if (!projects.isEmpty() && random.chance(8)) {
            // Subprojects belong to one of the latest projects.
            const int recent = int(std::min<qsizetype>(projects.size(), 20));
            record.insert(Subproject, projects[projects.size() - 1 - random.below(recent)]);
        }
        record.insert(DateCreated, createdExact);
        record.insert(DateUpdated, stampText(created + random.below(86400 * 20)));
        records.append(record);
    }
    return records;
}

bool writeStore(const QString &path, int count, QString *error, quint64 seed)
{
    return PropertyList::writeFile(path, assignments(count, seed), error);
}

} // namespace StoreGenerator
