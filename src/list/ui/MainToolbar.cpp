#include "list/ui/MainToolbar.h"

#include "list/ListTexts.h"
#include "list/ui/FormatControl.h"
#include "list/ui/ToolbarCustomizationPalette.h"
#include "widgets/Icons.h"
#include "widgets/ToolbarOverflow.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidgetAction>

using namespace ToolbarCatalogue;

namespace {
const QStringList ScopeTitles{QStringLiteral("All"),   QStringLiteral("Name"),  QStringLiteral("Course"),
                              QStringLiteral("Textbook"), QStringLiteral("Type"), QStringLiteral("Grade"),
                              QStringLiteral("Notes")};
const QString CustomizeMenuTitle = QStringLiteral("Customize Toolbar…");
constexpr int SearchFieldWidth = 180;
constexpr int SpaceWidth = 16;
} // namespace

namespace {
// The toolbar shows an item's tool tip over the button it makes for it, but not over a control the
// item carries (the search field, the format control): the control and its caption show it.
void setControlToolTip(QAction *action, const QString &toolTip)
{
    auto *widgetAction = qobject_cast<QWidgetAction *>(action);
    if (!widgetAction || !widgetAction->defaultWidget())
        return;
    QWidget *box = widgetAction->defaultWidget();
    box->setToolTip(toolTip);
    for (QWidget *child : box->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->setToolTip(toolTip);
}
} // namespace

MainToolbar::MainToolbar(QWidget *parent)
    : QToolBar(parent)
{
    setObjectName(QStringLiteral("mainToolbar"));
    setAccessibleName(tr("Main toolbar"));
    setWindowTitle(tr("Toolbar"));
    setMovable(false);
    setFloatable(false);
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    setIconSize(QSize(32, 32));
    ToolbarOverflow::nameOverflowButton(this);

    m_searchField = new QLineEdit;
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setAccessibleName(tr("Search"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setFixedWidth(SearchFieldWidth);
    m_searchField->setPlaceholderText(QString(""));
    m_scopeGroup = new QActionGroup(this);
    m_scopeGroup->setExclusive(true);
    auto *scopeMenu = new QMenu(m_searchField);
    scopeMenu->setObjectName(QStringLiteral("searchScopeMenu"));
    for (const QString &title : ScopeTitles) {
        QAction *scope = scopeMenu->addAction(title);
        scope->setCheckable(true);
        scope->setChecked(title == ScopeTitles.first());
        m_scopeGroup->addAction(scope);
        connect(scope, &QAction::triggered, this, [this, title] { Q_EMIT searchScopeChosen(title); });
    }
    QAction *scopeButton = m_searchField->addAction(Icons::themed(QStringLiteral("edit-find"), QStringLiteral("main-search")),
                                                    QLineEdit::LeadingPosition);
    scopeButton->setText(tr("Choose what to search"));
    scopeButton->setToolTip(tr("Choose what to search"));
    scopeButton->setMenu(scopeMenu);
    // The field draws its buttons from actions; a screen reader reads them by the action's text,
    // which the clear button's own action does not carry.
    for (auto *button : m_searchField->findChildren<QToolButton *>(Qt::FindDirectChildrenOnly))
        button->setAccessibleName(button->defaultAction() == scopeButton ? scopeButton->text() : tr("Clear the search"));
    connect(scopeButton, &QAction::triggered, this, [this, scopeMenu] {
        scopeMenu->popup(m_searchField->mapToGlobal(QPoint(0, m_searchField->height())));
    });
    connect(m_searchField, &QLineEdit::textChanged, this, &MainToolbar::searchTextEdited);

    m_format = new FormatControl;
    connect(m_format, &FormatControl::formatChosen, this, &MainToolbar::formatChosen);

    for (const Item &item : items())
        m_actions.insert(item.identifier, makeAction(item));
    auto *customize = new QAction(standardLabel(Customize), this);
    customize->setObjectName(QStringLiteral("toolbarItem") + Customize);
    customize->setToolTip(tr("Customize the toolbar"));
    customize->setIcon(Icons::themed(QStringLiteral("configure-toolbars"), QStringLiteral("main-customize")));
    connect(customize, &QAction::triggered, this, &MainToolbar::runCustomizationPalette);
    m_actions.insert(Customize, customize);

    m_identifiers = storedItemIdentifiers();
    rebuild();
}

MainToolbar::~MainToolbar() = default;

QWidget *MainToolbar::labelled(QWidget *control, const QString &label, const QString &name)
{
    auto *box = new QWidget;
    box->setObjectName(name);
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(2);
    layout->addStretch(1);
    layout->addWidget(control, 0, Qt::AlignHCenter);
    auto *caption = new QLabel(label, box);
    caption->setObjectName(name + QStringLiteral("Label"));
    caption->setAlignment(Qt::AlignHCenter);
    layout->addWidget(caption, 0, Qt::AlignHCenter);
    return box;
}

QAction *MainToolbar::makeAction(const Item &item)
{
    QAction *action = nullptr;
    if (item.identifier == SearchItem || item.identifier == FormatView) {
        auto *widgetAction = new QWidgetAction(this);
        if (item.identifier == SearchItem)
            m_searchBox = labelled(m_searchField, item.label, QStringLiteral("searchItem"));
        else
            m_formatBox = labelled(m_format, item.label, QStringLiteral("formatItem"));
        widgetAction->setDefaultWidget(item.identifier == SearchItem ? m_searchBox : m_formatBox);
        action = widgetAction;
    } else {
        action = new QAction(this);
        action->setIcon(Icons::themed(item.themeIcon, item.fallbackIcon));
        connect(action, &QAction::triggered, this, [this, id = item.identifier] { Q_EMIT itemTriggered(id); });
    }
    action->setText(item.label);
    action->setIconText(item.label);
    action->setToolTip(item.toolTip);
    setControlToolTip(action, item.toolTip);
    action->setObjectName(QStringLiteral("toolbarItem") + item.identifier);
    action->setData(item.identifier);
    return action;
}

QWidget *MainToolbar::itemWidget(const QString &identifier) const
{
    QAction *action = m_actions.value(identifier);
    return action ? widgetForAction(action) : nullptr;
}

QList<QAction *> MainToolbar::scopeActions() const
{
    return m_scopeGroup->actions();
}

void MainToolbar::setItemIdentifiers(const QStringList &identifiers)
{
    QStringList kept;
    for (const QString &identifier : identifiers) {
        if (!m_actions.contains(identifier) && !isStandard(identifier))
            continue;
        if (!isRepeatable(identifier) && kept.contains(identifier))
            continue;
        kept.append(identifier);
    }
    m_identifiers = kept;
    storeItemIdentifiers(kept);
    rebuild();
}

void MainToolbar::rebuild()
{
    // The catalogue's actions survive; only separators and spaces are made afresh.
    for (QAction *action : actions())
        removeAction(action);
    qDeleteAll(m_standardActions);
    m_standardActions.clear();

    for (const QString &identifier : std::as_const(m_identifiers)) {
        if (identifier == Separator) {
            auto *separator = new QAction(this);
            separator->setSeparator(true);
            separator->setData(identifier);
            m_standardActions.append(separator);
            addAction(separator);
        } else if (identifier == Space || identifier == FlexibleSpace) {
            auto *space = new QWidget;
            space->setObjectName(identifier == Space ? QStringLiteral("toolbarSpace") : QStringLiteral("toolbarFlexibleSpace"));
            if (identifier == Space)
                space->setFixedWidth(SpaceWidth);
            else
                space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
            auto *action = new QWidgetAction(this);
            action->setDefaultWidget(space);
            action->setData(identifier);
            m_standardActions.append(action);
            addAction(action);
        } else if (QAction *action = m_actions.value(identifier)) {
            addAction(action);
            if (QWidget *button = widgetForAction(action)) {
                button->setObjectName(QStringLiteral("toolbarButton") + identifier);
                button->setAccessibleName(action->text());
            }
        }
    }
    validate(m_lastSelectedRows, m_lastRows);
}

void MainToolbar::validate(int selectedRows, int rows)
{
    m_lastSelectedRows = selectedRows;
    m_lastRows = rows;
    const QString coursesLabel = coursesItemLabel();
    QAction *courses = m_actions.value(CoursesWindow);
    courses->setText(coursesLabel);
    courses->setIconText(coursesLabel);
    if (QWidget *button = widgetForAction(courses))
        button->setAccessibleName(coursesLabel);
    const ValidationState state{m_customizing, selectedRows, rows};
    for (auto it = m_actions.cbegin(); it != m_actions.cend(); ++it)
        it.value()->setEnabled(!m_unavailable.contains(it.key()) && ToolbarCatalogue::isEnabled(it.key(), state));
}

void MainToolbar::runCustomizationPalette()
{
    if (m_palette) {
        m_palette->raise();
        m_palette->activateWindow();
        return;
    }
    m_customizing = true;
    validate(m_lastSelectedRows, m_lastRows);
    m_palette = new ToolbarCustomizationPalette(this, window());
    connect(m_palette, &QDialog::finished, this, [this] {
        m_customizing = false;
        validate(m_lastSelectedRows, m_lastRows);
        m_palette->deleteLater();
        Q_EMIT customizationFinished();
    });
    m_palette->open();
}

void MainToolbar::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("toolbarContextMenu"));
    menu.addAction(CustomizeMenuTitle, this, &MainToolbar::runCustomizationPalette);
    menu.exec(event->globalPos());
}

bool MainToolbar::isSearchItemVisible() const
{
    if (!m_identifiers.contains(SearchItem))
        return false;
    // Pushed into the toolbar's overflow, the field is hidden by the layout and no longer counts.
    if (!isVisible())
        return true;
    QWidget *box = itemWidget(SearchItem);
    return box && box->isVisible();
}

QString MainToolbar::searchText() const
{
    return m_searchField->text();
}

QString MainToolbar::searchPlaceholder() const
{
    return m_searchField->placeholderText();
}

void MainToolbar::setSearchPlaceholder(const QString &placeholder)
{
    m_searchField->setPlaceholderText(placeholder);
    const QString title = placeholder.isEmpty() ? ScopeTitles.first() : placeholder.left(1).toUpper() + placeholder.mid(1);
    for (QAction *scope : m_scopeGroup->actions())
        scope->setChecked(scope->text() == title);
}

int MainToolbar::formatSegment() const
{
    return m_format->selectedSegment();
}

void MainToolbar::setFormatSegment(int segment)
{
    m_format->setSelectedSegment(segment);
}

void MainToolbar::setUnavailable(const QString &identifier, const QString &why)
{
    m_unavailable.insert(identifier, why);
    if (QAction *action = m_actions.value(identifier)) {
        action->setToolTip(why);
        setControlToolTip(action, why);
        action->setEnabled(false);
    }
}
