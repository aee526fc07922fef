#include "store/ui/CoursesFileWarnings.h"

#include "platform/Alerts.h"
#include "store/CoursesStore.h"

CoursesFileWarnings::CoursesFileWarnings(const CoursesStore &store)
    : m_store(store)
{
}

void CoursesFileWarnings::warnIfUnusable()
{
    if (m_store.isUsable()) {
        m_warned = false;
        return;
    }
    if (!m_warned) {
        m_warned = true;
        Alerts::inform(Title, UnreadableMessage);
    }
}

void CoursesFileWarnings::typesNotSaved()
{
    Alerts::inform(Title, UnreadableTypesMessage);
}
