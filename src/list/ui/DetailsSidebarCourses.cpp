#include "list/ui/DetailsSidebar.h"

#include "list/CoursesFile.h"
#include "list/ui/SidebarForm.h"
#include "store/CoursesDocument.h"
#include "store/CoursesStore.h"
#include "widgets/ReadableColors.h"

#include <QComboBox>
#include <QEvent>
#include <QListWidget>

#include <utility>

// The sidebar's courses box and the pull-downs that list courses, textbooks and types, which follow
// the shared courses document.

namespace {
const QString TextbookIndent = QStringLiteral("    ");
const QColor CoursesBackground = QColor::fromRgbF(0.858f, 0.898f, 0.941f, 1.0f);
} // namespace

void DetailsSidebar::fillCoursesBox()
{
    m_coursesList->clear();
    m_courses->refresh();
    for (const QVariant &value : m_courses->combined()) {
        const QVariantMap record = value.toMap();
        const bool course = record.value(CourseKeys::Type).toString() == CourseKeys::CourseType;
        auto *item = new QListWidgetItem((course ? QString() : TextbookIndent) + record.value(CourseKeys::Name).toString());
        if (course) {
            QFont font = item->font();
            font.setBold(true);
            item->setFont(font);
        }
        m_coursesList->addItem(item);
    }
}

void DetailsSidebar::coursesChanged()
{
    fillCoursesBox();
    SidebarForm *f = m_form;
    const QString course = f->courseField->currentText();
    const bool filling = std::exchange(m_filling, true);
    const CoursesStore courses;
    setChoices(f->courseField, CoursesFile::courseNames(courses.getCombined()), course);
    setChoices(f->textbookField, courses.textbooksOfCourse(course), f->textbookField->currentText());
    setChoices(f->typeField, courses.typesForCourse(course), f->typeField->currentText());
    m_filling = filling;
}

void DetailsSidebar::applyCoursesColours()
{
    // The pale blue of the course list is chosen for a light scheme; on a dark one the list sits a
    // little above the base in the same hue, and its text keeps the scheme's light colour.
    const QColor base = palette().color(QPalette::Active, QPalette::Base);
    QPalette coursesPalette = m_coursesList->palette();
    coursesPalette.setColor(QPalette::Base, ReadableColors::isDark(palette())
                                                ? ReadableColors::surface(CoursesBackground, base)
                                                : CoursesBackground);
    m_coursesList->setPalette(coursesPalette);
}

void DetailsSidebar::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        applyCoursesColours();
}
