#include "store/ui/CoursesAndTextbooks.h"

#include "store/CoursesDocument.h"
#include "store/CoursesHistory.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/UndoNames.h"
#include "store/ui/CourseFormPage.h"
#include "store/ui/CoursesFormCommit.h"
#include "store/ui/CoursesListModel.h"
#include "store/ui/ListEditing.h"
#include "store/ui/Named.h"
#include "store/ui/TextbookFormPage.h"
#include "store/ui/UniversalTypesPage.h"
#include "widgets/FieldUndo.h"
#include "widgets/Icons.h"
#include "widgets/ToolbarOverflow.h"

#include <QAction>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
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
const QString EditMenuTitle = QStringLiteral("&Edit");
QPointer<CoursesAndTextbooks> g_shared;
} // namespace

CoursesAndTextbooks::CoursesAndTextbooks(QWidget *parent)
    : QMainWindow(parent)
    , m_model(new CoursesListModel(&m_store, this))
    , m_warnings(m_store)
{
    setObjectName(QStringLiteral("coursesAndTextbooksWindow"));
    buildToolbar();
    buildEditMenu();

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
    connect(&document->history(), &CoursesHistory::changed, this, &CoursesAndTextbooks::validateHistory);

    updateLabels();
    updateToolbar();
}

CoursesAndTextbooks::~CoursesAndTextbooks()
{
    // Typing still in a field is kept. The fields go only after this window's own parts (the store
    // among them), and a field that loses the keyboard as it goes ends its editing: nothing of this
    // window may hear of that then.
    commitPendingEdit();
    for (QObject *page : {static_cast<QObject *>(m_courseForm), static_cast<QObject *>(m_textbookForm),
                          static_cast<QObject *>(m_typesPage)})
        page->disconnect(this);
}

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

void CoursesAndTextbooks::buildEditMenu()
{
    QMenu *edit = menuBar()->addMenu(EditMenuTitle);
    edit->setObjectName(QStringLiteral("coursesEditMenu"));
    m_undo = edit->addAction(QIcon::fromTheme(QStringLiteral("edit-undo")), UndoNames::Undo, this,
                             [this] { undoOrRedo(true); });
    m_undo->setObjectName(QStringLiteral("coursesUndo"));
    m_undo->setShortcut(QKeySequence::Undo);
    m_redo = edit->addAction(QIcon::fromTheme(QStringLiteral("edit-redo")), UndoNames::Redo, this,
                             [this] { undoOrRedo(false); });
    m_redo->setObjectName(QStringLiteral("coursesRedo"));
    m_redo->setShortcuts(FieldUndo::redoKeys());
    for (QAction *action : {m_undo, m_redo})
        action->setShortcutContext(Qt::WindowShortcut);
    // The menu's items say what typing or which change they take back when it opens.
    connect(edit, &QMenu::aboutToShow, this, &CoursesAndTextbooks::validateHistory);
    FieldUndo::install();
    validateHistory();
}

void CoursesAndTextbooks::validateHistory()
{
    const CoursesHistory &history = m_store.document()->history();
    const bool fieldUndo = FieldUndo::fieldWithOwnStep(true);
    const bool fieldRedo = FieldUndo::fieldWithOwnStep(false);
    m_undo->setText(fieldUndo ? FieldUndo::UndoTypingTitle : history.undoText());
    m_undo->setEnabled(fieldUndo || history.canUndo());
    m_redo->setText(fieldRedo ? FieldUndo::RedoTypingTitle : history.redoText());
    m_redo->setEnabled(fieldRedo || history.canRedo());
}

QString CoursesAndTextbooks::stepName(const QString &verb, bool course) const
{
    return verb + QLatin1Char(' ') + Labels::label(course ? LabelKeys::Course : LabelKeys::Textbook);
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
