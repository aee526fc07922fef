#pragma once

#include <QString>

class QToolBar;

namespace ToolbarOverflow {
// What a screen reader calls the button a toolbar shows when the window is too narrow for all of its
// items.
QString accessibleName();
// Names that button: the toolbar makes it itself, the only button of its own without an action.
void nameOverflowButton(QToolBar *toolbar);
} // namespace ToolbarOverflow
