#include "ContactsTestSupport.h"

#include "contacts/ui/ContactTokenField.h"
#include "list/ui/MainWindowTestSupport.h"
#include "list/ui/ToolbarCatalogue.h"
#include "platform/Workspace.h"
#include "store/ui/CourseFormPage.h"
#include "store/ui/PersonalInfoPane.h"
#include "contacts/ui/AddressBookFolderChooser.h"
#include "contacts/ContactFieldDelegate.h"
#include "store/ui/CoursesWindowTestSupport.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

using namespace ContactsTest;

namespace {

QStringList buttonTexts(const ContactTokenField &field)
{
    QStringList texts;
    for (const QToolButton *button : field.tokenButtons())
        texts.append(button->accessibleName());
    return texts;
}

// The bytes of the "Contacts" array of the only record in a property-list file that has one.
QByteArray contactsBytes(const QString &path)
{
    const QByteArray file = TestEnvironment::readFile(path);
    const qsizetype key = file.indexOf("<key>Contacts</key>");
    if (key < 0)
        return {};
    const qsizetype start = file.indexOf("<array>", key);
    qsizetype at = start + 7;
    for (int depth = 1; depth > 0 && at < file.size();) {
        const qsizetype open = file.indexOf("<array>", at);
        const qsizetype close = file.indexOf("</array>", at);
        if (close < 0)
            return {};
        if (open >= 0 && open < close) {
            ++depth;
            at = open + 7;
        } else {
            --depth;
            at = close + 8;
        }
    }
    return file.mid(start, at - start);
}

// A stored contact as another program version or a social-network lookup may have left it: keys
// this field does not know, a number, a social-network identity.
QVariantList storedContacts()
{
    QVariantMap kim{{"firstName", "Kim"},       {"lastName", "Park"},   {"addressbookUID", "AB-77"},
                    {"email", QVariantList{"kim@park.example", "k@p.example"}}, {"origin", "AddressBook Facebook"},
                    {"facebookUID", "100042"}, {"nickname", "KP"}, {"rank", 2.5}};
    return {kim, QString("Mr Grant"), QVariantMap()};
}

// The popup menu a click on a token opens, read and acted on while it is open.
QStringList openMenuAndTrigger(QToolButton *button, int triggerIndex)
{
    QStringList titles;
    QTimer::singleShot(50, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (const QAction *action : menu->actions())
            titles.append(action->isSeparator() ? QStringLiteral("---") : action->text());
        QAction *chosen = menu->actions().value(triggerIndex);
        menu->close();
        if (chosen)
            chosen->trigger();
    });
    QTest::mouseClick(button, Qt::LeftButton);
    return titles;
}

class MailCatcher : public QObject
{
    Q_OBJECT
public:
    MailCatcher()
    {
        Workspace::stopRecordingForTest();
        QDesktopServices::setUrlHandler("mailto", this, "open");
    }
    ~MailCatcher() override
    {
        QDesktopServices::unsetUrlHandler("mailto");
        Workspace::recordForTest();
    }
    QList<QUrl> urls;
public Q_SLOTS:
    void open(const QUrl &url) { urls.append(url); }
};

} // namespace

TEST(ContactTokenField, ShowsRecordsByNameAndTextsAsTheyAreAndTurnsTypedNamesIntoTokens)
{
    useCopyOfBook();
    ContactTokenField field;
    field.setPlaceholderText("none");
    field.resize(400, 60);
    field.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
    EXPECT_EQ(field.lineEdit()->placeholderText(), "none");
    field.setTokens(storedContacts());
    EXPECT_EQ(buttonTexts(field), (QStringList{"Kim Park", "Mr Grant", "(null) (null)"}));
    EXPECT_EQ(field.tokens(), storedContacts());
    EXPECT_TRUE(field.lineEdit()->placeholderText().isEmpty());
    EXPECT_FALSE(field.isModified());
    QSignalSpy finished(&field, &ContactTokenField::editingFinished);

    // Completion: the list offers each name, and choosing one makes that person's record.
    field.lineEdit()->setFocus();
    QTest::keyClicks(field.lineEdit(), "zo");
    QAbstractItemView *popup = field.completer()->popup();
    ASSERT_TRUE(popup->isVisible());
    ASSERT_EQ(popup->model()->rowCount(), 1);
    EXPECT_EQ(popup->model()->index(0, 0).data().toString(), "Zoë Ørsted");
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(field.tokens().size(), 4);
    EXPECT_EQ(field.tokens().value(3).toMap(), zoe());
    EXPECT_EQ(finished.size(), 1);

    // A comma ends a name; an ambiguous or unknown name becomes an empty record.
    QTest::keyClicks(field.lineEdit(), "Ann, Ann Lee");
    QTest::keyClick(field.lineEdit(), Qt::Key_Return);
    const QVariantList tokens = field.tokens();
    ASSERT_EQ(tokens.size(), 6);
    EXPECT_EQ(tokens[4].toMap().value("addressbookUID").toString(), "urn:uuid:6a3c1f2e-0b1d-4c55-9f1e-ann-solo");
    EXPECT_EQ(tokens[5], QVariant(QVariantMap()));
    EXPECT_EQ(buttonTexts(field).mid(3), (QStringList{"Zoë Ørsted", "Ann", "(null) (null)"}));
    EXPECT_TRUE(field.isModified());

    // Backspace in the empty typing part removes the last token; Delete on a token removes it.
    QTest::keyClick(field.lineEdit(), Qt::Key_Backspace);
    EXPECT_EQ(field.tokens().size(), 5);
    field.tokenButtons()[1]->setFocus();
    QTest::keyClick(field.tokenButtons()[1], Qt::Key_Delete);
    EXPECT_EQ(buttonTexts(field), (QStringList{"Kim Park", "(null) (null)", "Zoë Ørsted", "Ann"}));
    EXPECT_EQ(field.tokens().value(0), storedContacts().value(0));
}

