#include "store/ui/CoursesAndTextbooks.h"

#include "store/CoursesDocument.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/CourseFormPage.h"
#include "store/ui/CoursesFormCommit.h"
#include "store/ui/CoursesListModel.h"
#include "store/ui/ListEditing.h"
#include "store/ui/Named.h"
#include "store/ui/TextbookFormPage.h"
#include "store/ui/UniversalTypesPage.h"
#include "widgets/Icons.h"
#include "widgets/ToolbarOverflow.h"

#include <QAction>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPointer>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString ToolbarIdentifier = QStringLiteral("coursesToolbar");
const QString AddCourseIdentifier = QStringLiteral("AddCourse");
const QString AddTextbookIdentifier = QStringLiteral("AddTextbook");
const QString DeleteIdentifier = QStringLiteral("Delete");
const QString AddPrefix = QStringLiteral("Add ");
const QString DeleteLabel = QStringLiteral("Delete");
const QString AddCourseToolTip = QStringLiteral("Add a new course");
const QString AddTextbookToolTip = QStringLiteral("Add a new textbook");
const QString DeleteToolTip = QStringLiteral("Delete the currently selected course or textbook");
const QString UniversalPrefix = QStringLiteral("Universal ");
const QString TitleJoin = QStringLiteral(" and ");
QPointer<CoursesAndTextbooks> g_shared;
} // namespace

CoursesAndTextbooks::CoursesAndTextbooks(QWidget *parent)
    : QMainWindow(parent)
    , m_model(new CoursesListModel(&m_store, this))
    , m_warnings(m_store)
{
    setObjectName(QStringLiteral("coursesAndTextbooksWindow"));
    buildToolbar();

    auto *splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("coursesSplitter"));
    splitter->setChildrenCollapsible(false);
    auto *left = new QWidget;
    left->setObjectName(QStringLiteral("coursesListPane"));
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->setSpacing(0);
    m_coursesTable = named(new QListView, QStringLiteral("coursesTable"), QString());
    m_coursesTable->setModel(m_model);
    m_coursesTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_coursesTable->setDragDropMode(QAbstractItemView::InternalMove);
    m_coursesTable->setDefaultDropAction(Qt::MoveAction);
    m_coursesTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_coursesTable->setMinimumWidth(180);
    leftLayout->addWidget(m_coursesTable, 1);
    m_typesTable = named(new QListWidget, QStringLiteral("typesTable"), QString());
    m_typesTable->addItem(QString());
    m_typesTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_typesTable->setFixedHeight(m_typesTable->sizeHintForRow(0) + 2 * m_typesTable->frameWidth() + 8);
    m_typesTable->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    leftLayout->addWidget(m_typesTable);
    splitter->addWidget(left);

    m_selectedItem = named(new QStackedWidget, QStringLiteral("selectedItem"), QString());
    auto *blank = named(new QWidget, QStringLiteral("blankPage"), QString());
    m_courseForm = new CourseFormPage;
    m_textbookForm = new TextbookFormPage;
    m_typesPage = new UniversalTypesPage;
    m_selectedItem->addWidget(blank);
    m_selectedItem->addWidget(m_courseForm);
    m_selectedItem->addWidget(m_textbookForm);
    m_selectedItem->addWidget(m_typesPage);
    m_form = std::make_unique<CoursesFormCommit>(m_store, m_selectedItem, m_courseForm, m_textbookForm, m_typesPage);
    splitter->addWidget(m_selectedItem);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({200, 400});
    setCentralWidget(splitter);
    resize(620, 480);

    connect(m_coursesTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &CoursesAndTextbooks::selectionChanged);
    connect(m_typesTable, &QListWidget::itemSelectionChanged, this, [this] {
        if (!m_reloading && !m_typesTable->selectedItems().isEmpty())
            selectUniversalTypes();
    });
    connect(m_model, &CoursesListModel::courseDropped, this, &CoursesAndTextbooks::courseDropped);
    // Del in the list deletes the selected course or textbook, as the toolbar's Delete does.
    ListEditing::onDeleteKey(m_coursesTable, this, &CoursesAndTextbooks::deleteCourseOrTextbook);
    connect(m_courseForm, &CourseFormPage::editingEnded, this, &CoursesAndTextbooks::courseEdited);
    connect(m_textbookForm, &TextbookFormPage::editingEnded, this, &CoursesAndTextbooks::textbookEdited);
    connect(m_typesPage, &UniversalTypesPage::typesEdited, this, &CoursesAndTextbooks::universalTypesEdited);

    // Changes made by another window, a service of this program or another program reach this
    // window at once, not at its next activation.
    m_store.setSource(this);
    CoursesDocument *document = m_store.document();
    connect(document, &CoursesDocument::coursesChanged, this, &CoursesAndTextbooks::changedElsewhere);
    connect(document, &CoursesDocument::universalTypesChanged, this, &CoursesAndTextbooks::changedElsewhere);
    connect(document, &CoursesDocument::reset, this, &CoursesAndTextbooks::changedElsewhere);

    updateLabels();
    updateToolbar();
}

