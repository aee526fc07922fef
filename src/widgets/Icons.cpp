#include "widgets/Icons.h"

#include <QFile>

namespace Icons {

QIcon own(const QString &name)
{
    for (const char *extension : {".svg", ".png"}) {
        const QString path = QStringLiteral(":/icons/") + name + QLatin1String(extension);
        if (QFile::exists(path))
            return QIcon(path);
    }
    return {};
}

QIcon themed(const QString &themeName, const QString &fallback)
{
    return QIcon::fromTheme(themeName, own(fallback));
}

} // namespace Icons
