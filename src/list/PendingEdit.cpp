#include "list/PendingEdit.h"

#include "list/SidebarValues.h"

void PendingEdit::commit()
{
    // The edit itself filters, sorts and reselects through the calls that ask for it; it must not
    // ask again.
    if (!m_sidebar || m_committing)
        return;
    m_committing = true;
    m_sidebar->commitPendingEdit();
    m_committing = false;
}
