#include "ContactsTestSupport.h"

#include "contacts/ContactFieldDelegate.h"
#include "contacts/ContactsProgram.h"
#include "contacts/VCardFolderBook.h"
#include "platform/Workspace.h"

#include <QAction>
#include <QDesktopServices>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <gtest/gtest.h>

using namespace ContactsTest;

namespace {

QStringList names(const QList<Person> &persons)
{
    QStringList result;
    for (const Person &p : persons)
        result.append(p.firstName + QLatin1Char('|') + p.lastName);
    return result;
}

QStringList titles(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *action : actions)
        result.append(action->isSeparator() ? QStringLiteral("---") : action->text());
    return result;
}

// Catches what the desktop would be asked to open, the way a registered handler does.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    explicit UrlCatcher(const QStringList &schemes)
        : m_schemes(schemes)
    {
        Workspace::stopRecordingForTest();
        for (const QString &scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~UrlCatcher() override
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
        Workspace::recordForTest();
    }
    QList<QUrl> urls;
public Q_SLOTS:
    void open(const QUrl &url) { urls.append(url); }

private:
    QStringList m_schemes;
};

struct Book {
    VCardFolderBook book{[] { return bookFolder(); }};
    ContactFieldDelegate delegate{book};
};

} // namespace

TEST(VCardFolderBook, ReadsVersion3And4CardsWithFoldedLinesSeveralAddressesAndNonAsciiNames)
{
    VCardFolderBook book([] { return bookFolder(); });
    const QList<Person> all = book.allPersons();
    // File-name order, card order within a file, subfolders included.
    EXPECT_EQ(names(all), (QStringList{"Ann|Lee", "Ann|", "Anne|Lee", "Ann|Lee", "Al|Bo", "Zoë|Ørsted"}));
    EXPECT_EQ(all[0].emails, (QStringList{"ann.lee@college.example", "ann@home.example"}));
    EXPECT_EQ(all[0].uid, "ann-lee-1");
    EXPECT_FALSE(all[1].hasLastName());
    EXPECT_EQ(all[5].emails, (QStringList{"zoe@lab.example", "zoe.orsted@mail.example", "z@ørsted.example"}));
    EXPECT_EQ(all[5].uid, "zoe-oersted");
}

TEST(VCardFolderBook, SeesACardWrittenOrChangedSinceTheLastSearchAndAnotherChosenFolder)
{
    const QString folder = useCopyOfBook();
    VCardFolderBook book(&ContactsSettings::folder);
    EXPECT_TRUE(book.personsMatching("Bea").isEmpty());
    TestEnvironment::writeFile(folder + "/bea.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Quist;Bea;;;\r\nFN:Bea Quist\r\nEND:VCARD\r\n");
    const QList<Person> found = book.personsMatching("bea");
    ASSERT_EQ(found.size(), 1);
    // A card without UID is known by its file's name.
    EXPECT_EQ(found[0].uid, "bea");
    QFile::remove(folder + "/zoe.vcf");
    EXPECT_TRUE(book.personsMatching("Zo").isEmpty());

    ContactsSettings::setFolder(TestEnvironment::home() + "/Empty");
    EXPECT_TRUE(book.allPersons().isEmpty());
    EXPECT_EQ(ContactsSettings::folder(), TestEnvironment::home() + "/Empty");
}

TEST(ContactFieldDelegate, ResolvesATypedNameToExactlyOnePersonOrToAnEmptyRecord)
{
    Book b;
    // One word: the first person of that first name without a last name.
    const QVariantMap ann = b.delegate.representedObjectForEditingString("Ann").toMap();
    EXPECT_EQ(ann.value("addressbookUID").toString(), "urn:uuid:6a3c1f2e-0b1d-4c55-9f1e-ann-solo");
    EXPECT_EQ(ann.value("lastName").toString(), "");
    EXPECT_EQ(ann.value("origin").toString(), "AddressBook");
    EXPECT_EQ(b.delegate.displayStringForRepresentedObject(ann), "Ann ");
    // Ann Lee twice and Anne Lee all match the prefix and suffix: nobody.
    EXPECT_EQ(b.delegate.representedObjectForEditingString("Ann Lee"), QVariant(QVariantMap()));
    // Ignoring case, beyond ASCII, and by prefix and suffix.
    EXPECT_EQ(b.delegate.representedObjectForEditingString("ZOË ØRSTED").toMap(), zoe());
    EXPECT_EQ(b.delegate.representedObjectForEditingString("zo sted").toMap(), zoe());
    EXPECT_EQ(b.delegate.representedObjectForEditingString("Al Bo").toMap().value("email"), QVariant(QVariantList{"al@bo.example"}));
    // Nobody of that name; a single word whose persons all have last names.
    EXPECT_EQ(b.delegate.representedObjectForEditingString("Nobody Here"), QVariant(QVariantMap()));
    EXPECT_FALSE(b.delegate.findPersonInAddressBook("Zoë").has_value());
    EXPECT_EQ(b.delegate.displayStringForRepresentedObject(QVariantMap()), "(null) (null)");
    EXPECT_EQ(b.delegate.displayStringForRepresentedObject(QString("Mr Grant")), "Mr Grant");
}

