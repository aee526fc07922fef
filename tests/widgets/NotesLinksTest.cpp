#include "platform/Workspace.h"
#include "widgets/BVTableView.h"
#include "widgets/LinkHighlighter.h"
#include "widgets/URLTextViewAdditions.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QUrl>
#include <gtest/gtest.h>

using URLTextViewAdditions::detectURLs;
using URLTextViewAdditions::linkTarget;

namespace {

struct Rule {
    const char *word;
    const char *target; // empty: no link
};

// Each address rule, in the order they are tried, with the edges of each.
const Rule Rules[] = {
    // 1: "://" anywhere, the word itself.
    {"http://example.com/a?b=c#d", "http://example.com/a?b=c#d"},
    {"Site:http://example.com", "Site:http://example.com"},
    {"https://example.com/x.", "https://example.com/x."},
    {"://example.com", ""},                          // no scheme before it
    {"www.example.com/?next=http://x.org", ""},      // the first rule decides, and its URL is no URL
    // 2-4: the prefixes, case-sensitive, at the very start; "http://", "ftp://", "gopher://" put before.
    {"www.example.com", "http://www.example.com"},
    {"www.example.com.", "http://www.example.com."}, // a full stop that ends the sentence is kept
    // A host that ends in a comma or a bracket names no host: nothing could open it.
    {"www.example.com,", ""},
    {"www.example.com)", ""},
    {"https://example.org,", ""},
    {"https://example.org/page,", "https://example.org/page,"},
    {"mailto:ann@example.org,", "mailto:ann@example.org,"},
    {"WWW.example.com", ""},
    {"(www.example.com", ""},
    {"Site:www.example.com", ""},
    {"ftp.example.org/pub", "ftp://ftp.example.org/pub"},
    {"FTP.example.org", ""},
    {"gopher.example.org", "gopher://gopher.example.org"},
    // 5-6: the word itself.
    {"mailto:ann@example.org", "mailto:ann@example.org"},
    {"Mailto:ann@example.org", ""},
    {"nap:song", "nap:song"},
    {"NAP:song", ""},
    {"see:mailto:ann@example.org", ""},
    // No rule at all.
    {"example.com", ""},
    // A URL the parser refuses is skipped.
    {"www.exa%mple.com", ""},
    {"www.example.com/%4g", ""},
    {"www.example.com/<b>", ""},
    {"www.exa|mple.com", ""},
    {"http://example.com:80x/", ""},
    {"http://example.com/#a#b", ""},
    {"http://[::1]:8080/", "http://[::1]:8080/"},
    {"http://[::1/", ""},
    {"www.müller.de", "http://www.müller.de"},
};

TEST(AddressRules, EachRuleWithItsEdges)
{
    for (const Rule &rule : Rules)
        EXPECT_EQ(linkTarget(QString::fromUtf8(rule.word)), QString::fromUtf8(rule.target)) << rule.word;
}

// Whatever is drawn as a link is what a click hands to the desktop, so the address the link
// stands for must come through the desktop's URL type whole.
TEST(AddressRules, EveryLinkOpensTheAddressItStandsFor)
{
    for (const Rule &rule : Rules) {
        const QString target = linkTarget(QString::fromUtf8(rule.word));
        if (target.isEmpty())
            continue;
        const QUrl opened(target);
        EXPECT_TRUE(opened.isValid()) << rule.word;
        EXPECT_EQ(opened.toString().compare(target, Qt::CaseInsensitive), 0) << rule.word;
    }
}

TEST(AddressRules, TheWholeWordIsTheLinkAndOnlyFormatsComeBack)
{
    const QString text = QStringLiteral("Read www.a.org/x, then\tmailto:b@c.d\u2028WWW.x.y (gopher.e.f) nap:g.");
    const QColor colour(10, 20, 30);
    const QList<QTextLayout::FormatRange> links = detectURLs(text, colour);
    ASSERT_EQ(links.size(), 3);
    const QStringList words{QStringLiteral("www.a.org/x,"), QStringLiteral("mailto:b@c.d"), QStringLiteral("nap:g.")};
    const QStringList targets{QStringLiteral("http://www.a.org/x,"), QStringLiteral("mailto:b@c.d"),
                              QStringLiteral("nap:g.")};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(text.mid(links[i].start, links[i].length), words[i]);
        EXPECT_TRUE(links[i].format.isAnchor());
        EXPECT_EQ(links[i].format.anchorHref(), targets[i]);
        EXPECT_EQ(links[i].format.underlineStyle(), QTextCharFormat::SingleUnderline);
        EXPECT_EQ(links[i].format.foreground().color(), colour);
    }
    EXPECT_TRUE(detectURLs(QString(), colour).isEmpty());
    EXPECT_TRUE(detectURLs(QStringLiteral("  \n "), colour).isEmpty());
}

