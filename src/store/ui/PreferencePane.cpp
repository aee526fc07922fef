#include "store/ui/PreferencePane.h"

#include "store/ui/PreferencesWindow.h"

#include <QLayout>

int PreferencePane::getViewSize() const
{
    if (QLayout *layout = this->layout(); layout && layout->hasHeightForWidth())
        return layout->totalHeightForWidth(PreferencesWindow::PaneWidth);
    return sizeHint().height();
}