CoursesAndTextbooks::~CoursesAndTextbooks() = default;

void CoursesAndTextbooks::changedElsewhere(QObject *source)
{
    if (source == this || m_refreshQueued)
        return;
    // Taken up once the change in progress is over (it may be one this window's own saving set off,
    // or another window's that is not finished yet): its rows are good until then.
    m_refreshQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_refreshQueued = false;
            if (isVisible())
                refreshFromDisk();
        },
        Qt::QueuedConnection);
}

CoursesAndTextbooks *CoursesAndTextbooks::sharedController()
{
    if (!g_shared)
        g_shared = new CoursesAndTextbooks;
    return g_shared;
}

void CoursesAndTextbooks::buildToolbar()
{
    m_toolbar = addToolBar(QString());
    ToolbarOverflow::nameOverflowButton(m_toolbar);
    named(m_toolbar, ToolbarIdentifier, QString());
    m_toolbar->setMovable(false);
    m_toolbar->setFloatable(false);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolbar->setIconSize(QSize(32, 32));
    m_toolbar->toggleViewAction()->setEnabled(false); // not customisable
    setContextMenuPolicy(Qt::NoContextMenu);

    m_addCourse = m_toolbar->addAction(Icons::themed(QStringLiteral("list-add"), QStringLiteral("courses-add-course")),
                                       QString(), this, &CoursesAndTextbooks::addCourse);
    m_addCourse->setObjectName(AddCourseIdentifier);
    m_addCourse->setToolTip(AddCourseToolTip);
    m_addTextbook = m_toolbar->addAction(
        Icons::themed(QStringLiteral("document-new"), QStringLiteral("courses-add-textbook")), QString(), this,
        &CoursesAndTextbooks::addTextbook);
    m_addTextbook->setObjectName(AddTextbookIdentifier);
    m_addTextbook->setToolTip(AddTextbookToolTip);
    m_toolbar->addSeparator();
    m_delete = m_toolbar->addAction(Icons::themed(QStringLiteral("edit-delete"), QStringLiteral("courses-delete")),
                                    DeleteLabel, this, &CoursesAndTextbooks::deleteCourseOrTextbook);
    m_delete->setObjectName(DeleteIdentifier);
    m_delete->setToolTip(DeleteToolTip);
    for (QAction *action : {m_addCourse, m_addTextbook, m_delete}) {
        if (QWidget *button = m_toolbar->widgetForAction(action))
            button->setObjectName(action->objectName() + QStringLiteral("Button"));
    }
    // The toolbar's buttons take no focus (a click on them must leave the keyboard in the field being
    // typed in), so the keyboard reaches them through shortcuts: the standard New for a course, with
    // Shift for a textbook (Delete in the lists is theirs already).
    m_addCourse->setShortcut(QKeySequence::New);
    m_addTextbook->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    for (QAction *action : {m_addCourse, m_addTextbook})
        action->setShortcutContext(Qt::WindowShortcut);
}

