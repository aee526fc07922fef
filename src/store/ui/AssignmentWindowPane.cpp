#include "store/ui/AssignmentWindowPane.h"

#include "store/Labels.h"
#include "store/MainWindowSettings.h"
#include "store/PreferenceKeys.h"
#include "store/ui/ColorWell.h"
#include "store/ui/Named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString PaneName = QStringLiteral("Main Window");
const QString ColumnsTitle = QStringLiteral("Columns");
const QString ColorsTitle = QStringLiteral("Colors");
const QString ResetColumnsTitle = QStringLiteral("Reset Columns");
const QString ColorFormatCaption = QStringLiteral("Color rows by:");
const QString WellSuffix = QStringLiteral(" color");
constexpr int ColumnsPerRow = 3;

// What a column's check box reads: the table's header text, with the user's words where the table
// uses them.
QString columnTitle(const QString &identifier)
{
    if (identifier == QLatin1String("Date"))
        return QStringLiteral("Due Date");
    if (identifier == QLatin1String("Completed") || identifier == QLatin1String("Course")
        || identifier == QLatin1String("Textbook") || identifier == QLatin1String("Type")
        || identifier == QLatin1String("Grade"))
        return Labels::label(identifier);
    return identifier;
}

QString objectNameOf(const QString &prefix, const QString &identifier)
{
    QString name = identifier;
    name.remove(QLatin1Char(' '));
    return prefix + name;
}
} // namespace

AssignmentWindowPane::AssignmentWindowPane(QWidget *parent)
    : PreferencePane(parent)
{
    named(this, QStringLiteral("assignmentWindowView"), PaneName);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSizeConstraint(QLayout::SetMinimumSize);

    auto *columns = named(new QGroupBox(ColumnsTitle), QStringLiteral("columnsBox"), ColumnsTitle);
    auto *columnsGrid = new QGridLayout(columns);
    columnsGrid->setVerticalSpacing(2);
    int index = 0;
    for (const QString &identifier : MainWindowSettings::columnIdentifiers()) {
        auto *box = named(new QCheckBox, objectNameOf(QStringLiteral("column"), identifier), QString());
        columnsGrid->addWidget(box, index / ColumnsPerRow, index % ColumnsPerRow);
        m_columns.insert(identifier, box);
        connect(box, &QCheckBox::toggled, this, &AssignmentWindowPane::saveColumns);
        ++index;
    }
    m_resetColumns = named(new QPushButton(ResetColumnsTitle), QStringLiteral("resetColumns"), ResetColumnsTitle);
    columnsGrid->addWidget(m_resetColumns, (index + ColumnsPerRow - 1) / ColumnsPerRow, 0, 1, ColumnsPerRow,
                           Qt::AlignRight);
    connect(m_resetColumns, &QPushButton::clicked, this, &AssignmentWindowPane::resetColumns);
    layout->addWidget(columns);

    auto *colors = named(new QGroupBox(ColorsTitle), QStringLiteral("colorsBox"), ColorsTitle);
    auto *colorsLayout = new QVBoxLayout(colors);
    auto *formatRow = new QHBoxLayout;
    m_colorFormat = named(new QComboBox, QStringLiteral("colorFormat"), ColorFormatCaption);
    m_colorFormat->addItems(MainWindowSettings::colorFormatTitles());
    formatRow->addWidget(captionFor(m_colorFormat, ColorFormatCaption));
    formatRow->addWidget(m_colorFormat);
    formatRow->addStretch();
    colorsLayout->addLayout(formatRow);

    // Two wells per line: "All Others" and "Completed" first, then the category rows in pairs.
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    const auto addWell = [&](int line, int column, const QString &objectName) {
        auto *well = named(new ColorWell, objectName, QString());
        auto *label = captionFor(well, QString());
        grid->addWidget(well, line, column * 2);
        grid->addWidget(label, line, column * 2 + 1);
        return std::pair{well, label};
    };
    auto [allOthers, allOthersLabel] = addWell(0, 0, QStringLiteral("allOthersWell"));
    auto [completed, completedLabel] = addWell(0, 1, QStringLiteral("completedWell"));
    m_allOthers = allOthers;
    m_completed = completed;
    allOthersLabel->setText(ColorKeys::AllOthers);
    m_allOthers->setAccessibleName(ColorKeys::AllOthers + WellSuffix);
    completedLabel->setText(ColorKeys::Completed);
    m_completed->setAccessibleName(ColorKeys::Completed + WellSuffix);
    for (int row = 0; row < MainWindowSettings::MaxCategoryRows; ++row) {
        auto [well, label] = addWell(1 + row / 2, row % 2, QStringLiteral("categoryWell%1").arg(row + 1));
        m_rowWells.append(well);
        m_rowLabels.append(label);
        connect(well, &ColorWell::colorChosen, this, [this, row](const QString &text) { storeCategoryColor(row, text); });
    }
    colorsLayout->addLayout(grid);
    layout->addWidget(colors);
    layout->addStretch();

    connect(m_allOthers, &ColorWell::colorChosen, this,
            [](const QString &text) { MainWindowSettings::setColorText(ColorKeys::AllOthers, text); });
    connect(m_completed, &ColorWell::colorChosen, this,
            [](const QString &text) { MainWindowSettings::setColorText(ColorKeys::Completed, text); });
    connect(m_colorFormat, &QComboBox::currentIndexChanged, this, [this](int format) {
        if (m_filling)
            return;
        MainWindowSettings::setColorFormat(format);
        showCategoryRows();
    });

    fillColumns();
    fillColors();
    updateLabels();
}

