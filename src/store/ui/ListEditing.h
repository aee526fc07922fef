#pragma once

class QAbstractItemView;
class QObject;

// What the lists of the courses window share: a type being typed in its cell is handed to the list
// before anything else happens (a click on a button that takes no focus leaves the cell editor
// open), and Del acts on the selected row (removes a type, deletes a course or textbook).
namespace ListEditing {

// Commits the text of the cell editor open in the view, if any, and closes the editor.
void commitOpenEditor(QAbstractItemView *view);

// Del with the keyboard in the view calls `remove` (a slot or functor of `receiver`).
template<typename Receiver, typename Slot>
void onDeleteKey(QAbstractItemView *view, Receiver *receiver, Slot remove);

} // namespace ListEditing

#include <QAbstractItemView>
#include <QAction>
#include <QKeySequence>

template<typename Receiver, typename Slot>
void ListEditing::onDeleteKey(QAbstractItemView *view, Receiver *receiver, Slot remove)
{
    auto *action = new QAction(view);
    action->setObjectName(view->objectName() + QStringLiteral("DeleteKey"));
    action->setShortcut(QKeySequence::Delete);
    // Only while the table itself has the keyboard: elsewhere Del belongs to whatever has it.
    action->setShortcutContext(Qt::WidgetShortcut);
    view->addAction(action);
    QObject::connect(action, &QAction::triggered, receiver, remove);
}
