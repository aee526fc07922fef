// libsecret (GLib) before any Qt header: GLib uses "signals" as an identifier.
#include <libsecret/secret.h>

#include "sync/AGKeychain.h"
#include "sync/SyncLog.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace {

constexpr auto AccountAttribute = "account";
constexpr auto DescriptionAttribute = "description";
constexpr auto LabelAttribute = "label";
constexpr auto SecretContentType = "text/plain";

const SecretSchema *genericPasswordSchema()
{
    static const SecretSchema schema = {"com.brevandt.Quillory.GenericPassword",
                                        SECRET_SCHEMA_NONE,
                                        {
                                            {AccountAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {DescriptionAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {LabelAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {nullptr, SecretSchemaAttributeType(0)},
                                        },
                                        0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &schema;
}

// The three attributes as a table libsecret takes; the strings live as long as the table.
struct Attributes {
    QByteArray account, description, label;
    GHashTable *table = nullptr;

    Attributes(const QString &itemName, const QString &itemKind, const QString &username)
        : account(username.toUtf8()), description(itemName.toUtf8()), label(itemKind.toUtf8())
    {
        table = g_hash_table_new(g_str_hash, g_str_equal);
        g_hash_table_insert(table, gpointer(AccountAttribute), account.data());
        g_hash_table_insert(table, gpointer(DescriptionAttribute), description.data());
        g_hash_table_insert(table, gpointer(LabelAttribute), label.data());
    }
    ~Attributes() { g_hash_table_unref(table); }
    Attributes(const Attributes &) = delete;
    Attributes &operator=(const Attributes &) = delete;
};

void logError(const char *what, GError *error)
{
    qCWarning(lcSync) << what << (error ? error->message : "unknown error");
    if (error)
        g_error_free(error);
}

// When the service cannot be reached (no session bus, no keyring running), every search fails the
// same way and each try costs a bus connection attempt and a warning. After a failure the same bus
// is left alone for a while: searches in that time find nothing, as the failed one did. Another
// bus address (a keyring started since) is tried at once.
class SearchBackoff
{
public:
    bool shouldSkip()
    {
        std::lock_guard lock(m_mutex);
        return m_failed && m_address == busAddress() && !m_retryAt.hasExpired();
    }
    void failed()
    {
        std::lock_guard lock(m_mutex);
        m_failed = true;
        m_address = busAddress();
        m_retryAt = QDeadlineTimer(RetryAfterMilliseconds);
    }
    void succeeded()
    {
        std::lock_guard lock(m_mutex);
        m_failed = false;
    }

private:
    static constexpr qint64 RetryAfterMilliseconds = 30000;
    static QByteArray busAddress() { return qgetenv("DBUS_SESSION_BUS_ADDRESS"); }

    std::mutex m_mutex;
    bool m_failed = false;
    QByteArray m_address;
    QDeadlineTimer m_retryAt;
};

SearchBackoff &searchBackoff()
{
    static SearchBackoff backoff;
    return backoff;
}

// The matching items, oldest first. The caller owns the references.
QList<SecretItem *> search(const QString &itemName, const QString &itemKind, const QString &username,
                           bool loadSecrets)
{
    if (searchBackoff().shouldSkip())
        return {};
    Attributes attributes(itemName, itemKind, username);
    GError *error = nullptr;
    const int flags = SECRET_SEARCH_ALL | SECRET_SEARCH_UNLOCK | (loadSecrets ? SECRET_SEARCH_LOAD_SECRETS : 0);
    GList *found = secret_service_search_sync(nullptr, genericPasswordSchema(), attributes.table,
                                              SecretSearchFlags(flags), nullptr, &error);
    if (error) {
        searchBackoff().failed();
        logError("keychain search failed:", error);
        g_list_free_full(found, g_object_unref);
        return {};
    }
    searchBackoff().succeeded();
    QList<SecretItem *> items;
    for (GList *node = found; node; node = node->next)
        items.append(SECRET_ITEM(node->data));
    g_list_free(found);
    std::stable_sort(items.begin(), items.end(), [](SecretItem *a, SecretItem *b) {
        const guint64 createdA = secret_item_get_created(a), createdB = secret_item_get_created(b);
        if (createdA != createdB)
            return createdA < createdB;
        // Same second: the service numbers its items in order of creation.
        const size_t lengthA = std::strlen(g_dbus_proxy_get_object_path(G_DBUS_PROXY(a)));
        const size_t lengthB = std::strlen(g_dbus_proxy_get_object_path(G_DBUS_PROXY(b)));
        if (lengthA != lengthB)
            return lengthA < lengthB;
        return std::strcmp(g_dbus_proxy_get_object_path(G_DBUS_PROXY(a)),
                           g_dbus_proxy_get_object_path(G_DBUS_PROXY(b)))
            < 0;
    });
    return items;
}

void release(const QList<SecretItem *> &items)
{
    for (SecretItem *item : items)
        g_object_unref(item);
}

SecretValue *newSecret(const QString &password)
{
    const QByteArray bytes = password.toUtf8();
    return secret_value_new(bytes.constData(), bytes.size(), SecretContentType);
}

// A UTF-8 sequence cut short by the byte limit would decode to a replacement character.
void dropIncompleteCharacterAtEnd(QByteArray &bytes)
{
    int lead = bytes.size() - 1;
    while (lead >= 0 && bytes.size() - lead <= 4 && (uchar(bytes[lead]) & 0xC0) == 0x80)
        --lead;
    if (lead < 0)
        return;
    const uchar first = uchar(bytes[lead]);
    const int expected = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
    if (bytes.size() - lead < expected)
        bytes.truncate(lead);
}

// Reads an item's secret the way the program's fixed buffer did: at most 1023 bytes, up to the
// first zero byte. A cut inside a multi-byte character drops that character's remains.
QString passwordOfItem(SecretItem *item)
{
    SecretValue *value = secret_item_get_secret(item);
    if (!value) {
        GError *error = nullptr;
        if (!secret_item_load_secret_sync(item, nullptr, &error)) {
            std::printf("Error = %d\n", error ? error->code : -1);
            std::fflush(stdout);
            logError("keychain read failed:", error);
            return AGKeychain::ErrorText;
        }
        value = secret_item_get_secret(item);
    }
    if (!value)
        return AGKeychain::ErrorText;
    gsize length = 0;
    const gchar *data = secret_value_get(value, &length);
    QByteArray bytes(data, int(std::min<gsize>(length, AGKeychain::MaximumPasswordBytes)));
    secret_value_unref(value);
    if (const int zero = bytes.indexOf('\0'); zero >= 0)
        bytes.truncate(zero);
    dropIncompleteCharacterAtEnd(bytes);
    return QString::fromUtf8(bytes);
}

QByteArray displayLabel(const QString &itemName, const QString &itemKind, const QString &username)
{
    return (itemKind + QStringLiteral(" ") + itemName + QStringLiteral(" (") + username + QStringLiteral(")"))
        .toUtf8();
}

} // namespace

int AGKeychain::checkForExistanceOfKeychainItem(const QString &itemName, const QString &itemKind,
                                                const QString &username)
{
    const auto items = search(itemName, itemKind, username, false);
    release(items);
    return int(items.size());
}

QString AGKeychain::getPasswordFromKeychainItem(const QString &itemName, const QString &itemKind,
                                                const QString &username)
{
    const auto items = search(itemName, itemKind, username, true);
    const QString password = items.isEmpty() ? ErrorText : passwordOfItem(items.first());
    release(items);
    return password;
}

bool AGKeychain::addKeychainItem(const QString &itemName, const QString &itemKind, const QString &username,
                                 const QString &password)
{
    Attributes attributes(itemName, itemKind, username);
    const QByteArray label = displayLabel(itemName, itemKind, username);
    SecretValue *value = newSecret(password);
    GError *error = nullptr;
    SecretService *service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &error);
    if (!service) {
        secret_value_unref(value);
        logError("no keychain service:", error);
        return false;
    }
    SecretCollection *collection = secret_collection_for_alias_sync(service, SECRET_COLLECTION_DEFAULT,
                                                                    SECRET_COLLECTION_NONE, nullptr, &error);
    g_object_unref(service);
    bool added = false;
    if (collection) {
        SecretItem *item = secret_item_create_sync(collection, genericPasswordSchema(), attributes.table,
                                                   label.constData(), value, SECRET_ITEM_CREATE_NONE, nullptr,
                                                   &error);
        added = item != nullptr;
        if (item)
            g_object_unref(item);
        g_object_unref(collection);
    } else {
        // No default collection yet: storing through the service makes one.
        if (error)
            g_clear_error(&error);
        const QByteArray bytes = password.toUtf8();
        added = secret_password_storev_sync(genericPasswordSchema(), attributes.table, SECRET_COLLECTION_DEFAULT,
                                            label.constData(), bytes.constData(), nullptr, &error);
    }
    secret_value_unref(value);
    if (!added)
        logError("keychain add failed:", error);
    return added;
}

bool AGKeychain::modifyKeychainItem(const QString &itemName, const QString &itemKind, const QString &username,
                                    const QString &newPassword)
{
    const auto items = search(itemName, itemKind, username, false);
    if (items.isEmpty())
        return false;
    SecretItem *item = items.first();
    SecretValue *value = newSecret(newPassword);
    GError *error = nullptr;
    bool modified = secret_item_set_secret_sync(item, value, nullptr, &error);
    secret_value_unref(value);
    if (modified) {
        Attributes attributes(itemName, itemKind, username);
        modified = secret_item_set_attributes_sync(item, genericPasswordSchema(), attributes.table, nullptr, &error);
    }
    if (!modified)
        logError("keychain modify failed:", error);
    release(items);
    return modified;
}

bool AGKeychain::deleteKeychainItem(const QString &itemName, const QString &itemKind, const QString &username)
{
    const auto items = search(itemName, itemKind, username, false);
    if (items.isEmpty())
        return true;
    GError *error = nullptr;
    const bool deleted = secret_item_delete_sync(items.last(), nullptr, &error);
    if (!deleted)
        logError("keychain delete failed:", error);
    release(items);
    return deleted;
}