TEST(ContactTokenField, AContactsMenuListsItsItemsAndWritesMailThroughTheDesktop)
{
    useCopyOfBook();
    MailCatcher catcher;
    ContactTokenField field;
    field.resize(400, 60);
    field.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
    field.setTokens(storedContacts() + QVariantList{zoe()});
    ASSERT_EQ(field.tokenButtons().size(), 4);
    EXPECT_EQ(field.tokenButtons()[1]->menu(), nullptr);

    EXPECT_EQ(openMenuAndTrigger(field.tokenButtons()[3], 3),
              (QStringList{"Open In Address Book", "Send Email To zoe@lab.example", "Send Email To zoe.orsted@mail.example",
                           "Send Email To z@ørsted.example"}));
    ASSERT_EQ(catcher.urls.size(), 1);
    EXPECT_EQ(catcher.urls[0].toString(QUrl::FullyDecoded), "mailto:z@ørsted.example");

    EXPECT_EQ(openMenuAndTrigger(field.tokenButtons()[0], 2),
              (QStringList{"Open In Address Book", "Send Email To kim@park.example", "Send Email To k@p.example", "---",
                           "Open Facebook Profile", "Send Facebook Message"}));
    ASSERT_EQ(catcher.urls.size(), 2);
    EXPECT_EQ(catcher.urls[1].toString(), "mailto:k@p.example");
    EXPECT_TRUE(openMenuAndTrigger(field.tokenButtons()[2], -1).isEmpty());

    // A click on a token ends the typing, and still opens that token's menu.
    field.lineEdit()->setFocus();
    QTest::keyClicks(field.lineEdit(), "Al Bo");
    field.completer()->popup()->hide();
    QToolButton *zoeButton = field.tokenButtons()[3];
    EXPECT_EQ(openMenuAndTrigger(zoeButton, -1).value(0), "Open In Address Book");
    EXPECT_EQ(field.tokenButtons().value(3), zoeButton);
    EXPECT_EQ(field.tokens().value(4).toMap().value("addressbookUID").toString(), "al-bo");
    EXPECT_TRUE(field.lineEdit()->text().isEmpty());
}

TEST(ContactsInTheMainWindow, AnUnrelatedEditKeepsTheContactsAndTypingIsKeptWhenAToolbarButtonIsClicked)
{
    using namespace WindowTest;
    freshPreferences();
    useCopyOfBook();
    ListTest::writeStore({ListTest::record("Essay", {{"Contacts", storedContacts()}})});
    const QByteArray before = contactsBytes(Paths::assignmentsFile());
    ASSERT_TRUE(before.contains("<key>nickname</key>"));
    Window w;
    w.toolbar()->setItemIdentifiers({ToolbarCatalogue::AddItem});
    w.select("Essay");
    EXPECT_EQ(buttonTexts(*w.form()->contactsField), (QStringList{"Kim Park", "Mr Grant", "(null) (null)"}));

    w.form()->tabs->setCurrentIndex(SidebarForm::NotesTab);
    w.form()->notesField->setFocus();
    QTest::keyClicks(w.form()->notesField, "Bring the lab book");
    w.form()->tabs->setCurrentIndex(SidebarForm::DetailsTab);
    w.form()->nameField->setFocus();
    ASSERT_EQ(StoreFiles::storedNamed("Essay").value("Notes").toString(), "Bring the lab book");
    EXPECT_EQ(contactsBytes(Paths::assignmentsFile()), before);

    w.form()->nameField->selectAll();
    QTest::keyClicks(w.form()->nameField, "Lab report");
    QTest::keyClick(w.form()->nameField, Qt::Key_Return);
    ASSERT_FALSE(StoreFiles::storedNamed("Lab report").isEmpty());
    EXPECT_EQ(contactsBytes(Paths::assignmentsFile()), before);

    QLineEdit *typing = w.form()->contactsField->lineEdit();
    typing->setFocus(Qt::MouseFocusReason);
    QTest::keyClicks(typing, "Zo sted");
    w.form()->contactsField->completer()->popup()->hide();
    // The add button takes no focus: the field never hears that the typing ended.
    auto *add = qobject_cast<QToolButton *>(w.toolbar()->itemWidget(ToolbarCatalogue::AddItem));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add->focusPolicy() & Qt::ClickFocus, 0);
    QTest::mouseClick(add, Qt::LeftButton);
    EXPECT_EQ(StoreFiles::storedNamed("Lab report").value("Contacts").toList(), storedContacts() + QVariantList{zoe()});
}

