// GLib before Qt: its headers use the word "signals".
#include <libebook/libebook.h>

#include "contacts/EdsAddressBook.h"

#include "contacts/EContactPerson.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcVCardFolder)

namespace {
// A book that is still reaching its server (or cannot, offline) answers from its cache after this
// wait rather than keeping the field waiting. (No wait at all, 0, means waiting without end.)
constexpr guint32 ConnectSeconds = 1;

QString takeMessage(GError *error)
{
    const QString message = error ? QString::fromUtf8(error->message) : QString();
    g_clear_error(&error);
    return message;
}
} // namespace

struct EdsAddressBook::Clients {
    QList<EBookClient *> books;
    QStringList names;
    ~Clients()
    {
        for (EBookClient *book : std::as_const(books))
            g_object_unref(book);
    }
};

EdsAddressBook::EdsAddressBook(std::unique_ptr<Clients> clients)
    : m_clients(std::move(clients))
{
}

EdsAddressBook::~EdsAddressBook() = default;

std::unique_ptr<EdsAddressBook> EdsAddressBook::connect()
{
    // Without a session bus GLib would try to start one through X11; there is no service to find.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return nullptr;
    GError *error = nullptr;
    ESourceRegistry *registry = e_source_registry_new_sync(nullptr, &error);
    if (!registry) {
        qCInfo(lcVCardFolder) << "No address-book service:" << takeMessage(error);
        return nullptr;
    }
    auto clients = std::make_unique<Clients>();
    GList *sources = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_ADDRESS_BOOK);
    for (GList *item = sources; item; item = item->next) {
        auto *source = static_cast<ESource *>(item->data);
        EClient *client = e_book_client_connect_sync(source, ConnectSeconds, nullptr, &error);
        if (!client) {
            qCInfo(lcVCardFolder) << "Address book" << e_source_get_display_name(source)
                                  << "did not connect:" << takeMessage(error);
            continue;
        }
        clients->books.append(E_BOOK_CLIENT(client));
        clients->names.append(QString::fromUtf8(e_source_get_display_name(source)));
    }
    g_list_free_full(sources, g_object_unref);
    g_object_unref(registry);
    if (clients->books.isEmpty())
        return nullptr;
    return std::unique_ptr<EdsAddressBook>(new EdsAddressBook(std::move(clients)));
}

QString EdsAddressBook::description() const
{
    return QStringLiteral("the address books of Evolution Data Server (%1)").arg(m_clients->names.join(QStringLiteral(", ")));
}

QList<Person> EdsAddressBook::personsMatching(const QString &firstNamePrefix, const std::optional<QString> &lastNameSuffix)
{
    // The service's own comparisons ignore case, as the search asks.
    const QByteArray prefix = firstNamePrefix.toUtf8();
    EBookQuery *query = e_book_query_field_test(E_CONTACT_GIVEN_NAME, E_BOOK_QUERY_BEGINS_WITH, prefix.constData());
    if (lastNameSuffix) {
        const QByteArray suffix = lastNameSuffix->toUtf8();
        EBookQuery *last = e_book_query_field_test(E_CONTACT_FAMILY_NAME, E_BOOK_QUERY_ENDS_WITH, suffix.constData());
        query = e_book_query_andv(query, last, nullptr);
    }
    gchar *sexp = e_book_query_to_string(query);
    e_book_query_unref(query);

    QList<Person> persons;
    for (EBookClient *book : std::as_const(m_clients->books)) {
        GSList *contacts = nullptr;
        GError *error = nullptr;
        if (!e_book_client_get_contacts_sync(book, sexp, &contacts, nullptr, &error)) {
            qCWarning(lcVCardFolder) << "Address-book search failed:" << takeMessage(error);
            continue;
        }
        for (GSList *item = contacts; item; item = item->next)
            persons.append(personFromEContact(E_CONTACT(item->data)));
        g_slist_free_full(contacts, g_object_unref);
    }
    g_free(sexp);
    // An empty prefix tests nothing in the service; the search still means "begins with".
    if (lastNameSuffix)
        persons.removeIf([&](const Person &p) { return !p.lastName.endsWith(*lastNameSuffix, Qt::CaseInsensitive); });
    persons.removeIf([&](const Person &p) { return !p.firstName.startsWith(firstNamePrefix, Qt::CaseInsensitive); });
    return persons;
}
