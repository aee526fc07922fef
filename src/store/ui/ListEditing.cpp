#include "store/ui/ListEditing.h"

#include <QAbstractItemDelegate>

void ListEditing::commitOpenEditor(QAbstractItemView *view)
{
    // A cell is edited at the current index; the tables set no index widgets of their own, so a
    // widget there is the cell editor.
    const QModelIndex index = view->currentIndex();
    QWidget *editor = view->indexWidget(index);
    QAbstractItemDelegate *delegate = view->itemDelegateForIndex(index);
    if (!editor || !delegate)
        return;
    // The same two steps the delegate takes when its editor loses the keyboard.
    Q_EMIT delegate->commitData(editor);
    Q_EMIT delegate->closeEditor(editor, QAbstractItemDelegate::NoHint);
}
