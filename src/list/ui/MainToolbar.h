#pragma once

#include "list/ToolbarState.h"
#include "list/ui/ToolbarCatalogue.h"
#include "list/ui/ToolbarCustomizationPalette.h"

#include <QHash>
#include <QPointer>
#include <QToolBar>

class FormatControl;
class QAction;
class QActionGroup;
class QLineEdit;
class ToolbarCustomizationPalette;

// The main window's toolbar: the user's arrangement of the catalogue's items, the search field with
// its scope menu and the format control. Every item only says which identifier was chosen; the
// window carries the command out.
class MainToolbar : public QToolBar, public ToolbarState
{
    Q_OBJECT
public:
    explicit MainToolbar(QWidget *parent = nullptr);
    ~MainToolbar() override;

    // The identifiers shown, left to right.
    QStringList itemIdentifiers() const { return m_identifiers; }
    // Shows these items (repeats of a single item and unknown identifiers are dropped) and keeps
    // the arrangement for the next launch.
    void setItemIdentifiers(const QStringList &identifiers);
    void resetToDefaultItems() { setItemIdentifiers(ToolbarCatalogue::defaultItemIdentifiers()); }

    // The action of a catalogue item (also when it is not on the toolbar), or nullptr.
    QAction *itemAction(const QString &identifier) const { return m_actions.value(identifier); }
    QWidget *itemWidget(const QString &identifier) const;
    QLineEdit *searchField() const { return m_searchField; }
    FormatControl *formatControl() const { return m_format; }
    QList<QAction *> scopeActions() const;

    // Enables the items by the rules of the catalogue; relabels the courses item.
    void validate(int selectedRows, int rows);
    bool isCustomizing() const { return m_customizing; }
    // Opens the palette (window-modal); it stays reachable for tests until it is closed.
    void runCustomizationPalette();
    ToolbarCustomizationPalette *customizationPalette() const { return m_palette; }

    // ToolbarState
    bool isSearchItemVisible() const override;
    QString searchText() const override;
    QString searchPlaceholder() const override;
    void setSearchPlaceholder(const QString &placeholder) override;
    int formatSegment() const override;

    void setFormatSegment(int segment);
    // An item with nothing behind it yet: disabled, with a tool tip that says why.
    void setUnavailable(const QString &identifier, const QString &why);

Q_SIGNALS:
    void itemTriggered(const QString &identifier);
    void searchTextEdited();
    // A scope was picked from the search field's menu (its title).
    void searchScopeChosen(const QString &title);
    void formatChosen(int segment);
    void customizationFinished();

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    QAction *makeAction(const ToolbarCatalogue::Item &item);
    QWidget *labelled(QWidget *control, const QString &label, const QString &name);
    void rebuild();

    QStringList m_identifiers;
    QHash<QString, QAction *> m_actions;
    QList<QAction *> m_standardActions; // separators and spaces of the current arrangement
    QLineEdit *m_searchField = nullptr;
    QActionGroup *m_scopeGroup = nullptr;
    FormatControl *m_format = nullptr;
    QWidget *m_searchBox = nullptr;
    QWidget *m_formatBox = nullptr;
    bool m_customizing = false;
    QPointer<ToolbarCustomizationPalette> m_palette;
    int m_lastSelectedRows = 0;
    int m_lastRows = 0;
    QHash<QString, QString> m_unavailable;
};