class ContactsInTheCoursesWindow : public CoursesWindowTesting::CoursesWindowTest
{
};

TEST_F(ContactsInTheCoursesWindow, AnUnrelatedEditKeepsTheContactsAndTypingIsKeptWhenAToolbarButtonIsClicked)
{
    useCopyOfBook();
    QDir().mkpath(Paths::dataFolder());
    PropertyList::writeFile(Paths::coursesFile(), QVariantList{CourseRecords::course("Biology", {{"Contacts", storedContacts()}})});
    const QByteArray before = contactsBytes(Paths::coursesFile());
    ASSERT_FALSE(before.isEmpty());
    open();
    m_window->selectRow(0);
    auto *contacts = child<ContactTokenField>("addressBookField");
    EXPECT_EQ(buttonTexts(*contacts), (QStringList{"Kim Park", "Mr Grant", "(null) (null)"}));

    typeInto("courseField1", "Dr Salk");
    ASSERT_EQ(CoursesWindowTesting::fileArray(Paths::coursesFile()).value(0).toMap().value("Field1").toString(), "Dr Salk");
    EXPECT_EQ(contactsBytes(Paths::coursesFile()), before);

    contacts->lineEdit()->setFocus(Qt::MouseFocusReason);
    QTest::keyClicks(contacts->lineEdit(), "al bo");
    contacts->completer()->popup()->hide();
    clickToolbar("AddCourse");
    const QVariantList saved = CoursesWindowTesting::fileArray(Paths::coursesFile()).value(0).toMap().value("Contacts").toList();
    ASSERT_EQ(saved.size(), 4);
    EXPECT_EQ(saved.mid(0, 3), storedContacts());
    EXPECT_EQ(saved[3].toMap().value("addressbookUID").toString(), "al-bo");
}

TEST(AddressBookFolderChooser, TheFolderTypedInThePaneIsWhereTheFieldFindsPeople)
{
    withoutAddressBookService();
    PersonalInfoPane pane;
    pane.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&pane));
    auto *folder = pane.findChild<QLineEdit *>("addressBookFolder");
    ASSERT_NE(folder, nullptr);
    EXPECT_TRUE(folder->text().isEmpty());
    EXPECT_EQ(folder->placeholderText(), ContactsSettings::defaultFolder());
    ContactFieldDelegate *delegate = ContactFieldDelegate::sharedController();
    EXPECT_EQ(delegate->representedObjectForEditingString("Zo sted"), QVariant(QVariantMap()));

    folder->setFocus();
    QTest::keyClicks(folder, bookFolder());
    QTest::keyClick(folder, Qt::Key_Return);
    EXPECT_EQ(UserDefaults().groupValue("Preferences - Contacts", "Address Book Folder").toString(), bookFolder());
    EXPECT_TRUE(pane.findChild<QLabel *>("addressBookSource")->text().contains(bookFolder()));
    EXPECT_EQ(delegate->representedObjectForEditingString("Zo sted").toMap(), zoe());
    // Nothing of the specified groups changed.
    EXPECT_FALSE(UserDefaults().dictionary(PreferenceKeys::PersonalInfo).contains("Address Book Folder"));

    folder->selectAll();
    QTest::keyClick(folder, Qt::Key_Delete);
    QTest::keyClick(folder, Qt::Key_Return);
    // Emptied, it is the folder vdirsyncer and khard use.
    qunsetenv("XDG_DATA_HOME");
    EXPECT_EQ(ContactsSettings::folder(), TestEnvironment::home() + "/.local/share/contacts");
}

#include "ContactTokenFieldTest.moc"
