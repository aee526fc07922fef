// GLib before Qt: its headers use the word "signals".
#include <libebook/libebook.h>

#include "ContactsTestSupport.h"

#include "contacts/EdsAddressBook.h"

#include <QProcess>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <signal.h>

namespace {

// A session bus of the test's own, on which the address-book service starts on demand as it does
// in a desktop session; its data lives in the test's home.
class SessionBus
{
public:
    SessionBus()
    {
        const QString home = TestEnvironment::home();
        for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
            const QString folder = home + "/xdg-" + QString::fromLatin1(name);
            QDir().mkpath(folder);
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            qputenv(name, QFile::encodeName(folder));
        }
        m_daemon.setProgram(QStringLiteral("dbus-daemon"));
        m_daemon.setArguments({"--session", "--nofork", "--print-address=1"});
        m_daemon.start();
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        if (m_address.isEmpty())
            return;
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
        // GLib ends the whole process when its session bus goes away; this bus goes with the test.
        if (GDBusConnection *connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)) {
            g_dbus_connection_set_exit_on_close(connection, FALSE);
            g_object_unref(connection);
        }
    }
    ~SessionBus()
    {
        if (GDBusConnection *connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)) {
            g_dbus_connection_set_exit_on_close(connection, FALSE);
            g_dbus_connection_close_sync(connection, nullptr, nullptr);
            g_object_unref(connection);
        }
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        // The services the bus started leave with it.
        if (m_daemon.processId() > 0)
            ::kill(pid_t(m_daemon.processId()), SIGTERM);
        m_daemon.waitForFinished(5000);
    }
    bool isUp() const { return !m_address.isEmpty(); }

private:
    QProcess m_daemon;
    QString m_address;
};

bool addToSystemBook(const QByteArray &vcard, QString *error)
{
    GError *failure = nullptr;
    ESourceRegistry *registry = e_source_registry_new_sync(nullptr, &failure);
    if (!registry) {
        *error = QString::fromUtf8(failure->message);
        g_clear_error(&failure);
        return false;
    }
    ESource *source = e_source_registry_ref_builtin_address_book(registry);
    EClient *client = e_book_client_connect_sync(source, 1, nullptr, &failure);
    bool added = false;
    if (client) {
        EContact *contact = e_contact_new_from_vcard(vcard.constData());
        added = e_book_client_add_contact_sync(E_BOOK_CLIENT(client), contact, E_BOOK_OPERATION_FLAG_NONE, nullptr,
                                               nullptr, &failure);
        g_object_unref(contact);
        g_object_unref(client);
    }
    if (failure) {
        *error = QString::fromUtf8(failure->message);
        g_clear_error(&failure);
    }
    g_object_unref(source);
    g_object_unref(registry);
    return added;
}

} // namespace

TEST(EdsAddressBook, FindsThePersonsOfTheDesktopsAddressBookByFirstNamePrefixAndLastNameSuffix)
{
    if (QStandardPaths::findExecutable("dbus-daemon").isEmpty()
        || !QFile::exists("/usr/share/dbus-1/services/org.gnome.evolution.dataserver.Sources5.service"))
        GTEST_SKIP() << "Evolution Data Server is not installed (package evolution-data-server)";
    SessionBus bus;
    ASSERT_TRUE(bus.isUp());
    for (const char *file : {"ann-lee.vcf", "ann.vcf", "anne-lee.vcf", "zoe.vcf"}) {
        QString error;
        ASSERT_TRUE(addToSystemBook(TestEnvironment::readFile(ContactsTest::bookFolder() + "/" + file), &error))
            << file << ": " << error.toStdString();
    }

    std::unique_ptr<EdsAddressBook> book = EdsAddressBook::connect();
    ASSERT_NE(book, nullptr);
    EXPECT_TRUE(book->description().contains("Evolution Data Server"));
    QStringList uids;
    for (const Person &person : book->personsMatching("ann"))
        uids.append(person.uid);
    uids.sort();
    EXPECT_EQ(uids, (QStringList{"ann-lee-1", "anne-lee-1", "urn:uuid:6a3c1f2e-0b1d-4c55-9f1e-ann-solo"}));
    const QList<Person> zoe = book->personsMatching("ZO", QString("STED"));
    ASSERT_EQ(zoe.size(), 1);
    EXPECT_EQ(zoe[0].firstName, "Zoë");
    EXPECT_EQ(zoe[0].lastName, "Ørsted");
    EXPECT_EQ(zoe[0].emails, (QStringList{"zoe@lab.example", "zoe.orsted@mail.example", "z@ørsted.example"}));
    EXPECT_EQ(book->personsMatching("Ann", QString("Lee")).size(), 2);
    EXPECT_TRUE(book->personsMatching("Lee").isEmpty());
}
