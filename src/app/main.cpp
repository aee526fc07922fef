#include "Application.h"
#include "BuildInfo.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromLatin1(BuildInfo::BundleName));
    QApplication::setApplicationVersion(QString::fromLatin1(BuildInfo::ShortVersionString));
    QApplication::setOrganizationDomain(QStringLiteral("brevandt.com"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.brevandt.Quillory"));
    Application application;
    return application.run();
}
