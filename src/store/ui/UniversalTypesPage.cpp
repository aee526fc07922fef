#include "store/ui/UniversalTypesPage.h"

#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/DragRows.h"
#include "store/ui/ListEditing.h"
#include "store/ui/Named.h"
#include "store/ui/TypesListModel.h"
#include "widgets/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const QString AddTypeTitle = QStringLiteral("Add Type");
const QString RemoveTypeTitle = QStringLiteral("Remove Type");
const QString UniversalPrefix = QStringLiteral("Universal ");
} // namespace

UniversalTypesPage::UniversalTypesPage(QWidget *parent)
    : QWidget(parent)
{
    named(this, QStringLiteral("universalTypesPage"), QString());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    m_description = named(new QLabel, QStringLiteral("descriptionField"), QString());
    m_description->setWordWrap(true);
    layout->addWidget(m_description);

    m_types = new TypesListModel(DragRows::UniversalTypesDragType, this);
    m_table = named(new QListView, QStringLiteral("universalTypesTable"), QString());
    m_table->setModel(m_types);
    m_table->setDragDropMode(QAbstractItemView::InternalMove);
    m_table->setDefaultDropAction(Qt::MoveAction);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    layout->addWidget(m_table, 1);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(0);
    m_add = named(new QToolButton, QStringLiteral("addUniversalType"), AddTypeTitle);
    m_add->setIcon(Icons::themed(QStringLiteral("list-add"), QStringLiteral("courses-plus")));
    m_add->setToolTip(AddTypeTitle);
    m_remove = named(new QToolButton, QStringLiteral("removeUniversalType"), RemoveTypeTitle);
    m_remove->setIcon(Icons::themed(QStringLiteral("list-remove"), QStringLiteral("courses-minus")));
    m_remove->setToolTip(RemoveTypeTitle);
    m_remove->setEnabled(false);
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addStretch();
    layout->addLayout(buttons);

    connect(m_add, &QToolButton::clicked, this, [this] {
        commitPendingEdit();
        const QModelIndex index = m_types->index(m_types->addType());
        m_table->setCurrentIndex(index);
        m_table->edit(index);
    });
    const auto remove = [this] {
        commitPendingEdit();
        const QModelIndex current = m_table->currentIndex();
        if (current.isValid() && m_table->selectionModel()->isSelected(current))
            m_types->removeType(current.row());
    };
    connect(m_remove, &QToolButton::clicked, this, remove);
    ListEditing::onDeleteKey(m_table, this, remove);
    connect(m_types, &TypesListModel::typesEdited, this, [this] { Q_EMIT typesEdited(m_types->types()); });
    connect(m_types, &TypesListModel::typeMoved, this, [this](int row) { m_table->setCurrentIndex(m_types->index(row)); });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { m_remove->setEnabled(m_table->selectionModel()->hasSelection()); });
    connect(m_types, &QAbstractItemModel::modelReset, this, [this] { m_remove->setEnabled(false); });
    updateLabels();
}

void UniversalTypesPage::setTypes(const QStringList &types)
{
    m_types->setTypes(types);
}

void UniversalTypesPage::commitPendingEdit()
{
    ListEditing::commitOpenEditor(m_table);
}

QStringList UniversalTypesPage::types() const
{
    return m_types->types();
}

QString UniversalTypesPage::description()
{
    using namespace PreferenceKeys::LabelKeys;
    const QString type = Labels::label(Type);
    const QString course = Labels::label(Course).toLower();
    return QStringLiteral("Here you can add ") + type.toLower() + QStringLiteral("s for your ")
        + Labels::label(Assignment).toLower() + QStringLiteral("s.  ") + type
        + QStringLiteral("s you add here will be available within all of your ") + course + QStringLiteral("s, while ")
        + course + QStringLiteral(" specific ") + type.toLower() + QStringLiteral("s can be edited in the ") + course
        + QStringLiteral("'s details.");
}

void UniversalTypesPage::updateLabels()
{
    m_description->setText(description());
    m_description->setAccessibleName(description());
    m_table->setAccessibleName(UniversalPrefix + Labels::plural(PreferenceKeys::LabelKeys::Type));
}
