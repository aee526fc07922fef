#include "exchange/TextExport.h"
#include "platform/Alerts.h"
#include "platform/FilePanels.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "store/PreferenceKeys.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace {

AssignmentList sample()
{
    return {
        Assignments::make({{"Completed", false}}),
        Assignments::make({{"Name", "Lab & report"},
                           {"Completed", true},
                           {"Date", "2026-12-01 23:59:00 -0500"},
                           {"Course", "Math & Science"},
                           {"Textbook", "Physics"},
                           {"Type", "Lab"},
                           {"Grade", "A"},
                           {"Notes", "bring goggles\n& gloves"}}),
    };
}

} // namespace

TEST(TextExport, TheTextFileIsWrittenExactlyWithTheUsersLabelsAndDateFormat)
{
    UserDefaults().set(PreferenceKeys::Labels, QVariantMap{{"Course", "Class"}, {"Grade", "Mark"}});
    EXPECT_EQ(TextExport::textForAssignments(sample()),
              "Quillory 1.0\n\n"
              "Untitled  --  Incomplete\n"
              "Class: None\n"
              "Textbook: None\n"
              "\n"
              "Lab & report  --  Complete\n"
              "Due Date: Tuesday, December  1, 2026\n"
              "Class: Math & Science\n"
              "Textbook: Physics\n"
              "Type: Lab\n"
              "Mark: A\n"
              "Notes: bring goggles\n& gloves\n"
              "\n");
    EXPECT_EQ(TextExport::textForAssignments({}), "Quillory 1.0\n\n");

    UserDefaults().set(PreferenceKeys::General, QVariantMap{{"Date Format", "%m/%d/%y"}});
    EXPECT_TRUE(TextExport::textForAssignments(sample()).contains("Due Date: 12/01/26\n"));
}

TEST(TextExport, TheEmailBodyUsesFixedWordsAndEscapedAmpersands)
{
    UserDefaults().set(PreferenceKeys::Labels, QVariantMap{{"Course", "Class"}});
    EXPECT_EQ(TextExport::emailBody(sample()),
              "Quillory 1.0 Homework\n\n"
              "  --  Incomplete\n"
              "Course: None\n"
              "Textbook: None\n"
              "\n"
              "Lab &amp; report  --  Complete\n"
              "Due Date: Tuesday, December  1, 2026\n"
              "Course: Math &amp; Science\n"
              "Textbook: Physics\n"
              "Grade: A\n"
              "Notes: bring goggles\n&amp; gloves\n"
              "\n");
    EXPECT_EQ(TextExport::stringByReplacingAmpersands("a&b&&c"), "a&amp;b&amp;&amp;c");
}

TEST(TextExport, TheEmailLinkCarriesTheExactBodyWithNothingThatWouldCutItShort)
{
    const QString prefix = "mailto:?subject=Homework%20Assignment&body=";
    const QString link = TextExport::emailLinkText(sample());
    ASSERT_TRUE(link.startsWith(prefix)) << link.toStdString();
    // Two entries: the blank line between them is two escaped line feeds in a row.
    EXPECT_TRUE(link.contains("Textbook:%20None%0A%0ALab%20%26%20report"));
    // One "&" only: the separator before "body=".
    EXPECT_EQ(link.count('&'), 1);
    EXPECT_FALSE(link.contains(' '));
    EXPECT_FALSE(link.contains('\n'));
    // The mail program shows the body with plain ampersands.
    EXPECT_EQ(QUrl::fromPercentEncoding(link.mid(prefix.size()).toUtf8()),
              TextExport::emailBody(sample()).replace("&amp;", "&"));

    const AssignmentList list = {Assignments::make(
        {{"Name", QStringLiteral("50% #1 \"Übung\" &amp;")}, {"Notes", "a=b?c:d/e;f+g"}})};
    const QString odd = TextExport::emailLinkText(list);
    EXPECT_TRUE(odd.contains("50%25%20%231%20%22%C3%9Cbung%22%20%26amp;")) << odd.toStdString();
    EXPECT_TRUE(odd.contains("a=b?c:d/e;f+g"));
    const QString body = QUrl::fromPercentEncoding(odd.mid(prefix.size()).toUtf8());
    EXPECT_TRUE(body.contains(QStringLiteral("50% #1 \"Übung\" &amp;  --  Incomplete\n")));

    // The link reaches the mail program exactly as built, and no selection still opens a message.
    TextExport::emailAssignment(list);
    TextExport::emailAssignment({});
    const auto opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 2);
    EXPECT_EQ(QString::fromLatin1(opened.at(0).url.toEncoded()), odd);
    EXPECT_EQ(opened.at(0).url.scheme(), "mailto");
    EXPECT_EQ(QString::fromLatin1(opened.at(1).url.toEncoded()),
              "mailto:?subject=Homework%20Assignment&body=Quillory%201.0%20Homework%0A%0A");
}

TEST(TextExport, SavePanelWritesAndOpensTheFileCancelsCleanlyAndToldOfAFailedWrite)
{
    QStringList steps;
    auto show = [&] { steps << "show"; };
    auto hide = [&] { steps << "hide"; };

    FilePanels::queueAnswer(QString());
    EXPECT_FALSE(TextExport::exportAssignmentsToText(sample(), show, hide));
    EXPECT_TRUE(steps.isEmpty());
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());

    const QString chosen = TestEnvironment::home() + "/Quillory";
    FilePanels::queueAnswer(chosen);
    EXPECT_TRUE(TextExport::exportAssignmentsToText(sample(), show, hide));
    EXPECT_EQ(steps, (QStringList{"show", "hide"}));
    EXPECT_EQ(QString::fromUtf8(TestEnvironment::readFile(chosen + ".txt")), TextExport::textForAssignments(sample()));
    const auto opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.at(0).url, QUrl::fromLocalFile(chosen + ".txt"));
    EXPECT_TRUE(opened.at(0).application.isEmpty());

    // A write that fails is told, and opens nothing.
    FilePanels::queueAnswer(TestEnvironment::home() + "/no such folder/list.txt");
    EXPECT_FALSE(TextExport::exportAssignmentsToText(sample()));
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());
    EXPECT_EQ(Alerts::takeAsked().size(), 1);
}