void CoursesAndTextbooks::updateLabels()
{
    const QString course = Labels::label(LabelKeys::Course);
    const QString textbook = Labels::label(LabelKeys::Textbook);
    const QString title = Labels::plural(LabelKeys::Course) + TitleJoin + Labels::plural(LabelKeys::Textbook);
    setWindowTitle(title);
    setAccessibleName(title);
    m_addCourse->setText(AddPrefix + course);
    m_addTextbook->setText(AddPrefix + textbook);
    for (QAction *action : {m_addCourse, m_addTextbook, m_delete}) {
        if (QWidget *button = m_toolbar->widgetForAction(action))
            button->setAccessibleName(action->text());
    }
    m_toolbar->setAccessibleName(title);
    m_coursesTable->setAccessibleName(title);
    const QString universal = UniversalPrefix + Labels::plural(LabelKeys::Type);
    m_typesTable->item(0)->setText(universal);
    m_typesTable->setAccessibleName(universal);
    m_selectedItem->setAccessibleName(title);
    m_courseForm->updateLabels();
    m_textbookForm->updateLabels();
    m_typesPage->updateLabels();
}

void CoursesAndTextbooks::reloadFromDisk()
{
    commitPendingEdit();
    m_store.reload();
    m_store.updateCombinedArray();
    reloadList(-1);
    m_form->setRow(-1);
    m_selectedItem->setCurrentIndex(int(Page::Blank));
    updateLabels();
    m_warnings.warnIfUnusable();
}

void CoursesAndTextbooks::refreshFromDisk()
{
    commitPendingEdit();
    const QVariantMap shown = m_store.recordAt(m_form->row());
    if (!m_store.reloadIfChangedOnDisk())
        return;
    showFreshList(shown);
    m_warnings.warnIfUnusable();
}

void CoursesAndTextbooks::showFreshList(const QVariantMap &shown)
{
    if (currentPage() == Page::Types) {
        reloadList(-1);
        m_typesPage->setTypes(m_store.universalTypes());
        return;
    }
    const int row = m_store.findRecord(shown, m_form->row());
    reloadList(row);
    if (row >= 0) {
        showRecord(row);
    } else {
        m_form->setRow(-1);
        m_selectedItem->setCurrentIndex(int(Page::Blank));
    }
    updateToolbar();
}

void CoursesAndTextbooks::commitPendingEdit()
{
    m_form->commit();
}

void CoursesAndTextbooks::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!event->spontaneous())
        reloadFromDisk();
}

void CoursesAndTextbooks::closeEvent(QCloseEvent *event)
{
    // A field still being typed in is saved before the window goes.
    commitPendingEdit();
    m_reloading = true;
    m_coursesTable->clearSelection();
    m_typesTable->clearSelection();
    m_reloading = false;
    m_form->setRow(-1);
    m_selectedItem->setCurrentIndex(int(Page::Blank));
    updateToolbar();
    QMainWindow::closeEvent(event);
}

void CoursesAndTextbooks::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange)
        return;
    if (isActiveWindow()) {
        // The labels may have been renamed in the preferences while this window stayed open, and
        // the files replaced (deleting all data, a backup import, a download).
        updateLabels();
        refreshFromDisk();
    } else {
        // Mostly done already by the form as the keyboard left it; what remains goes now.
        commitPendingEdit();
    }
}

