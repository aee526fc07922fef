#include "store/ui/AdditionalPanes.h"

#include <QList>

namespace AdditionalPanes {

namespace {
QList<Pane> &storage()
{
    static QList<Pane> panes;
    return panes;
}
} // namespace

void registerPane(Pane pane)
{
    unregisterPane(pane.identifier);
    storage().append(std::move(pane));
}

void unregisterPane(const QString &identifier)
{
    storage().removeIf([&](const Pane &pane) { return pane.identifier == identifier; });
}

const QList<Pane> &registered()
{
    return storage();
}

const Pane *find(const QString &identifier)
{
    for (const Pane &pane : storage()) {
        if (pane.identifier == identifier)
            return &pane;
    }
    return nullptr;
}

} // namespace AdditionalPanes
