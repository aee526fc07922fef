#pragma once

#include "TestEnvironment.h"
#include "support/CourseRecords.h"

#include "exchange/Backup.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/CoursesStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/CoursesAndTextbooks.h"
#include "store/ui/CoursesListModel.h"
#include "store/ui/PreferencesWindow.h"
#include "store/ui/UniversalTypesPage.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include <memory>

// The courses window over the test's home folder, and what its tests read back from disk.
namespace CoursesWindowTesting {

using Page = CoursesAndTextbooks::Page;

using CourseRecords::course;
using CourseRecords::textbook;

inline QVariantMap assignment(const QString &name, const QString &courseName, const QString &textbookName = QString())
{
    QVariantMap record{{QStringLiteral("Name"), name}, {QStringLiteral("Course"), courseName}};
    if (!textbookName.isEmpty())
        record.insert(QStringLiteral("Textbook"), textbookName);
    return record;
}

inline QVariantList fileArray(const QString &path)
{
    const auto root = PropertyList::readFile(path);
    return root ? root->toList() : QVariantList{QStringLiteral("unreadable")};
}

using CourseRecords::displayNames;

class CoursesWindowTest : public CourseRecords::DataFolderTest
{
protected:
    void open()
    {
        m_window = std::make_unique<CoursesAndTextbooks>();
        m_window->show();
    }
    template<typename W>
    W *child(const QString &name)
    {
        W *widget = m_window->findChild<W *>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QAction *action(const QString &identifier) { return child<QAction>(identifier); }
    // A click on a toolbar button, which leaves the keyboard where it was.
    void clickToolbar(const QString &identifier)
    {
        auto *button = child<QWidget>(identifier + QStringLiteral("Button"));
        ASSERT_EQ(button->focusPolicy() & Qt::ClickFocus, 0) << identifier.toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // Types without ending the edit: no Return, no focus change.
    void typeWithoutEnding(const QString &field, const QString &text)
    {
        auto *edit = child<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    void activate(QWidget *window)
    {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    static void warningsOn(bool on)
    {
        QVariantMap general = UserDefaults().dictionary(PreferenceKeys::General);
        general.insert(PreferenceKeys::GeneralKeys::DisplayWarningMessages, on);
        UserDefaults().set(PreferenceKeys::General, general);
    }
    // Types and ends the edit with Return.
    void typeInto(const QString &field, const QString &text)
    {
        typeWithoutEnding(field, text);
        QTest::keyClick(child<QLineEdit>(field), Qt::Key_Return);
    }

    std::unique_ptr<CoursesAndTextbooks> m_window;
};

} // namespace CoursesWindowTesting
