#include "store/ui/SyncingPaneHost.h"

namespace SyncingPaneHost {

namespace {
Pane &storage()
{
    static Pane pane;
    return pane;
}
} // namespace

void registerPane(Pane pane)
{
    storage() = std::move(pane);
}

void unregisterPane()
{
    storage() = Pane();
}

const Pane &registeredPane()
{
    return storage();
}

bool isAvailable()
{
    return bool(storage().currentView) && storage().currentView() != nullptr;
}

} // namespace SyncingPaneHost
