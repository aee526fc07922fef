#include "calculators/ui/GPACalculator.h"

#include "calculators/GradeAverage.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QVBoxLayout>

namespace {
// Measures of the window layout, in pixels.
constexpr int Margin = 20;
constexpr int CellWidth = 72;
constexpr int CellHeight = 26;
constexpr int Spacing = 8;
constexpr int BoxHeight = 48;
constexpr int TopGap = 23;  // window top to the box
constexpr int GridGap = 30; // window top to the grid, less the box
constexpr int DisplayHeight = 24;
constexpr int BottomGap = 16;

int gridHeight(int rows)
{
    return rows * CellHeight + std::max(rows - 1, 0) * Spacing;
}
constexpr int GridWidth = GPACalculator::Columns * CellWidth + (GPACalculator::Columns - 1) * Spacing;
constexpr int WindowWidth = GridWidth + 2 * Margin;
} // namespace

GPACalculator *GPACalculator::sharedController()
{
    static GPACalculator *instance = new GPACalculator;
    return instance;
}

GPACalculator::GPACalculator()
    : QWidget(nullptr, Qt::Window)
    , m_topContents(new QFrame(this))
    , m_grid(new QWidget(this))
    , m_display(new QLabel(GradeAverage::EmptyDisplay, this))
{
    setObjectName(QStringLiteral("GPACalculator"));
    setAccessibleName(WindowTitle);
    setWindowTitle(WindowTitle);

    m_topContents->setObjectName(QStringLiteral("topContents"));
    m_topContents->setAccessibleName(Instructions);
    auto *instructions = new QLabel(Instructions, m_topContents);
    instructions->setObjectName(QStringLiteral("instructions"));
    instructions->setAccessibleName(Instructions);
    instructions->setWordWrap(true);
    auto *boxLayout = new QVBoxLayout(m_topContents);
    boxLayout->setContentsMargins(0, 0, 0, 0);
    boxLayout->addWidget(instructions);
    m_topContents->setGeometry(Margin, TopGap, GridWidth, BoxHeight);

    m_grid->setObjectName(QStringLiteral("GPATextboxes"));
    m_grid->setAccessibleName(QStringLiteral("Grades"));
    m_display->setObjectName(QStringLiteral("GPADisplay"));
    m_display->setAccessibleName(QStringLiteral("Grade point average"));
    QFont bold = m_display->font();
    bold.setBold(true);
    m_display->setFont(bold);

    for (int i = 0; i < InitialRows; ++i)
        appendRow();
    sizeGridToCells();
    const int height = TopGap + BoxHeight + (GridGap - TopGap) + gridHeight(InitialRows) + Spacing * 2
        + DisplayHeight + BottomGap;
    setFixedSize(WindowWidth, height);
    resizeWindowsWithOriginalMatrixFrame(m_grid->geometry());

    // Centred on the screen when first made, as the window has always opened.
    if (QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void GPACalculator::appendRow()
{
    const int row = rowCount();
    for (int column = 0; column < Columns; ++column) {
        const int index = int(m_cells.size());
        auto *cell = new QLineEdit(m_grid);
        cell->setObjectName(QStringLiteral("grade%1").arg(index + 1));
        cell->setAccessibleName(QStringLiteral("Grade %1").arg(index + 1));
        cell->setAlignment(Qt::AlignCenter);
        cell->setGeometry(column * (CellWidth + Spacing), row * (CellHeight + Spacing), CellWidth, CellHeight);
        m_cells.append(cell);
        connect(cell, &QLineEdit::textChanged, this, &GPACalculator::controlTextDidChange);
        cell->show();
    }
}

void GPACalculator::removeAllRows()
{
    qDeleteAll(m_cells);
    m_cells.clear();
}

void GPACalculator::sizeGridToCells()
{
    m_grid->resize(GridWidth, gridHeight(rowCount()));
}

void GPACalculator::calculateGPA()
{
    QStringList texts;
    texts.reserve(m_cells.size());
    for (const QLineEdit *cell : std::as_const(m_cells))
        texts.append(cell->text());
    m_display->setText(GradeAverage::displayText(texts));
}

void GPACalculator::controlTextDidChange()
{
    calculateGPA();
    for (const QLineEdit *cell : std::as_const(m_cells)) {
        if (cell->text().isEmpty())
            return;
    }
    const QRect before = m_grid->geometry();
    appendRow();
    resizeWindowsWithOriginalMatrixFrame(before);
}

void GPACalculator::resizeWindowsWithOriginalMatrixFrame(const QRect &originalMatrixFrame)
{
    sizeGridToCells();
    const QRect gridFrame = m_grid->geometry();
    const int newHeight = height() + (gridFrame.height() - originalMatrixFrame.height());
    // Growing and shrinking keep the top edge where it is; only the bottom moves.
    const QPoint topLeft = pos();
    setFixedSize(width(), newHeight);
    move(topLeft);
    m_topContents->move(m_topContents->x(), TopGap);
    m_grid->move(Margin, BoxHeight + GridGap);
    m_display->setGeometry(Margin, newHeight - BottomGap - DisplayHeight, GridWidth, DisplayHeight);
    m_grid->update();
    update();
}

void GPACalculator::closeEvent(QCloseEvent *event)
{
    // The calculator keeps nothing: the next opening starts from one empty row.
    const QRect before = m_grid->geometry();
    removeAllRows();
    appendRow();
    resizeWindowsWithOriginalMatrixFrame(before);
    m_display->setText(GradeAverage::EmptyDisplay);
    QWidget::closeEvent(event);
}
