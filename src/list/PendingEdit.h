#pragma once

#include <QScopeGuard>

#include <utility>

class SidebarEditor;

// The commit-before-action path. An edit the user has not finished (the keyboard still in a
// sidebar field) is handed to the list before anything changes the selection, filters, reloads or
// saves, so typing is never lost to a click on a control that takes no focus. While an action
// runs, further commits are held off, so the action's own reselections and reloads hand nothing
// over a second time.
class PendingEdit
{
public:
    void setSidebar(SidebarEditor *sidebar) { m_sidebar = sidebar; }
    SidebarEditor *sidebar() const { return m_sidebar; }

    // Asks the sidebar to hand over its edit in progress, unless an action holds commits off.
    void commit();
    // Holds commits off without committing: for an edit that is itself the pending one (a cell of
    // the subprojects table).
    [[nodiscard]] auto hold()
    {
        return qScopeGuard([this, outer = std::exchange(m_committing, true)] { m_committing = outer; });
    }
    // The start of an action: commits once, then holds further commits off until the returned
    // guard goes.
    [[nodiscard]] auto beginAction()
    {
        commit();
        return hold();
    }
    // Whether commit() would hand an edit over now: a sidebar is there and nothing holds it off.
    bool mayCommit() const { return m_sidebar && !m_committing; }

private:
    SidebarEditor *m_sidebar = nullptr;
    bool m_committing = false;
};