void AssignmentWindowPane::fillColors()
{
    m_filling = true;
    m_colorFormat->setCurrentIndex(std::clamp(MainWindowSettings::colorFormat(), 0, 3));
    m_filling = false;
    m_allOthers->setColorText(MainWindowSettings::colorText(ColorKeys::AllOthers),
                              MainWindowSettings::fallbackColor(ColorKeys::AllOthers));
    m_completed->setColorText(MainWindowSettings::colorText(ColorKeys::Completed),
                              MainWindowSettings::fallbackColor(ColorKeys::Completed));
    showCategoryRows();
}

void AssignmentWindowPane::reloadFromSettings()
{
    fillColumns();
    fillColors();
}

void AssignmentWindowPane::storeCategoryColor(int row, const QString &text)
{
    const QString label = m_rowLabels.value(row)->text();
    const QStringList current = MainWindowSettings::categoryRows(m_colorFormat->currentIndex());
    if (row >= m_shownRows || current.value(row) != label) {
        // The courses or types changed since the rows were shown: the colour would go to a name
        // that is no longer (or no longer at this place) in the list.
        showCategoryRows();
        return;
    }
    MainWindowSettings::setColorText(label, text);
}

void AssignmentWindowPane::updateLabels()
{
    for (auto it = m_columns.begin(); it != m_columns.end(); ++it) {
        const QString title = columnTitle(it.key());
        it.value()->setText(title);
        it.value()->setAccessibleName(title + QStringLiteral(" column"));
    }
}

void AssignmentWindowPane::fillColumns()
{
    m_filling = true;
    const QStringList shown = MainWindowSettings::shownColumns();
    for (auto it = m_columns.begin(); it != m_columns.end(); ++it)
        it.value()->setChecked(shown.contains(it.key()));
    m_filling = false;
}

void AssignmentWindowPane::saveColumns()
{
    if (m_filling)
        return;
    QStringList shown;
    for (const QString &identifier : MainWindowSettings::columnIdentifiers()) {
        if (m_columns.value(identifier)->isChecked())
            shown.append(identifier);
    }
    MainWindowSettings::saveColumns(shown);
}

void AssignmentWindowPane::resetColumns()
{
    MainWindowSettings::resetColumns();
    fillColumns();
}

void AssignmentWindowPane::showCategoryRows()
{
    const QStringList rows = MainWindowSettings::categoryRows(m_colorFormat->currentIndex());
    m_shownRows = int(rows.size());
    for (int i = 0; i < m_rowWells.size(); ++i) {
        // Rows come and go in pairs, so a lone last row keeps an empty partner beside it.
        const bool pairShown = (i / 2) * 2 < m_shownRows;
        const bool filled = i < m_shownRows;
        m_rowWells[i]->setVisible(pairShown && filled);
        m_rowLabels[i]->setVisible(pairShown && filled);
        const QString label = filled ? rows[i] : QString();
        m_rowLabels[i]->setText(label);
        m_rowWells[i]->setAccessibleName(label + WellSuffix);
        // A category's well shows a colour only when one is stored under its label.
        m_rowWells[i]->setColorText(filled ? MainWindowSettings::colorText(label) : QString());
    }
    Q_EMIT viewSizeChanged();
}

ColorWell *AssignmentWindowPane::well(const QString &label) const
{
    if (label == ColorKeys::AllOthers)
        return m_allOthers;
    if (label == ColorKeys::Completed)
        return m_completed;
    for (int i = 0; i < m_shownRows && i < m_rowLabels.size(); ++i) {
        if (m_rowLabels[i]->text() == label)
            return m_rowWells[i];
    }
    return nullptr;
}
