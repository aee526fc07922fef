#pragma once

#include "store/ui/PreferencePane.h"

#include <QHash>

class ColorWell;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

// The Main Window pane: which columns the assignment table shows, and the row colours with their
// colour format. Colours are stored under the label text of their row, so a course and a type of
// the same name share one colour.
class AssignmentWindowPane : public PreferencePane
{
    Q_OBJECT
public:
    explicit AssignmentWindowPane(QWidget *parent = nullptr);

    void updateLabels() override;
    // The columns, the colours and the category rows afresh (the courses and types may have been
    // changed in their own window, the columns by dragging in the main window).
    void reloadFromSettings() override;

    // Writes the shown columns and their ordering from the check boxes.
    void saveColumns();
    void resetColumns();
    // Shows the category rows of the chosen colour format.
    void showCategoryRows();

    QCheckBox *columnBox(const QString &identifier) const { return m_columns.value(identifier); }
    // The well of a row by its label ("All Others", "Completed", or a category), or null.
    ColorWell *well(const QString &label) const;
    int shownCategoryRows() const { return m_shownRows; }

private:
    void fillColumns();
    void fillColors();
    // A chosen colour for a category row, stored only if the row still names a category of the
    // current files; a stale row is replaced by the fresh rows instead.
    void storeCategoryColor(int row, const QString &text);

    QHash<QString, QCheckBox *> m_columns;
    QPushButton *m_resetColumns;
    QComboBox *m_colorFormat;
    ColorWell *m_allOthers;
    ColorWell *m_completed;
    QList<ColorWell *> m_rowWells;
    QList<QLabel *> m_rowLabels;
    int m_shownRows = 0;
    bool m_filling = false;
};
