#pragma once

#include <functional>

class QWidget;

// The syncing pane belongs to the syncing code; the preferences window only hosts it. The syncing
// code registers its one shared pane here at start-up, so the window can show it without knowing
// its class.
namespace SyncingPaneHost {

struct Pane {
    // The pane's view (one instance for the whole run; the window never deletes it).
    std::function<QWidget *()> currentView;
    // The height the view needs.
    std::function<int()> getViewSize;
    // Told when the window shows another pane or closes.
    std::function<void()> preferencesPanelWillClose;
};

void registerPane(Pane pane);
void unregisterPane();
// Null functions when nothing registered.
const Pane &registeredPane();
bool isAvailable();

} // namespace SyncingPaneHost
