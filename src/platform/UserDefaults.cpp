#include "platform/UserDefaults.h"

#include "platform/FileStamp.h"
#include "platform/Paths.h"
#include "platform/PreferencesNotifier.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>
#include <QSet>

#include <mutex>
#include <optional>

Q_LOGGING_CATEGORY(lcDefaults, "quillory.platform.defaults")

namespace {

struct CachedFile {
    FileStamp stamp;
    QVariantMap values;
    bool damaged = false;
    // Some text will not be written back exactly: the original is kept before the first change.
    bool textWillChange = false;
};

// The folders this process has swept of leftover temporary files (once each is enough).
QSet<QString> g_sweptFolders;

std::recursive_mutex g_mutex;
QHash<QString, CachedFile> g_cache;

// The file's current contents, parsed at most once per version of the file. Caller holds g_mutex.
const CachedFile &current(const QString &path)
{
    static const CachedFile missing;
    const auto stamp = FileStamp::of(path);
    if (!stamp) {
        g_cache.remove(path);
        return missing;
    }
    auto it = g_cache.find(path);
    if (it != g_cache.end() && it->stamp == *stamp)
        return *it;

    CachedFile file;
    file.stamp = *stamp;
    QString error;
    PropertyList::ReadReport report;
    const auto parsed = PropertyList::readFile(path, &error, &report);
    file.textWillChange = report.textWillChange;
    if (!parsed || parsed->typeId() != QMetaType::QVariantMap) {
        file.damaged = true;
        qCWarning(lcDefaults) << "The preferences file" << path << "cannot be read; using no preferences:"
                              << (parsed ? QStringLiteral("its root is not a dictionary") : error);
    } else {
        file.values = parsed->toMap();
    }
    return *g_cache.insert(path, file);
}

void moveAside(const QString &path)
{
    QString target = path + QStringLiteral(".damaged");
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = path + QStringLiteral(".damaged-%1").arg(n);
    if (QFile::rename(path, target))
        qCWarning(lcDefaults) << "Kept the unreadable preferences file as" << target;
    else
        qCWarning(lcDefaults) << "Could not move the unreadable preferences file" << path << "aside";
}

} // namespace

UserDefaults::UserDefaults()
    : m_domain(ProgramDomain)
{
}

UserDefaults::UserDefaults(QString domain)
    : m_domain(std::move(domain))
{
}

QString UserDefaults::path() const
{
    return Paths::preferencesFile(m_domain);
}

QVariantMap UserDefaults::all() const
{
    std::lock_guard lock(g_mutex);
    return current(path()).values;
}

bool UserDefaults::contains(const QString &key) const
{
    std::lock_guard lock(g_mutex);
    return current(path()).values.contains(key);
}

QVariant UserDefaults::object(const QString &key) const
{
    std::lock_guard lock(g_mutex);
    return current(path()).values.value(key);
}

QVariantMap UserDefaults::dictionary(const QString &key) const
{
    const QVariant value = object(key);
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

QVariantList UserDefaults::array(const QString &key) const
{
    const QVariant value = object(key);
    return value.typeId() == QMetaType::QVariantList ? value.toList() : QVariantList();
}

QString UserDefaults::string(const QString &key) const
{
    const QVariant value = object(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

bool UserDefaults::boolValue(const QString &key) const
{
    const QVariant value = object(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString().compare(QLatin1String("YES"), Qt::CaseInsensitive) == 0
            || value.toString().compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || value.toString().toInt() != 0;
    return value.isValid() && value.toBool();
}

qint64 UserDefaults::integer(const QString &key) const
{
    const QVariant value = object(key);
    return value.isValid() ? value.toLongLong() : 0;
}

double UserDefaults::real(const QString &key) const
{
    const QVariant value = object(key);
    return value.isValid() ? value.toDouble() : 0.0;
}

QVariant UserDefaults::groupValue(const QString &group, const QString &key) const
{
    return dictionary(group).value(key);
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    setMany({{key, value}});
}

void UserDefaults::remove(const QString &key)
{
    setMany({}, {key});
}

void UserDefaults::setMany(const QVariantMap &changes, const QStringList &removals)
{
    std::unique_lock lock(g_mutex);
    const QString file = path();
    const CachedFile &now = current(file);
    QVariantMap values = now.values;
    const QVariantMap before = now.values;
    if (now.damaged)
        moveAside(file);
    else if (now.textWillChange)
        PropertyList::keepOriginalOnce(file, file + QStringLiteral(".before-repair"));
    for (auto it = changes.begin(); it != changes.end(); ++it)
        values.insert(it.key(), it.value());
    for (const QString &key : removals)
        values.remove(key);

    const QString folder = QFileInfo(file).absolutePath();
    Paths::makePrivateFolder(folder);
    if (!g_sweptFolders.contains(folder)) {
        g_sweptFolders.insert(folder);
        PropertyList::removeLeftovers(folder);
    }
    QString error;
    if (!PropertyList::writeFile(file, values, &error)) {
        qCWarning(lcDefaults) << "Could not save the preferences:" << error;
        g_cache.remove(file);
        return;
    }
    if (const auto stamp = FileStamp::of(file))
        g_cache.insert(file, CachedFile{*stamp, values, false});
    // Outside the lock: a window that rereads the preferences on the signal must not wait for a
    // worker thread that is writing meanwhile.
    lock.unlock();
    if (m_domain == ProgramDomain)
        PreferencesNotifier::instance()->announce(before, values);
}

PreferencesNotifier *UserDefaults::notifier()
{
    return PreferencesNotifier::instance();
}

void UserDefaults::dropCaches()
{
    std::lock_guard lock(g_mutex);
    g_cache.clear();
}