// The real field in a window of its own, shown and active, the caret not drawn so that pictures of
// it compare equal.
class NotesField : public testing::Test
{
protected:
    void SetUp() override
    {
        window.resize(320, 200);
        field = new BVTableView(&window);
        field->setGeometry(10, 10, 300, 180);
        field->setPlaceholderString(QStringLiteral("notes"));
        field->setCursorWidth(0);
        other = new QWidget(&window);
        other->setFocusPolicy(Qt::StrongFocus);
        other->setGeometry(0, 195, 5, 5);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    // The links as the field draws them: text, target and colour.
    struct Drawn {
        QString text;
        QString target;
        QColor colour;
    };
    QList<Drawn> drawnLinks() const
    {
        QList<Drawn> drawn;
        for (QTextBlock block = field->document()->begin(); block.isValid(); block = block.next())
            for (const QTextLayout::FormatRange &range : block.layout()->formats())
                if (range.format.isAnchor())
                    drawn.append({block.text().mid(range.start, range.length), range.format.anchorHref(),
                                  range.format.foreground().color()});
        return drawn;
    }

    // The middle of the characters [position, position + length) in viewport coordinates.
    QPoint pointOf(int position, int length) const
    {
        QTextCursor cursor(field->document());
        cursor.setPosition(position);
        const QRect first = field->cursorRect(cursor);
        cursor.setPosition(position + length);
        const QRect last = field->cursorRect(cursor);
        return QPoint((first.left() + last.left()) / 2, first.center().y());
    }

    void mouse(QEvent::Type type, const QPoint &point, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QWidget *viewport = field->viewport();
        QMouseEvent event(type, point, viewport->mapToGlobal(point), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(viewport, &event);
    }
    void press(const QPoint &point) { mouse(QEvent::MouseButtonPress, point, Qt::LeftButton, Qt::LeftButton); }
    void drag(const QPoint &point) { mouse(QEvent::MouseMove, point, Qt::NoButton, Qt::LeftButton); }
    void release(const QPoint &point) { mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton, Qt::NoButton); }

    QImage picture() const { return field->grab().toImage(); }

    // Whether the placeholder is drawn: the field's picture differs from the one without it.
    bool placeholderDrawn()
    {
        const QImage with = picture();
        field->setPlaceholderString(QString());
        const QImage without = picture();
        field->setPlaceholderString(QStringLiteral("notes"));
        return with != without;
    }

    QWidget window;
    BVTableView *field = nullptr;
    QWidget *other = nullptr;
};

TEST_F(NotesField, TypedAddressesBecomeLinksWhileTheTextStaysAsTyped)
{
    field->setFocus();
    const QString typed = QStringLiteral("Ask at www.example.com. or WWW.example.com\nthen ftp.x.org");
    QTest::keyClicks(field, typed.section('\n', 0, 0));
    QTest::keyClick(field, Qt::Key_Return);
    QTest::keyClicks(field, typed.section('\n', 1));
    EXPECT_EQ(field->toPlainText(), typed);
    const QList<Drawn> links = drawnLinks();
    ASSERT_EQ(links.size(), 2);
    EXPECT_EQ(links[0].text, "www.example.com.");
    EXPECT_EQ(links[0].target, "http://www.example.com.");
    EXPECT_EQ(links[0].colour, LinkHighlighter::linkColour());
    EXPECT_EQ(links[1].target, "ftp://ftp.x.org");
    EXPECT_EQ(field->textCursor().position(), typed.size());

    // Editing a link away and back: the drawing follows, the caret stays where the typing is.
    QTextCursor cursor = field->textCursor();
    cursor.setPosition(8); // after "Ask at w"
    field->setTextCursor(cursor);
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(drawnLinks().size(), 1);
    EXPECT_EQ(field->textCursor().position(), 7);
    QTest::keyClicks(field, QStringLiteral("w"));
    EXPECT_EQ(drawnLinks().size(), 2);
    EXPECT_EQ(field->textCursor().position(), 8);
    EXPECT_EQ(field->toPlainText(), typed);
    // Nothing but formatting was ever done: one undo step takes back the last keystroke only.
    field->undo();
    EXPECT_EQ(field->toPlainText(), QString(typed).remove(7, 1));
}

TEST_F(NotesField, ContentSetByCodeIsDetectedAtOnceAndTheViewKeepsItsPlace)
{
    QStringList lines;
    for (int i = 0; i < 200; ++i)
        lines.append(QStringLiteral("line %1 see www.site%1.org today").arg(i));
    field->setString(lines.join('\n'));
    // No event processed yet: the links are there.
    EXPECT_EQ(drawnLinks().size(), 200);
    EXPECT_EQ(drawnLinks().at(42).target, "http://www.site42.org");

    QScrollBar *bar = field->verticalScrollBar();
    bar->setValue(bar->maximum() / 2);
    const int scrolled = bar->value();
    ASSERT_GT(scrolled, 0);
    const QTextCursor at = field->cursorForPosition(QPoint(40, 40));
    QTextCursor selection(field->document());
    selection.setPosition(at.block().position() + 5);
    selection.setPosition(at.block().position() + 10, QTextCursor::KeepAnchor);
    field->setTextCursor(selection);
    field->setFocus();
    // An edit elsewhere in the note, as a sync or another window would make it.
    QTextCursor(field->document()->lastBlock()).insertText(QStringLiteral("www.late.org "));
    EXPECT_EQ(bar->value(), scrolled);
    EXPECT_EQ(field->textCursor().selectionStart(), at.block().position() + 5);
    EXPECT_EQ(field->textCursor().selectionEnd(), at.block().position() + 10);
    EXPECT_EQ(drawnLinks().size(), 201);
}

TEST_F(NotesField, PressingALinkAndReleasingOnItOpensItOnce)
{
    field->setString(QStringLiteral("Plan: nap:song and www.example.com/x."));
    const int start = field->toPlainText().indexOf("www.");
    const QPoint onLink = pointOf(start, 18);
    press(onLink);
    EXPECT_EQ(drawnLinks().at(1).colour, BVTableView::pressedLinkColour());
    EXPECT_EQ(drawnLinks().at(0).colour, LinkHighlighter::linkColour());
    EXPECT_TRUE(Workspace::takeOpened().isEmpty()) << "nothing opens on the press";
    drag(onLink + QPoint(2, 0));
    EXPECT_EQ(drawnLinks().at(1).colour, BVTableView::pressedLinkColour());
    release(onLink + QPoint(2, 0));
    const QList<Workspace::Opened> opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened[0].url, QUrl(QStringLiteral("http://www.example.com/x.")));
    EXPECT_EQ(drawnLinks().at(1).colour, BVTableView::visitedLinkColour());
    EXPECT_EQ(BVTableView::visitedLinkColour(), QColor::fromRgbF(0.1f, 0.3f, 0.8f, 1.0f));
    // The click neither moved the caret nor selected.
    EXPECT_EQ(field->textCursor().position(), 0);
    EXPECT_FALSE(field->textCursor().hasSelection());

