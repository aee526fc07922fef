#include "store/ui/CoursesFormCommit.h"

#include "store/CoursesStore.h"
#include "store/ui/CourseFormPage.h"
#include "store/ui/CoursesAndTextbooks.h"
#include "store/ui/TextbookFormPage.h"
#include "store/ui/UniversalTypesPage.h"

#include <QStackedWidget>

CoursesFormCommit::CoursesFormCommit(CoursesStore &store, QStackedWidget *pages, CourseFormPage *courseForm,
                                     TextbookFormPage *textbookForm, UniversalTypesPage *typesPage)
    : m_store(store)
    , m_pages(pages)
    , m_courseForm(courseForm)
    , m_textbookForm(textbookForm)
    , m_typesPage(typesPage)
{
}

void CoursesFormCommit::commit()
{
    using Page = CoursesAndTextbooks::Page;
    if (m_committing)
        return;
    m_committing = true;
    switch (Page(m_pages->currentIndex())) {
    case Page::Course:
        m_courseForm->commitPendingEdit();
        break;
    case Page::Textbook:
        m_textbookForm->commitPendingEdit();
        break;
    case Page::Types:
        m_typesPage->commitPendingEdit();
        break;
    case Page::Blank:
        break;
    }
    m_committing = false;
}

int CoursesFormCommit::rowAfterCommit(int row)
{
    const QVariantMap target = m_store.recordAt(row);
    const quint64 reads = m_store.readCount();
    const int formRow = m_row;
    commit();
    if (target.isEmpty())
        return -1;
    // The record being edited is wherever saving put it, under its new contents.
    if (row == formRow)
        return m_row;
    // Unchanged rows when nothing was saved or reread.
    if (m_row == formRow && m_store.readCount() == reads && m_store.recordAt(row) == target)
        return row;
    return m_store.findRecord(target, row);
}
