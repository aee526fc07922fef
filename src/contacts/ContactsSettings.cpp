#include "contacts/ContactsSettings.h"

#include "platform/UserDefaults.h"

#include <QDir>
#include <QStandardPaths>

namespace ContactsSettings {

QString defaultFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)).filePath(QStringLiteral("contacts"));
}

QString folder()
{
    const QString chosen = UserDefaults().groupValue(Group, FolderKey).toString();
    return chosen.isEmpty() ? defaultFolder() : chosen;
}

void setFolder(const QString &path)
{
    UserDefaults defaults;
    QVariantMap group = defaults.dictionary(Group);
    group.insert(FolderKey, path);
    defaults.set(Group, group);
}

} // namespace ContactsSettings
