#include "store/CoursesDocument.h"

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/CoursesHistory.h"
#include "store/UndoNames.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QLoggingCategory>
#include <QSet>
#include <QVariantMap>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

namespace {
const QString TypeKey = QStringLiteral("Type");
const QString NameKey = QStringLiteral("Name");
const QString CourseKey = QStringLiteral("Course");
const QString CourseType = QStringLiteral("Course");

QString keyOf(const QString &coursesPath, const QString &typesPath)
{
    return QFileInfo(coursesPath).absoluteFilePath() + QLatin1Char('\n') + QFileInfo(typesPath).absoluteFilePath();
}

// The documents alive now, by their pair of paths. Weak, so a document goes with its last holder
// and a later open() reads the files afresh.
QHash<QString, std::weak_ptr<CoursesDocument>> &openDocuments()
{
    static QHash<QString, std::weak_ptr<CoursesDocument>> documents;
    return documents;
}

// A missing file is an empty array; nullopt when the file is there but unreadable.
std::optional<QVariantList> readArray(const QString &path)
{
    if (!QFileInfo::exists(path))
        return QVariantList();
    QString error;
    const auto root = PropertyList::readFile(path, &error);
    if (!root || root->typeId() != QMetaType::QVariantList) {
        qCWarning(lcStore) << "Cannot read" << path << (root ? QStringLiteral("(root is not an array)") : error);
        return std::nullopt;
    }
    return root->toList();
}

bool writeArray(const QString &path, const QVariantList &list)
{
    QString error;
    if (!PropertyList::writeFile(path, list, &error)) {
        qCWarning(lcStore) << "Could not write" << path << ":" << error;
        return false;
    }
    return true;
}

bool isCourse(const QVariant &record)
{
    return record.toMap().value(TypeKey).toString() == CourseType;
}
} // namespace

std::shared_ptr<CoursesDocument> CoursesDocument::open(const QString &coursesPath, const QString &universalTypesPath)
{
    const QString key = keyOf(coursesPath, universalTypesPath);
    if (std::shared_ptr<CoursesDocument> existing = openDocuments().value(key).lock())
        return existing;
    std::shared_ptr<CoursesDocument> document(new CoursesDocument(coursesPath, universalTypesPath));
    openDocuments().insert(key, document);
    return document;
}

std::shared_ptr<CoursesDocument> CoursesDocument::open()
{
    return open(Paths::coursesFile(), Paths::universalTypesFile());
}

void CoursesDocument::fileReplaced(const QString &path, Replacement why)
{
    const QString replaced = QFileInfo(path).absoluteFilePath();
    // Copied first: a reset may make a window let go of its document.
    const QList<std::weak_ptr<CoursesDocument>> documents = openDocuments().values();
    for (const std::weak_ptr<CoursesDocument> &weak : documents) {
        const std::shared_ptr<CoursesDocument> document = weak.lock();
        if (!document || (QFileInfo(document->m_coursesPath).absoluteFilePath() != replaced
                          && QFileInfo(document->m_typesPath).absoluteFilePath() != replaced))
            continue;
        document->reload();
        document->m_history->clear(UndoNames::after(why));
        Q_EMIT document->replaced(why);
    }
}

CoursesDocument::CoursesDocument(QString coursesPath, QString universalTypesPath)
    : m_coursesPath(std::move(coursesPath))
    , m_typesPath(std::move(universalTypesPath))
    , m_watcher(new QFileSystemWatcher(this))
    , m_history(new CoursesHistory(*this))
{
    const auto changed = [this] {
        // An atomic rename replaces the watched inode, and the watcher drops the path with it; a
        // file that was missing appears in the folder.
        watch();
        if (m_loaded)
            refresh();
    };
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, changed);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, changed);
}

CoursesDocument::~CoursesDocument()
{
    auto &documents = openDocuments();
    const auto it = documents.constFind(keyOf(m_coursesPath, m_typesPath));
    if (it != documents.cend() && it->expired())
        documents.erase(it);
}

void CoursesDocument::watch()
{
    const QStringList watched = m_watcher->files() + m_watcher->directories();
    for (const QString &path : {m_coursesPath, m_typesPath}) {
        if (!watched.contains(path) && QFileInfo::exists(path))
            m_watcher->addPath(path);
        const QString folder = QFileInfo(path).absolutePath();
        if (!watched.contains(folder) && !m_watcher->directories().contains(folder) && QFileInfo::exists(folder))
            m_watcher->addPath(folder);
    }
}

void CoursesDocument::ensureLoaded()
{
    if (m_loaded)
        return;
    m_loaded = true;
    watch();
    loadCourses();
    loadTypes();
    ++m_generation;
}