    // Another link pressed: each keeps its pressed-after colour.
    const QPoint onNap = pointOf(6, 8);
    press(onNap);
    release(onNap);
    ASSERT_EQ(Workspace::takeOpened().size(), 1);
    EXPECT_EQ(drawnLinks().at(0).colour, BVTableView::visitedLinkColour());
    EXPECT_EQ(drawnLinks().at(1).colour, BVTableView::visitedLinkColour());

    // The next change of text draws every link as new again.
    QTest::keyClicks(field, QStringLiteral("A "));
    for (const Drawn &link : drawnLinks())
        EXPECT_EQ(link.colour, LinkHighlighter::linkColour()) << link.text.toStdString();
}

TEST_F(NotesField, ALinkFollowedByACommaOpensTheAddressItDraws)
{
    field->setString(QStringLiteral("see https://example.org/page, then\nhttps://example.org, or so"));
    // The comma after a path is part of the word and of its address; after a host it leaves the
    // word no address at all, so it is not drawn as one.
    const QList<Drawn> links = drawnLinks();
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links[0].text, "https://example.org/page,");
    const QPoint onLink = pointOf(4, 10);
    press(onLink);
    release(onLink);
    const QList<Workspace::Opened> opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_TRUE(opened[0].url.isValid());
    EXPECT_EQ(opened[0].url.toString(), links[0].target);

    const QPoint onHost = pointOf(int(field->toPlainText().indexOf("https://example.org,")) + 3, 6);
    press(onHost);
    release(onHost);
    const QList<Workspace::Opened> none = Workspace::takeOpened();
    EXPECT_TRUE(none.isEmpty()) << none.value(0).url.toString().toStdString();
}

