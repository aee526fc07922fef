#pragma once

#include "contacts/AddressBook.h"

#include <QDateTime>
#include <QHash>
#include <functional>

// An address book kept as vCard files (2.1, 3.0 or 4.0; one or more cards a file) in a folder and
// its subfolders, the way vdirsyncer and khard keep one. The folder is asked for at every search,
// so a changed preference or a card written by another program shows at once; a file is parsed
// again only when its size or modification time changed.
class VCardFolderBook : public AddressBook
{
public:
    // `folder` is asked for the folder at each search.
    explicit VCardFolderBook(std::function<QString()> folder);

    QList<Person> personsMatching(const QString &firstNamePrefix,
                                  const std::optional<QString> &lastNameSuffix = std::nullopt) override;
    QString description() const override;

    // Every person of the folder, in file-name order and card order within a file.
    QList<Person> allPersons();
    // The cards of one file's bytes.
    static QList<Person> personsInCards(const QByteArray &bytes, const QString &fallbackUid);

private:
    struct CachedFile {
        qint64 size = -1;
        QDateTime modified;
        QList<Person> persons;
    };

    std::function<QString()> m_folder;
    QString m_cachedFolder;
    QHash<QString, CachedFile> m_files;
};
