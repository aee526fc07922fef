#include "store/ui/PreferencePane.h"

#include "store/ui/PreferencesWindow.h"

#include <QLayout>

int PreferencePane::getViewSize() const
{
    // A pane is measured before it is first shown, while its texts and rows are still being set:
    // cached size hints of its boxes would be stale, so every layout measures afresh.
    for (QLayout *layout : findChildren<QLayout *>())
        layout->invalidate();
    for (QWidget *child : findChildren<QWidget *>()) {
        if (child->layout())
            child->updateGeometry();
    }
    if (QLayout *layout = this->layout(); layout && layout->hasHeightForWidth())
        return layout->totalHeightForWidth(PreferencesWindow::PaneWidth);
    return sizeHint().height();
}
