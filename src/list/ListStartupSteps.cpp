#include "list/ListStartupSteps.h"

#include "list/Controller.h"

ListStartupSteps::ListStartupSteps(Controller &controller)
    : m_controller(controller)
{
}

void ListStartupSteps::setSortSelectors(const QStringList &selectors)
{
    m_controller.setSortingSelectors(selectors);
}

void ListStartupSteps::setUpFilterBar(int viewIndex)
{
    m_controller.updateFilterBar();
    m_controller.filterBar().selectIndexInSegment(viewIndex, 0);
}

void ListStartupSteps::updateWindowInformation()
{
    m_controller.updateWindowInformation();
}
