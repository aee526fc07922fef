#include "contacts/ContactFieldDelegate.h"

#include "contacts/AddressBook.h"
#include "contacts/ContactRecord.h"
#include "contacts/ContactsProgram.h"
#include "platform/Workspace.h"

#include <QAction>
#include <QUrl>

#include <algorithm>

namespace {
void sortIgnoringCase(QStringList &names)
{
    std::stable_sort(names.begin(), names.end(),
                     [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
}
} // namespace

ContactFieldDelegate::ContactFieldDelegate(AddressBook &book, QObject *parent)
    : QObject(parent)
    , m_book(&book)
{
}

AddressBook &ContactFieldDelegate::book()
{
    return m_book ? *m_book : AddressBook::shared();
}

ContactFieldDelegate *ContactFieldDelegate::sharedController()
{
    static ContactFieldDelegate *const shared = new ContactFieldDelegate;
    return shared;
}

std::optional<Person> ContactFieldDelegate::findPersonInAddressBook(const QString &text)
{
    const QStringList pieces = text.split(QLatin1Char(' '));
    if (pieces.size() > 1) {
        const QList<Person> matches = book().personsMatching(pieces.first(), pieces.last());
        if (matches.size() == 1)
            return matches.first();
        return std::nullopt;
    }
    for (const Person &person : book().personsMatching(pieces.first()))
        if (!person.hasLastName())
            return person;
    return std::nullopt;
}

QVariant ContactFieldDelegate::representedObjectForEditingString(const QString &text)
{
    if (const std::optional<Person> person = findPersonInAddressBook(text))
        return ContactRecord::recordFor(*person);
    return QVariantMap();
}

QString ContactFieldDelegate::displayStringForRepresentedObject(const QVariant &token) const
{
    return ContactRecord::displayString(token);
}

QStringList ContactFieldDelegate::completionsForSubstring(const QString &substring, int tokenIndex, int *selectedIndex)
{
    Q_UNUSED(tokenIndex);
    Q_UNUSED(selectedIndex);
    QStringList names;
    for (const Person &person : book().personsMatching(substring))
        if (!person.firstName.isEmpty())
            names.append(QStringLiteral("%1 %2").arg(person.firstName, person.lastName));
    sortIgnoringCase(names);

    // A name found k times stays k - 1 times: collect every repeat, drop all copies of a repeated
    // name, and put the repeats back.
    QStringList repeats;
    for (qsizetype i = 1; i < names.size(); ++i)
        if (names[i] == names[i - 1])
            repeats.append(names[i]);
    names.removeIf([&](const QString &name) { return repeats.contains(name); });
    names.append(repeats);
    sortIgnoringCase(names);
    return names;
}

bool ContactFieldDelegate::hasMenuForRepresentedObject(const QVariant &token) const
{
    return ContactRecord::isRecord(token);
}

QList<QAction *> ContactFieldDelegate::menuForRepresentedObject(const QVariant &token, QObject *parent)
{
    QList<QAction *> items;
    if (!hasMenuForRepresentedObject(token))
        return items;
    m_currentPersonDictionary = token.toMap();
    const QString origin = m_currentPersonDictionary.value(ContactRecord::Origin).toString();
    const bool fromBook = origin.contains(ContactRecord::AddressBookOrigin);
    const bool fromFacebook = origin.contains(ContactRecord::FacebookOrigin);
    const auto item = [&](const QString &title, auto action) {
        auto *entry = new QAction(title, parent);
        connect(entry, &QAction::triggered, this, action);
        items.append(entry);
        return entry;
    };
    if (fromBook) {
        QAction *open = item(OpenInAddressBookTitle, &ContactFieldDelegate::openInAddressBook);
        if (ContactsProgram::executable().isEmpty()) {
            open->setEnabled(false);
            open->setToolTip(ContactsProgram::NotInstalledToolTip);
        }
        for (const QString &address : ContactRecord::emails(m_currentPersonDictionary)) {
            const QString title = SendEmailPrefix + address;
            item(title, [this, title] { sendEmail(title); });
        }
    }
    if (fromBook && fromFacebook) {
        auto *separator = new QAction(parent);
        separator->setSeparator(true);
        items.append(separator);
    }
    if (fromFacebook) {
        item(OpenFacebookProfileTitle, &ContactFieldDelegate::openFacebookProfile);
        item(SendFacebookMessageTitle, &ContactFieldDelegate::sendFacebookMessage);
    }
    return items;
}

void ContactFieldDelegate::openInAddressBook()
{
    ContactsProgram::open(m_currentPersonDictionary);
}

void ContactFieldDelegate::sendEmail(const QString &title)
{
    const QString address = title.mid(SendEmailPrefix.size());
    Workspace::openUrl(QUrl(QStringLiteral("mailto:%1").arg(address)));
}

void ContactFieldDelegate::openFacebookProfile()
{
    const QString id = m_currentPersonDictionary.value(ContactRecord::FacebookUID).toString();
    Workspace::openUrl(QUrl(FacebookHost + ProfilePath.arg(id)));
}

void ContactFieldDelegate::sendFacebookMessage()
{
    const QString id = m_currentPersonDictionary.value(ContactRecord::FacebookUID).toString();
    Workspace::openUrl(QUrl(FacebookHost + MessagePath.arg(id)));
}
