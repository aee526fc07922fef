#pragma once

#include <QDialog>

class MainToolbar;
class QListWidget;
class QPushButton;

// The toolbar's customisation palette: the items that may be added on the left, the toolbar's items
// in their order on the right. Every change shows on the toolbar at once and is kept for the next
// launch. Usable by keyboard: the buttons act on the selected entry.
class ToolbarCustomizationPalette : public QDialog
{
    Q_OBJECT
public:
    ToolbarCustomizationPalette(MainToolbar *toolbar, QWidget *parent);

    QListWidget *availableList() const { return m_available; }
    QListWidget *toolbarList() const { return m_current; }

    // Appends the available item (an identifier) after the selected toolbar item, or at the end.
    void addItem(const QString &identifier);
    void removeItemAt(int position);
    // Moves a toolbar item by `offset` places.
    void moveItem(int position, int offset);
    void useDefaultSet();

private:
    void refill(int currentPosition = -1);
    void applyFromList();
    QStringList currentIdentifiers() const;

    MainToolbar *m_toolbar;
    QListWidget *m_available;
    QListWidget *m_current;
    QPushButton *m_add;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
};