int CoursesAndTextbooks::selectedRow() const
{
    const QModelIndexList rows = m_coursesTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

CoursesAndTextbooks::Page CoursesAndTextbooks::currentPage() const
{
    return Page(m_selectedItem->currentIndex());
}

QStringList CoursesAndTextbooks::courseNames() const
{
    QStringList names;
    for (const QVariant &value : m_store.getCombined()) {
        const QVariantMap record = value.toMap();
        if (CoursesStore::isCourse(record))
            names.append(record.value(CourseKeys::Name).toString());
    }
    return names;
}

void CoursesAndTextbooks::updateToolbar()
{
    const bool selected = selectedRow() >= 0;
    m_addTextbook->setEnabled(selected);
    m_delete->setEnabled(selected);
    m_addCourse->setEnabled(true);
}

void CoursesAndTextbooks::reloadList(int row)
{
    m_reloading = true;
    m_model->reload();
    if (row >= 0 && row < m_model->rowCount()) {
        const QModelIndex index = m_model->index(row);
        m_coursesTable->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        m_coursesTable->scrollTo(index);
    }
    m_reloading = false;
    updateToolbar();
}

void CoursesAndTextbooks::selectionChanged()
{
    if (m_reloading)
        return;
    int row = selectedRow();
    if (m_form->row() >= 0 && row != m_form->row()) {
        // The form still shows the record selected before: its typing is saved to that record,
        // and then the new choice is selected again wherever saving moved it.
        const int chosen = m_form->rowAfterCommit(row);
        // Saving selects the saved record again; the user's choice wins.
        if (selectedRow() != chosen)
            reloadList(chosen);
        row = chosen;
    }
    if (row >= 0) {
        m_reloading = true;
        m_typesTable->clearSelection();
        m_reloading = false;
    }
    showRecord(row);
    updateToolbar();
}

void CoursesAndTextbooks::showRecord(int row)
{
    const QVariantMap record = m_store.recordAt(row);
    m_form->setRow(record.isEmpty() ? -1 : row);
    if (record.isEmpty()) {
        if (m_typesTable->selectedItems().isEmpty())
            m_selectedItem->setCurrentIndex(int(Page::Blank));
        return;
    }
    const QString name = record.value(CourseKeys::Name).toString();
    if (CoursesStore::isCourse(record)) {
        m_store.originalCourse = name;
        m_courseForm->fill(record, m_store.textbooksOfCourse(name));
        m_selectedItem->setCurrentIndex(int(Page::Course));
    } else {
        m_store.originalTextbook = name;
        m_textbookForm->fill(record, courseNames());
        m_selectedItem->setCurrentIndex(int(Page::Textbook));
    }
}

void CoursesAndTextbooks::selectRow(int row)
{
    row = m_form->rowAfterCommit(row);
    if (row < 0 || row >= m_model->rowCount()) {
        m_coursesTable->clearSelection();
        return;
    }
    m_coursesTable->selectionModel()->setCurrentIndex(m_model->index(row), QItemSelectionModel::ClearAndSelect);
}

bool CoursesAndTextbooks::selectCourseOrTextbook(const QString &name)
{
    commitPendingEdit();
    const QVariantList &combined = m_store.getCombined();
    for (int row = 0; row < combined.size(); ++row) {
        if (combined[row].toMap().value(CourseKeys::Name).toString() == name) {
            selectRow(row);
            return true;
        }
    }
    return false;
}

void CoursesAndTextbooks::selectUniversalTypes()
{
    commitPendingEdit();
    m_form->setRow(-1);
    m_reloading = true;
    m_coursesTable->clearSelection();
    m_typesTable->setCurrentRow(0);
    m_reloading = false;
    // The list beside the types shows the same reread files.
    if (m_store.reloadIfChangedOnDisk())
        reloadList(-1);
    m_typesPage->setTypes(m_store.universalTypes());
    m_selectedItem->setCurrentIndex(int(Page::Types));
    updateToolbar();
}

void CoursesAndTextbooks::addCourse()
{
    commitPendingEdit();
    const int row = m_store.addCourse();
    m_warnings.warnIfUnusable();
    if (row < 0)
        return;
    reloadList(row);
    showRecord(row);
    m_courseForm->nameField()->setFocus(Qt::OtherFocusReason);
}

void CoursesAndTextbooks::addTextbook()
{
    // The course's name may still be in its field: it is saved first, so that the textbook is
    // filed under the name and not under the course's old (or no) name.
    const int selected = m_form->rowAfterCommit(selectedRow());
    const QVariantMap shown = m_store.recordAt(m_form->row());
    const quint64 reads = m_store.readCount();
    const int row = m_store.addTextbook(selected);
    m_warnings.warnIfUnusable();
    if (row < 0) {
        if (m_store.readCount() != reads)
            showFreshList(shown);
        return;
    }
    reloadList(row);
    showRecord(row);
    m_textbookForm->nameField()->setFocus(Qt::OtherFocusReason);
}

void CoursesAndTextbooks::deleteCourseOrTextbook()
{
    const int selected = m_form->rowAfterCommit(selectedRow());
    const QVariantMap shown = m_store.recordAt(m_form->row());
    const quint64 reads = m_store.readCount();
    if (!m_store.deleteCourseOrTextbook(selected)) {
        if (m_store.readCount() != reads)
            showFreshList(shown);
        return;
    }
    m_form->setRow(-1);
    reloadList(-1);
    m_coursesTable->clearSelection();
    m_selectedItem->setCurrentIndex(int(Page::Blank));
    updateToolbar();
}

void CoursesAndTextbooks::courseEdited(bool fromNameField)
{
    const int row = m_form->row();
    if (!CoursesStore::isCourse(m_store.recordAt(row)))
        return;
    const CoursesStore::CourseForm form = m_courseForm->form();
    const int newRow = m_store.editCourse(row, form, fromNameField);
    m_warnings.warnIfUnusable();
    if (newRow < 0)
        return;
    m_form->setRow(newRow);
    reloadList(newRow);
    if (fromNameField)
        m_courseForm->setTextbookChoices(m_store.textbooksOfCourse(form.name), form.defaultTextbook);
}

void CoursesAndTextbooks::textbookEdited(bool fromNameField)
{
    const int row = m_form->row();
    const QVariantMap old = m_store.recordAt(row);
    if (old.isEmpty() || CoursesStore::isCourse(old))
        return;
    const int newRow = m_store.editTextbook(row, m_textbookForm->form(), fromNameField);
    m_warnings.warnIfUnusable();
    m_form->setRow(newRow);
    reloadList(newRow);
    if (newRow < 0)
        m_selectedItem->setCurrentIndex(int(Page::Blank));
}

void CoursesAndTextbooks::universalTypesEdited(const QStringList &types)
{
    if (!m_store.editUniversalTypes(types)) {
        m_warnings.typesNotSaved();
        return;
    }
    // The edit was made to a newer list from disk: show that one, once the table has finished the
    // change it is in the middle of.
    if (m_store.universalTypes() != types) {
        QMetaObject::invokeMethod(
            this, [this] { m_typesPage->setTypes(m_store.universalTypes()); }, Qt::QueuedConnection);
    }
}

void CoursesAndTextbooks::courseDropped(int from, int dropRow)
{
    // Saving pending typing may regroup the list; the dragged and target rows are taken before.
    const QVariantMap dragged = m_store.recordAt(from);
    const QVariantMap target = m_store.recordAt(dropRow);
    const int formRow = m_form->row();
    commitPendingEdit();
    if (m_form->row() != formRow) {
        from = m_store.findRecord(dragged, from);
        dropRow = target.isEmpty() ? int(m_store.getCombined().size()) : m_store.findRecord(target, dropRow);
    }
    const int selected = m_store.moveCourse(from, dropRow, selectedRow());
    m_warnings.warnIfUnusable();
    m_form->setRow(selected);
    reloadList(selected);
    if (selected >= 0)
        showRecord(selected);
    else
        m_selectedItem->setCurrentIndex(int(Page::Blank));
}
