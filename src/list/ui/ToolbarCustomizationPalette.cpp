#include "list/ui/ToolbarCustomizationPalette.h"

#include "list/ui/MainToolbar.h"
#include "list/ui/ToolbarCatalogue.h"
#include "widgets/Icons.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace ToolbarCatalogue;

namespace {
const QString PaletteTitle = QStringLiteral("Customize Toolbar");
const QString Instructions = QStringLiteral("Add items to the toolbar, remove them, or change their order.");

QString labelOf(const QString &identifier)
{
    if (identifier == CoursesWindow)
        return coursesItemLabel();
    if (const Item *item = find(identifier))
        return item->label;
    return standardLabel(identifier);
}

QIcon iconOf(const QString &identifier)
{
    if (const Item *item = find(identifier))
        return Icons::themed(item->themeIcon, item->fallbackIcon);
    if (identifier == Customize)
        return Icons::themed(QStringLiteral("configure-toolbars"), QStringLiteral("main-customize"));
    return {};
}

QListWidgetItem *entry(const QString &identifier)
{
    auto *item = new QListWidgetItem(iconOf(identifier), labelOf(identifier));
    item->setData(Qt::UserRole, identifier);
    if (const Item *known = find(identifier))
        item->setToolTip(known->toolTip);
    return item;
}
} // namespace

ToolbarCustomizationPalette::ToolbarCustomizationPalette(MainToolbar *toolbar, QWidget *parent)
    : QDialog(parent)
    , m_toolbar(toolbar)
    , m_available(new QListWidget(this))
    , m_current(new QListWidget(this))
{
    setObjectName(QStringLiteral("toolbarCustomizationPalette"));
    setAccessibleName(PaletteTitle);
    setWindowTitle(PaletteTitle);
    setWindowModality(Qt::WindowModal);

    m_available->setObjectName(QStringLiteral("availableToolbarItems"));
    m_available->setAccessibleName(tr("Items you can add"));
    m_current->setObjectName(QStringLiteral("currentToolbarItems"));
    m_current->setAccessibleName(tr("Items on the toolbar"));
    m_current->setDragDropMode(QAbstractItemView::InternalMove);
    connect(m_current->model(), &QAbstractItemModel::rowsMoved, this, [this] { applyFromList(); });

    auto makeButton = [this](const QString &text, const QString &name) {
        auto *button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setAccessibleName(text);
        return button;
    };
    m_add = makeButton(tr("Add →"), QStringLiteral("paletteAddButton"));
    m_remove = makeButton(tr("← Remove"), QStringLiteral("paletteRemoveButton"));
    m_up = makeButton(tr("Move Up"), QStringLiteral("paletteUpButton"));
    m_down = makeButton(tr("Move Down"), QStringLiteral("paletteDownButton"));
    QPushButton *defaults = makeButton(tr("Use Default Set"), QStringLiteral("paletteDefaultButton"));

    connect(m_add, &QPushButton::clicked, this, [this] {
        if (QListWidgetItem *item = m_available->currentItem())
            addItem(item->data(Qt::UserRole).toString());
    });
    connect(m_available, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { addItem(item->data(Qt::UserRole).toString()); });
    connect(m_remove, &QPushButton::clicked, this, [this] { removeItemAt(m_current->currentRow()); });
    connect(m_up, &QPushButton::clicked, this, [this] { moveItem(m_current->currentRow(), -1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveItem(m_current->currentRow(), 1); });
    connect(defaults, &QPushButton::clicked, this, &ToolbarCustomizationPalette::useDefaultSet);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setText(tr("Done"));
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("paletteDoneButton"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::accept);

    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Available items"), this), 0, 0);
    grid->addWidget(new QLabel(tr("Toolbar"), this), 0, 2);
    grid->addWidget(m_available, 1, 0);
    auto *middle = new QVBoxLayout;
    middle->addStretch(1);
    for (QPushButton *button : {m_add, m_remove, m_up, m_down})
        middle->addWidget(button);
    middle->addStretch(1);
    grid->addLayout(middle, 1, 1);
    grid->addWidget(m_current, 1, 2);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(Instructions, this));
    layout->addLayout(grid);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(defaults);
    bottom->addStretch(1);
    bottom->addWidget(buttons);
    layout->addLayout(bottom);
    resize(560, 420);
    refill();
}

QStringList ToolbarCustomizationPalette::currentIdentifiers() const
{
    QStringList identifiers;
    for (int row = 0; row < m_current->count(); ++row)
        identifiers.append(m_current->item(row)->data(Qt::UserRole).toString());
    return identifiers;
}

void ToolbarCustomizationPalette::refill(int currentPosition)
{
    const QStringList shown = m_toolbar->itemIdentifiers();
    m_available->clear();
    for (const QString &identifier : allowedItemIdentifiers())
        if (isRepeatable(identifier) || !shown.contains(identifier))
            m_available->addItem(entry(identifier));
    m_current->clear();
    for (const QString &identifier : shown)
        m_current->addItem(entry(identifier));
    if (currentPosition >= 0 && currentPosition < m_current->count())
        m_current->setCurrentRow(currentPosition);
}

void ToolbarCustomizationPalette::applyFromList()
{
    m_toolbar->setItemIdentifiers(currentIdentifiers());
}

void ToolbarCustomizationPalette::addItem(const QString &identifier)
{
    QStringList identifiers = m_toolbar->itemIdentifiers();
    if (!isRepeatable(identifier) && identifiers.contains(identifier))
        return;
    const int at = m_current->currentRow() >= 0 ? m_current->currentRow() + 1 : int(identifiers.size());
    identifiers.insert(at, identifier);
    m_toolbar->setItemIdentifiers(identifiers);
    refill(at);
}

void ToolbarCustomizationPalette::removeItemAt(int position)
{
    QStringList identifiers = m_toolbar->itemIdentifiers();
    if (position < 0 || position >= identifiers.size())
        return;
    identifiers.removeAt(position);
    m_toolbar->setItemIdentifiers(identifiers);
    refill(std::min(position, int(identifiers.size()) - 1));
}

void ToolbarCustomizationPalette::moveItem(int position, int offset)
{
    QStringList identifiers = m_toolbar->itemIdentifiers();
    const int to = position + offset;
    if (position < 0 || position >= identifiers.size() || to < 0 || to >= identifiers.size())
        return;
    identifiers.move(position, to);
    m_toolbar->setItemIdentifiers(identifiers);
    refill(to);
}

void ToolbarCustomizationPalette::useDefaultSet()
{
    m_toolbar->resetToDefaultItems();
    refill();
}