void CoursesDocument::loadCourses()
{
    m_coursesStamp = FileStamp::of(m_coursesPath);
    const std::optional<QVariantList> combined = readArray(m_coursesPath);
    m_usable = combined.has_value();
    m_combined = combined.value_or(QVariantList());
    // Anything that is not a record cannot be shown or edited; it must not be lost either, so such
    // a file is treated as unreadable.
    if (std::any_of(m_combined.cbegin(), m_combined.cend(),
                    [](const QVariant &record) { return record.typeId() != QMetaType::QVariantMap; })) {
        m_usable = false;
        m_combined.clear();
    }
    // Kept grouped in memory, so that a course's own textbooks are always the rows right after it.
    regroup(m_combined);
}

void CoursesDocument::loadTypes()
{
    m_typesStamp = FileStamp::of(m_typesPath);
    const std::optional<QVariantList> types = readArray(m_typesPath);
    m_typesUsable = types.has_value();
    m_universalTypes.clear();
    for (const QVariant &type : types.value_or(QVariantList()))
        m_universalTypes.append(type.toString());
}

bool CoursesDocument::isUsable()
{
    ensureLoaded();
    return m_usable;
}

bool CoursesDocument::isTypesUsable()
{
    ensureLoaded();
    return m_typesUsable;
}

const QVariantList &CoursesDocument::combined()
{
    ensureLoaded();
    return m_combined;
}

const QStringList &CoursesDocument::universalTypes()
{
    ensureLoaded();
    return m_universalTypes;
}

bool CoursesDocument::refresh()
{
    if (!m_loaded) {
        ensureLoaded();
        Q_EMIT reset(nullptr);
        return true;
    }
    const bool coursesChanged = FileStamp::of(m_coursesPath) != m_coursesStamp;
    const bool typesChanged = FileStamp::of(m_typesPath) != m_typesStamp;
    if (!coursesChanged && !typesChanged)
        return false;
    qCInfo(lcStore) << "The courses or types changed on disk; reading them again";
    if (coursesChanged)
        loadCourses();
    if (typesChanged)
        loadTypes();
    ++m_generation;
    m_history->clear(UndoNames::CantUndoAfterOutsideChange);
    Q_EMIT reset(nullptr);
    return true;
}

void CoursesDocument::reload()
{
    m_loaded = true;
    watch();
    loadCourses();
    loadTypes();
    ++m_generation;
    m_history->clear(UndoNames::CantUndoAfterOutsideChange);
    Q_EMIT reset(nullptr);
}

bool CoursesDocument::setCombined(const QVariantList &combined, QObject *source)
{
    ensureLoaded();
    if (FileStamp::of(m_coursesPath) != m_coursesStamp) {
        qCInfo(lcStore) << "The courses file changed on disk; reading it instead of writing over it";
        refresh();
        return false;
    }
    if (!m_usable) {
        qCWarning(lcStore) << "Not saving courses: the file on disk could not be read";
        return false;
    }
    const bool differs = combined != m_combined;
    m_combined = combined;
    const bool written = writeArray(m_coursesPath, m_combined);
    if (differs)
        m_history->documentChanged();
    m_coursesStamp = FileStamp::of(m_coursesPath);
    ++m_generation;
    watch();
    Q_EMIT coursesChanged(source);
    return written;
}

bool CoursesDocument::setUniversalTypes(const QStringList &types, QObject *source)
{
    ensureLoaded();
    if (FileStamp::of(m_typesPath) != m_typesStamp) {
        qCInfo(lcStore) << "The universal types changed on disk; reading them instead of writing over them";
        refresh();
        return false;
    }
    if (!m_typesUsable) {
        qCWarning(lcStore) << "Not saving universal types: the file on disk could not be read";
        return false;
    }
    if (types != m_universalTypes)
        m_history->documentChanged();
    m_universalTypes = types;
    QVariantList list;
    list.reserve(types.size());
    for (const QString &type : types)
        list.append(type);
    const bool written = writeArray(m_typesPath, list);
    m_typesStamp = FileStamp::of(m_typesPath);
    ++m_generation;
    watch();
    Q_EMIT universalTypesChanged(source);
    return written;
}

void CoursesDocument::regroup(QVariantList &combined)
{
    QVariantList courses;
    QVariantList others;
    for (const QVariant &value : combined)
        (isCourse(value) ? courses : others).append(value);
    std::stable_sort(others.begin(), others.end(), [](const QVariant &a, const QVariant &b) {
        return a.toMap().value(NameKey).toString().compare(b.toMap().value(NameKey).toString(), Qt::CaseInsensitive)
            < 0;
    });
    QVariantList result;
    result.reserve(combined.size());
    // Textbooks name their course by name only: where two courses share a name (two new, still
    // unnamed courses, say), the textbooks go under the first of them, once.
    QSet<QString> placed;
    for (const QVariant &course : courses) {
        result.append(course);
        const QString name = course.toMap().value(NameKey).toString();
        if (placed.contains(name))
            continue;
        placed.insert(name);
        for (const QVariant &textbook : others) {
            if (textbook.toMap().value(CourseKey).toString() == name)
                result.append(textbook);
        }
    }
    combined = result;
}
