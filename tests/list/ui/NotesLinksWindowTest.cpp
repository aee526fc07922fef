#include "list/ui/MainWindowTestSupport.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextLayout>

using namespace ListTest;
using namespace WindowTest;

namespace {

QString storedNotes(const QString &name)
{
    for (const QVariant &value : readStore())
        if (value.toMap().value("Name").toString() == name)
            return value.toMap().value("Notes").toString();
    return QStringLiteral("<no record>");
}

QStringList linkTargets(QPlainTextEdit *field)
{
    QStringList targets;
    for (QTextBlock block = field->document()->begin(); block.isValid(); block = block.next())
        for (const QTextLayout::FormatRange &range : block.layout()->formats())
            if (range.format.isAnchor())
                targets.append(range.format.anchorHref());
    return targets;
}

} // namespace

TEST(NotesLinksWindow, TheStoredNotesAreTheTypedTextWhateverIsDrawnAsALink)
{
    freshPreferences();
    writeStore({record("Essay", {{"Notes", "Sources: www.library.org"}}), record("Lab")});
    Window w;
    w.select("Essay");
    w.form()->tabs->setCurrentIndex(SidebarForm::NotesTab);
    QPlainTextEdit *notes = w.form()->notesField;
    EXPECT_EQ(linkTargets(notes), QStringList{"http://www.library.org"}) << "links are drawn when the record is shown";

    // Typing at the end, a line break included, then a filter button that takes no focus.
    notes->setFocus(Qt::MouseFocusReason);
    ASSERT_TRUE(notes->hasFocus());
    notes->moveCursor(QTextCursor::End);
    QTest::keyClicks(notes, QStringLiteral(", (see mailto:ann@example.org). WWW.x.y"));
    QTest::keyClick(notes, Qt::Key_Return);
    QTest::keyClicks(notes, QStringLiteral("nap:song  ftp.x.org/a b"));
    const QString typed = QStringLiteral("Sources: www.library.org, (see mailto:ann@example.org). WWW.x.y\n"
                                         "nap:song  ftp.x.org/a b");
    // The comma typed after the host leaves that word no address a click could open: no link.
    EXPECT_EQ(linkTargets(notes), (QStringList{"mailto:ann@example.org).", "nap:song", "ftp://ftp.x.org/a"}));
    w.clickFilter("Incomplete", 0);
    EXPECT_EQ(storedNotes("Essay"), typed);

    // More typing, then the keyboard leaves the field: saved, still as typed.
    w.select("Essay");
    w.form()->tabs->setCurrentIndex(SidebarForm::NotesTab);
    ASSERT_EQ(notes->toPlainText(), typed);
    notes->setFocus(Qt::MouseFocusReason);
    notes->moveCursor(QTextCursor::End);
    QTest::keyClicks(notes, QStringLiteral(" www.more.org."));
    w.form()->nameField->setFocus(Qt::TabFocusReason);
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNotes("Essay"), typed + QStringLiteral(" www.more.org."));
    EXPECT_EQ(storedNotes("Lab"), QString());
}
