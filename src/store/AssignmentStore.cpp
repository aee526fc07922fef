#include "store/AssignmentStore.h"

#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>


Q_LOGGING_CATEGORY(lcStore, "quillory.store")

AssignmentStore::AssignmentStore()
    : AssignmentStore(Paths::assignmentsFile())
{
}

AssignmentStore::AssignmentStore(QString path)
    : m_path(std::move(path))
{
}

std::optional<QVariantList> AssignmentStore::readFile(const QString &path, QString *error,
                                                      PropertyList::ReadReport *report)
{
    if (!QFileInfo::exists(path))
        return QVariantList();
    QString parseError;
    const auto root = PropertyList::readFile(path, &parseError, report);
    if (!root) {
        if (error)
            *error = parseError;
        return std::nullopt;
    }
    if (root->typeId() != QMetaType::QVariantList) {
        if (error)
            *error = QStringLiteral("the file's root is not an array");
        return std::nullopt;
    }
    QVariantList records = root->toList();
    // Every element must be a record; anything else would be lost by the next save, so such a
    // file is treated as one we cannot read.
    for (const QVariant &record : records) {
        if (record.typeId() != QMetaType::QVariantMap) {
            if (error)
                *error = QStringLiteral("the array holds an element that is not a dictionary");
            return std::nullopt;
        }
    }
    return records;
}

bool AssignmentStore::writeFile(const QString &path, const QVariantList &records)
{
    QString error;
    if (!PropertyList::writeFile(path, records, &error)) {
        qCWarning(lcStore) << "Could not write" << path << ":" << error;
        return false;
    }
    return true;
}

void AssignmentStore::repairAtStartup()
{
    const QString folder = QFileInfo(m_path).absolutePath();
    Paths::makePrivateFolder(folder);
    // Copies that a run killed between writing and renaming left behind, here and beside the
    // preferences, before this run writes anything of its own.
    PropertyList::removeLeftovers(folder);
    PropertyList::removeLeftovers(Paths::preferencesFolder());
    if (!QFileInfo::exists(m_path))
        writeFile(m_path, QVariantList());

    // Two passes, each reading the file afresh and writing it back whole, even when nothing changed.
    const auto pass = [this](const QString &key, const QVariant &value) {
        QString error;
        PropertyList::ReadReport report;
        auto records = readFile(m_path, &error, &report);
        if (!records) {
            qCWarning(lcStore) << "The assignments file cannot be read and is left as it is:" << error;
            return false;
        }
        if (report.textWillChange && !PropertyList::keepOriginalOnce(m_path, m_path + BeforeRepairSuffix)) {
            qCWarning(lcStore) << "The assignments file holds text that cannot be written back exactly, and no copy"
                               << "of it could be kept: it is left as it is";
            return false;
        }
        for (QVariant &record : *records) {
            QVariantMap fields = record.toMap();
            if (!fields.contains(key)) {
                fields.insert(key, value);
                record = fields;
            }
        }
        return writeFile(m_path, *records);
    };
    if (!pass(AssignmentKeys::DateUpdated, DateText::nowStoredForm()))
        return;
    pass(AssignmentKeys::DateCreated, Clock::secondsSince1970());
}

std::optional<AssignmentList> AssignmentStore::load(QString *error)
{
    QString why;
    auto records = readFile(m_path, &why);
    if (!records) {
        m_usable = false;
        m_lastStamp.reset();
        qCWarning(lcStore) << "The assignments file cannot be read; it will not be written until it is replaced:"
                           << why;
        if (error)
            *error = why;
        return std::nullopt;
    }
    m_usable = true;
    remember();
    return Assignments::fromVariantList(std::move(*records));
}

bool AssignmentStore::save(const AssignmentList &list)
{
    if (!m_usable) {
        qCWarning(lcStore) << "Not saving: the assignments file on disk could not be read";
        return false;
    }
    QByteArray bytes;
    if (list.isEmpty()) {
        bytes = PropertyList::toXml(QVariantList());
    } else {
        // Each record keeps its own serialised text until it changes, so a save costs little more
        // than writing the bytes.
        qsizetype size = 64;
        for (const auto &record : list)
            size += record->xml().size();
        const QByteArray header = PropertyList::documentHeader();
        const QByteArray footer = PropertyList::documentFooter();
        bytes.reserve(size + header.size() + footer.size());
        bytes += header;
        bytes += "<array>\n";
        for (const auto &record : list)
            bytes += record->xml();
        bytes += "</array>\n";
        bytes += footer;
    }
    QString error;
    if (!PropertyList::writeBytes(m_path, bytes, &error)) {
        qCWarning(lcStore) << "Could not save the assignments:" << error;
        return false;
    }
    remember();
    return true;
}

void AssignmentStore::remember()
{
    m_lastStamp = FileStamp::of(m_path);
    m_accessed = true;
}

bool AssignmentStore::isUnchangedSinceLastAccess() const
{
    return m_accessed && m_usable && FileStamp::of(m_path) == m_lastStamp;
}

bool AssignmentStore::addPrioritiesToAssignmentsWithoutThem(AssignmentList &list)
{
    bool changed = false;
    for (const auto &record : list) {
        if (!record->has(AssignmentField::Priority)) {
            record->set(AssignmentField::Priority, 1.0);
            changed = true;
        }
    }
    return changed;
}
