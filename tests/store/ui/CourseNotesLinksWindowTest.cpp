#include "store/ui/CoursesWindowTestSupport.h"
#include "widgets/BVTableView.h"

#include <QTextBlock>
#include <QTextLayout>

using namespace CoursesWindowTesting;

// The course's and the textbook's notes draw addresses as links and keep the text as typed.
TEST_F(CoursesWindowTest, CourseAndTextbookNotesDrawLinksAndStoreTheTypedText)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math"))});
    open();
    activate(m_window.get());
    const QString typed = QStringLiteral("Office: www.math.example.edu/~lee. (Tue)");
    for (const auto &[name, field] : {std::pair{QStringLiteral("Math"), QStringLiteral("courseNotes")},
                                      std::pair{QStringLiteral("Calculus"), QStringLiteral("textbookNotes")}}) {
        m_window->selectCourseOrTextbook(name);
        auto *notes = qobject_cast<BVTableView *>(child<QPlainTextEdit>(field));
        ASSERT_NE(notes, nullptr) << field.toStdString();
        EXPECT_EQ(notes->placeholderString(), QStringLiteral("notes"));
        notes->setFocus();
        QTest::keyClicks(notes, typed);
        QStringList targets;
        for (const QTextLayout::FormatRange &range : notes->document()->firstBlock().layout()->formats())
            targets.append(range.format.anchorHref());
        EXPECT_EQ(targets, QStringList{QStringLiteral("http://www.math.example.edu/~lee.")});
        child<QListView>(QStringLiteral("coursesTable"))->setFocus();
    }
    m_window->close();
    const QVariantList stored = fileArray(Paths::coursesFile());
    ASSERT_EQ(stored.size(), 2);
    for (const QVariant &record : stored)
        EXPECT_EQ(record.toMap().value(CourseKeys::Notes).toString(), typed)
            << record.toMap().value(CourseKeys::Name).toString().toStdString();
}