TEST(ContactFieldDelegate, CompletionListsANameFoundKTimesKMinusOneTimes)
{
    Book b;
    int selected = -7;
    // Ann Lee twice becomes once; Ann keeps the blank of its empty last name.
    EXPECT_EQ(b.delegate.completionsForSubstring("a", 0, &selected),
              (QStringList{"Al Bo", "Ann ", "Ann Lee", "Anne Lee"}));
    EXPECT_EQ(selected, -7);
    EXPECT_EQ(b.delegate.completionsForSubstring("ZO", 0, nullptr), QStringList{"Zoë Ørsted"});
    EXPECT_TRUE(b.delegate.completionsForSubstring("Lee", 0, nullptr).isEmpty());

    // Three of a name become two; a name found once stays once.
    const QString folder = TestEnvironment::home() + "/Triples";
    const QByteArray card = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Ann;;;\r\nEND:VCARD\r\n";
    for (const char *file : {"/1.vcf", "/2.vcf", "/3.vcf"})
        TestEnvironment::writeFile(folder + file, card);
    TestEnvironment::writeFile(folder + "/4.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:lee;ann;;;\r\nEND:VCARD\r\n");
    VCardFolderBook triples([folder] { return folder; });
    ContactFieldDelegate delegate(triples);
    EXPECT_EQ(delegate.completionsForSubstring("an", 0, nullptr), (QStringList{"ann lee", "Ann Lee", "Ann Lee"}));
}

// The titles of a person's menu are shown through the token field's own test; here, what the
// items do and the menus of records that are no address-book person.
TEST(ContactFieldDelegate, TheMenuItemsOpenMailAndTheSocialNetworksPagesThroughTheDesktop)
{
    Book b;
    UrlCatcher catcher({"mailto", "https"});
    QObject parent;
    QVariantMap person = zoe();
    person.insert("origin", "AddressBook, Facebook"); // both sources, as a lookup writes them
    person.insert("facebookUID", "4711");
    const QList<QAction *> items = b.delegate.menuForRepresentedObject(person, &parent);
    EXPECT_EQ(titles(items).mid(4), (QStringList{"---", "Open Facebook Profile", "Send Facebook Message"}));
    ASSERT_EQ(items.size(), 7);
    EXPECT_EQ(b.delegate.currentPersonDictionary(), person);
    for (const QAction *item : items)
        EXPECT_TRUE(item->shortcut().isEmpty());
    items[3]->trigger();
    items[5]->trigger();
    items[6]->trigger();
    ASSERT_EQ(catcher.urls.size(), 3);
    EXPECT_EQ(catcher.urls[0].scheme(), "mailto");
    EXPECT_EQ(catcher.urls[0].path(), "z@ørsted.example");
    EXPECT_EQ(catcher.urls[1].toString(), "https://www.facebook.com/profile.php?id=4711");
    EXPECT_EQ(catcher.urls[2].toString(), "https://www.facebook.com/inbox/?compose&id=4711");

    const QVariantMap social{{"firstName", "Kim"}, {"lastName", "Park"}, {"origin", "Facebook"}, {"facebookUID", "99"}};
    EXPECT_EQ(titles(b.delegate.menuForRepresentedObject(social, &parent)),
              (QStringList{"Open Facebook Profile", "Send Facebook Message"}));
    // An unresolved name's empty record has an empty menu; a plain text has none at all.
    EXPECT_TRUE(b.delegate.hasMenuForRepresentedObject(QVariantMap()));
    EXPECT_TRUE(b.delegate.menuForRepresentedObject(QVariantMap(), &parent).isEmpty());
    EXPECT_FALSE(b.delegate.hasMenuForRepresentedObject(QString("Mr Grant")));
    EXPECT_TRUE(b.delegate.menuForRepresentedObject(QString("Mr Grant"), &parent).isEmpty());
}

TEST(ContactFieldDelegate, OpenInAddressBookStartsTheContactsProgramOnThePersonOrIsDisabledWithoutOne)
{
    Book b;
    QObject parent;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nonexistent");
    QAction *open = b.delegate.menuForRepresentedObject(zoe(), &parent).first();
    EXPECT_FALSE(open->isEnabled());
    EXPECT_EQ(open->toolTip(), ContactsProgram::NotInstalledToolTip);

    // A contacts program on the path (a script that writes down its arguments) is started on the
    // person: by the first address, or by name for a person without one.
    const QString bin = TestEnvironment::home() + "/bin";
    const QString log = TestEnvironment::home() + "/arguments";
    TestEnvironment::writeFile(bin + "/gnome-contacts", QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" >> '%1'\n").arg(log).toUtf8());
    QFile::setPermissions(bin + "/gnome-contacts", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("PATH", QFile::encodeName(bin) + ":" + path);
    open = b.delegate.menuForRepresentedObject(zoe(), &parent).first();
    EXPECT_TRUE(open->isEnabled());
    open->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !TestEnvironment::readFile(log).isEmpty(); }, 5000));
    EXPECT_EQ(TestEnvironment::readFile(log), QByteArray("--email\nzoe@lab.example\n"));
    QFile::remove(log);
    b.delegate.menuForRepresentedObject(b.delegate.representedObjectForEditingString("Anne Lee"), &parent).first()->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !TestEnvironment::readFile(log).isEmpty(); }, 5000));
    EXPECT_EQ(TestEnvironment::readFile(log), QByteArray("--search\nAnne Lee\n"));
    qputenv("PATH", path);
}

#include "AddressBookTest.moc"
