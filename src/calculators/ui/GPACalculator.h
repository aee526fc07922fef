#pragma once

#include <QList>
#include <QRect>
#include <QWidget>

class QLabel;
class QLineEdit;

// The grade-point average window: a grid of cells, one grade in each, and the plain mean beneath.
// The grid always keeps an empty cell by growing a row when the last one is filled; the window grows
// downward with it, its top edge staying put. Nothing is stored: closing empties the grid.
class GPACalculator : public QWidget
{
    Q_OBJECT

public:
    static inline const QString WindowTitle = QStringLiteral("GPA Calculator");
    static inline const QString Instructions =
        QStringLiteral("Type a letter grade (A+ to F) or grade points into each box.");
    static constexpr int Columns = 4;
    static constexpr int InitialRows = 2;

    static GPACalculator *sharedController();

    void calculateGPA();
    void controlTextDidChange();
    void resizeWindowsWithOriginalMatrixFrame(const QRect &originalMatrixFrame);

    QList<QLineEdit *> cells() const { return m_cells; }
    int rowCount() const { return int(m_cells.size()) / Columns; }
    QLabel *display() const { return m_display; }
    QWidget *grid() const { return m_grid; }
    QWidget *topContents() const { return m_topContents; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    GPACalculator();
    void appendRow();
    void removeAllRows();
    void sizeGridToCells();

    QWidget *m_topContents;
    QWidget *m_grid;
    QLabel *m_display;
    QList<QLineEdit *> m_cells;
};
