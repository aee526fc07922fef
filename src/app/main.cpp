#include <QApplication>
#include <QMainWindow>

#include "BuildInfo.h"

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromLatin1(BuildInfo::BundleName));
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Quillory"));
    window.resize(900, 600);
    window.show();
    return app.exec();
}