TEST_F(NotesField, DraggingOffALinkOpensNothing)
{
    field->setString(QStringLiteral("www.example.com and more words"));
    const QPoint onLink = pointOf(0, 15);
    const QPoint offLink = pointOf(20, 4);
    press(onLink);
    drag(offLink);
    EXPECT_EQ(drawnLinks().at(0).colour, BVTableView::visitedLinkColour());
    drag(onLink);
    EXPECT_EQ(drawnLinks().at(0).colour, BVTableView::pressedLinkColour());
    drag(offLink);
    release(offLink);
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());
    EXPECT_EQ(drawnLinks().at(0).colour, BVTableView::visitedLinkColour());
    EXPECT_FALSE(field->textCursor().hasSelection()) << "the drag selected nothing";

    // The text replaced underneath a held link (another record shown): the release opens nothing.
    press(onLink);
    field->setString(QStringLiteral("www.other.org and more words"));
    release(onLink);
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());

    // A click beside a link is a click in the text: past the end of its line, or in the margin
    // before it, where the nearest character is the link's first.
    field->setString(QStringLiteral("www.example.com\nsecond line that is longer"));
    const QPoint link = pointOf(0, 15);
    for (const QPoint &beside : {QPoint(link.x() + 120, link.y()), QPoint(1, link.y())}) {
        field->moveCursor(QTextCursor::End);
        press(beside);
        release(beside);
        EXPECT_TRUE(Workspace::takeOpened().isEmpty());
        EXPECT_EQ(field->textCursor().position(), beside.x() == 1 ? 0 : 15);
        EXPECT_EQ(drawnLinks().at(0).colour, LinkHighlighter::linkColour());
    }
}

TEST_F(NotesField, ThePlaceholderShowsOnlyWhileEmptyAndWithoutTheKeyboard)
{
    EXPECT_EQ(field->placeholderString(), "notes");
    other->setFocus();
    EXPECT_TRUE(placeholderDrawn());
    field->setFocus();
    ASSERT_TRUE(field->hasFocus());
    EXPECT_FALSE(placeholderDrawn());
    QTest::keyClicks(field, QStringLiteral("x"));
    other->setFocus();
    EXPECT_FALSE(placeholderDrawn());
    field->setString(QString());
    EXPECT_TRUE(placeholderDrawn());
    // Qt's own placeholder is not used: it would show while the field has the keyboard.
    EXPECT_TRUE(field->placeholderText().isEmpty());
}

} // namespace
