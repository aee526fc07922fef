#pragma once

#include <QTableView>

class Controller;

// The assignment list: the controller's table model and selection, the header sorting through the
// controller with the arrow in the sorted column, widths and order saved whenever a column is
// resized or dragged, the completed check box, the small attachment images, the day bands, and the
// double-click and contextual-menu rules.
class AssignmentTableView : public QTableView
{
    Q_OBJECT
public:
    explicit AssignmentTableView(Controller *controller, QWidget *parent = nullptr);

    // The header, the widths and the arrow as the controller has them now.
    void syncColumns();
    // The section a column identifier stands in, or -1.
    int sectionOf(const QString &identifier) const;

Q_SIGNALS:
    // A double click that should add an assignment.
    void addRequested();
    // A right click: `onRow` tells the menu for a selection from the one for no selection.
    void contextMenuWanted(const QPoint &globalPosition, bool onRow);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void doubleClicked();
    bool doubleClickAdds() const;
    void onSectionResized(int section, int oldSize, int newSize);
    void onSectionMoved(int logical, int oldVisual, int newVisual);
    void updateSortIndicator();

    Controller *m_controller;
    bool m_applying = false;
    // A double click below the rows adds once its button is released, after the view has handled
    // the release (which would otherwise clear the new row's selection).
    bool m_addOnRelease = false;
};
