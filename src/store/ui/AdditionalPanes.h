#pragma once

#include <QString>

#include <functional>

class PreferencePane;

// Panes that parts of the program above the preferences window add to it (the reminders pane),
// registered at start-up so the window can show them without knowing their classes. They follow
// the window's own panes in the toolbar, in the order registered.
namespace AdditionalPanes {

struct Pane {
    QString identifier;
    QString label;
    QString toolTip;
    QString themeIcon;
    QString fallbackIcon;
    // A fresh pane each time it is shown, as the window's own panes are made.
    std::function<PreferencePane *()> make;
};

// Replaces a pane registered under the same identifier.
void registerPane(Pane pane);
void unregisterPane(const QString &identifier);
const QList<Pane> &registered();
// Null when none is registered under that identifier.
const Pane *find(const QString &identifier);

} // namespace AdditionalPanes
