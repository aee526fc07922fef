// The courses window's second half: what a selection, a toolbar button, a form or a drop does,
// each handed to the courses store and shown again from it. Building the window, its labels and
// taking up changes made elsewhere are in CoursesAndTextbooks.cpp.
#include "store/ui/CoursesAndTextbooks.h"

#include "store/CoursesDocument.h"
#include "store/CoursesHistory.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/CourseFormPage.h"
#include "store/ui/CoursesFormCommit.h"
#include "store/ui/CoursesListModel.h"
#include "store/ui/TextbookFormPage.h"
#include "store/ui/UniversalTypesPage.h"
#include "widgets/FieldUndo.h"

#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QStackedWidget>

namespace {
const QString AddVerb = QStringLiteral("Add");
const QString DeleteVerb = QStringLiteral("Delete");
const QString ChangeVerb = QStringLiteral("Change");
const QString RenameVerb = QStringLiteral("Rename");
const QString MoveVerb = QStringLiteral("Move");
const QString ChangeUniversalPrefix = QStringLiteral("Change Universal ");
} // namespace

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
    const auto step = m_store.document()->history().step(stepName(AddVerb, true));
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
    const auto step = m_store.document()->history().step(stepName(AddVerb, false));
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
    const auto step = m_store.document()->history().step(
        stepName(DeleteVerb, CoursesStore::isCourse(m_store.recordAt(selected))));
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
    const bool renames = fromNameField && form.name != m_store.originalCourse;
    const auto step = m_store.document()->history().step(stepName(renames ? RenameVerb : ChangeVerb, true));
    const quint64 reads = m_store.readCount();
    const int newRow = m_store.editCourse(row, form, fromNameField);
    m_warnings.warnIfUnusable();
    if (newRow < 0)
        return;
    m_form->setRow(newRow);
    reloadList(newRow);
    // The edit went onto a newer copy of the course: the form shows what that copy holds now.
    if (m_store.readCount() != reads)
        showRecord(newRow);
    else if (fromNameField)
        m_courseForm->setTextbookChoices(m_store.textbooksOfCourse(form.name), form.defaultTextbook);
}

void CoursesAndTextbooks::textbookEdited(bool fromNameField)
{
    const int row = m_form->row();
    const QVariantMap old = m_store.recordAt(row);
    if (old.isEmpty() || CoursesStore::isCourse(old))
        return;
    const CoursesStore::TextbookForm form = m_textbookForm->form();
    const bool renames = fromNameField && form.name != m_store.originalTextbook;
    const auto step = m_store.document()->history().step(stepName(renames ? RenameVerb : ChangeVerb, false));
    const quint64 reads = m_store.readCount();
    const int newRow = m_store.editTextbook(row, form, fromNameField);
    m_warnings.warnIfUnusable();
    m_form->setRow(newRow);
    reloadList(newRow);
    if (newRow < 0)
        m_selectedItem->setCurrentIndex(int(Page::Blank));
    else if (m_store.readCount() != reads)
        showRecord(newRow);
}

void CoursesAndTextbooks::universalTypesEdited(const QStringList &types)
{
    const auto step = m_store.document()->history().step(ChangeUniversalPrefix + Labels::plural(PreferenceKeys::LabelKeys::Type));
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
    const auto step = m_store.document()->history().step(stepName(MoveVerb, true));
    const int selected = m_store.moveCourse(from, dropRow, selectedRow());
    m_warnings.warnIfUnusable();
    m_form->setRow(selected);
    reloadList(selected);
    if (selected >= 0)
        showRecord(selected);
    else
        m_selectedItem->setCurrentIndex(int(Page::Blank));
}

void CoursesAndTextbooks::undoOrRedo(bool undo)
{
    // Typing goes back in the field first, as it would with the field's own shortcut.
    if (FieldUndo::inField(undo))
        return;
    // Typing still in the form is kept first; it is then the step that goes.
    commitPendingEdit();
    CoursesDocument *document = m_store.document();
    const QVariantList before = document->combined();
    const bool taken = undo ? document->history().undo(this) : document->history().redo(this);
    if (!taken) {
        // The history ended because the files changed elsewhere: show what they hold now.
        refreshFromDisk();
        return;
    }
    m_store.reload();
    const QVariantList &after = m_store.getCombined();
    if (after == before || currentPage() == Page::Types) {
        // The step was the universal types'.
        selectUniversalTypes();
        return;
    }
    // The record the step brought back or changed is the one shown; none after an add is taken back.
    int row = -1;
    for (int i = 0; i < after.size() && row < 0; ++i) {
        if (!before.contains(after[i]))
            row = i;
    }
    reloadList(row);
    if (row >= 0) {
        showRecord(row);
    } else {
        m_form->setRow(-1);
        m_coursesTable->clearSelection();
        m_selectedItem->setCurrentIndex(int(Page::Blank));
    }
    updateToolbar();
}
