// GLib before Qt: its headers use the word "signals".
#include <libebook-contacts/libebook-contacts.h>

#include "contacts/VCardFolderBook.h"

#include "contacts/EContactPerson.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(lcVCardFolder, "quillory.contacts")

namespace {
const QStringList CardFilePatterns{QStringLiteral("*.vcf"), QStringLiteral("*.vcard")};
const QByteArray CardStart = QByteArrayLiteral("BEGIN:VCARD");

// A file may hold several cards; each starts on a line of its own. A folded continuation line
// begins with a blank, so it can never look like the start of a card. The cards themselves are
// parsed by the vCard library.
QList<QByteArray> splitCards(const QByteArray &bytes)
{
    QList<QByteArray> cards;
    qsizetype start = -1;
    qsizetype lineStart = 0;
    while (lineStart < bytes.size()) {
        qsizetype lineEnd = bytes.indexOf('\n', lineStart);
        if (lineEnd < 0)
            lineEnd = bytes.size();
        const QByteArray line = bytes.mid(lineStart, lineEnd - lineStart).trimmed();
        if (line.compare(CardStart, Qt::CaseInsensitive) == 0) {
            if (start >= 0)
                cards.append(bytes.mid(start, lineStart - start));
            start = lineStart;
        }
        lineStart = lineEnd + 1;
    }
    if (start >= 0)
        cards.append(bytes.mid(start));
    return cards;
}

bool startsWith(const QString &text, const QString &prefix)
{
    return text.startsWith(prefix, Qt::CaseInsensitive);
}
} // namespace

VCardFolderBook::VCardFolderBook(std::function<QString()> folder)
    : m_folder(std::move(folder))
{
}

QString VCardFolderBook::description() const
{
    return QStringLiteral("vCard files in %1").arg(m_folder());
}

QList<Person> VCardFolderBook::personsInCards(const QByteArray &bytes, const QString &fallbackUid)
{
    QList<Person> persons;
    const QList<QByteArray> cards = splitCards(bytes);
    for (qsizetype i = 0; i < cards.size(); ++i) {
        EContact *contact = e_contact_new_from_vcard(cards[i].constData());
        if (!contact)
            continue;
        Person person = personFromEContact(contact);
        g_object_unref(contact);
        // A card without UID still needs an identity that stays the same between reads.
        if (person.uid.isEmpty())
            person.uid = i == 0 ? fallbackUid : QStringLiteral("%1-%2").arg(fallbackUid).arg(i);
        persons.append(person);
    }
    return persons;
}

QList<Person> VCardFolderBook::allPersons()
{
    const QString folder = m_folder();
    if (folder != m_cachedFolder) {
        m_files.clear();
        m_cachedFolder = folder;
    }
    QStringList paths;
    QDirIterator it(folder, CardFilePatterns, QDir::Files | QDir::Readable, QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(it.next());
    std::sort(paths.begin(), paths.end());

    QHash<QString, CachedFile> files;
    QList<Person> persons;
    for (const QString &path : std::as_const(paths)) {
        const QFileInfo info(path);
        CachedFile cached = m_files.value(path);
        if (cached.size != info.size() || cached.modified != info.lastModified()) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                qCWarning(lcVCardFolder) << "Cannot read the card file" << path << file.errorString();
                continue;
            }
            cached.size = info.size();
            cached.modified = info.lastModified();
            cached.persons = personsInCards(file.readAll(), info.completeBaseName());
        }
        persons.append(cached.persons);
        files.insert(path, cached);
    }
    m_files = std::move(files);
    return persons;
}

QList<Person> VCardFolderBook::personsMatching(const QString &firstNamePrefix, const std::optional<QString> &lastNameSuffix)
{
    QList<Person> matches;
    for (const Person &person : allPersons()) {
        if (!startsWith(person.firstName, firstNamePrefix))
            continue;
        if (lastNameSuffix && !person.lastName.endsWith(*lastNameSuffix, Qt::CaseInsensitive))
            continue;
        matches.append(person);
    }
    return matches;
}
