#include "widgets/ToolbarOverflow.h"

#include <QCoreApplication>
#include <QToolBar>
#include <QToolButton>

namespace ToolbarOverflow {

QString accessibleName()
{
    return QCoreApplication::translate("ToolbarOverflow", "More toolbar items");
}

void nameOverflowButton(QToolBar *toolbar)
{
    for (auto *button : toolbar->findChildren<QToolButton *>(Qt::FindDirectChildrenOnly))
        if (!button->defaultAction())
            button->setAccessibleName(accessibleName());
}

} // namespace ToolbarOverflow
