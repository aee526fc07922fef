#pragma once

#include "contacts/Person.h"

#include <QList>
#include <QObject>
#include <QVariant>

#include <optional>

class AddressBook;
class QAction;

// What the contacts token field asks about its tokens: the record for a typed name, the text a
// token shows, the completions of a typed name, and the menu of a contact. The menu's actions open
// the person in the desktop's contacts program, write an e-mail, or open the social network's
// pages, each through the desktop's default handler.
class ContactFieldDelegate : public QObject
{
    Q_OBJECT
public:
    static inline const QString OpenInAddressBookTitle = QStringLiteral("Open In Address Book");
    static inline const QString SendEmailPrefix = QStringLiteral("Send Email To ");
    static inline const QString OpenFacebookProfileTitle = QStringLiteral("Open Facebook Profile");
    static inline const QString SendFacebookMessageTitle = QStringLiteral("Send Facebook Message");
    static inline const QString FacebookHost = QStringLiteral("https://www.facebook.com/");
    static inline const QString ProfilePath = QStringLiteral("profile.php?id=%1");
    static inline const QString MessagePath = QStringLiteral("inbox/?compose&id=%1");

    explicit ContactFieldDelegate(AddressBook &book, QObject *parent = nullptr);
    // The one delegate over the desktop's address book, which is looked for only when a name is
    // first searched: showing stored tokens never waits for the desktop's services.
    static ContactFieldDelegate *sharedController();

    // The contact record for a typed name; an empty record when the book does not resolve it to
    // exactly one person.
    QVariant representedObjectForEditingString(const QString &text);
    QString displayStringForRepresentedObject(const QVariant &token) const;
    // Every "first last" whose first name begins with the text, ignoring case; a name found k
    // times is listed k - 1 times (once when found once). The selected item is left unset.
    QStringList completionsForSubstring(const QString &substring, int tokenIndex, int *selectedIndex);
    bool hasMenuForRepresentedObject(const QVariant &token) const;
    // The contact's menu items, parented to `parent`; none for a plain text. The record becomes
    // the one the items act on.
    QList<QAction *> menuForRepresentedObject(const QVariant &token, QObject *parent);

    // The one person a text names: with several words the first name begins with the first word
    // and the last name ends with the last; a single word names the first person of that first name
    // who has no last name.
    std::optional<Person> findPersonInAddressBook(const QString &text);

    QVariantMap currentPersonDictionary() const { return m_currentPersonDictionary; }

    void openInAddressBook();
    // `title` is the item's title: "Send Email To " and the address.
    void sendEmail(const QString &title);
    void openFacebookProfile();
    void sendFacebookMessage();

private:
    ContactFieldDelegate() = default;
    AddressBook &book();

    AddressBook *m_book = nullptr;
    QVariantMap m_currentPersonDictionary;
};
