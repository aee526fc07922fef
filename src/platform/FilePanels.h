#pragma once

#include <QString>

#include <functional>

// Save and open panels. Like Alerts, the interface installs the real dialogs and tests queue the
// paths a user would pick; an empty path means the user cancelled.
class FilePanels
{
public:
    struct SaveRequest {
        QString directory;     // where the panel starts
        QString suggestedName; // proposed file name
        QString extension;     // required extension without the dot, or empty
    };
    struct OpenRequest {
        QString directory;
    };

    static QString runSave(const SaveRequest &request);
    static QString runOpen(const OpenRequest &request);

    using SavePresenter = std::function<QString(const SaveRequest &)>;
    using OpenPresenter = std::function<QString(const OpenRequest &)>;
    static void setPresenters(SavePresenter save, OpenPresenter open);

    // For tests: the next panel of either kind returns this path ("" = cancel).
    static void queueAnswer(const QString &path);
    static void resetForTest();
};
