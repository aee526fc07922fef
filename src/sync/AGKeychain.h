#pragma once

#include <QString>

// Generic-password items in the user's keychain (the Secret Service's default collection), each
// told apart by three attributes: account (the user name), description (the item name, "Online
// Password" or "Internet Password") and label (the item kind, "Quillory"). The password is the
// item's secret. Every operation takes the item name, the item kind and the user name in that
// order, and matches items whose three attributes are all equal to them.
//
// When several items match, "first" is the oldest (by creation time) and "last" the newest.
class AGKeychain
{
public:
    AGKeychain() = delete;

    // The number of matching items; non-zero means one exists.
    static int checkForExistanceOfKeychainItem(const QString &itemName, const QString &itemKind,
                                               const QString &username);
    // The first match's password (at most 1023 bytes of it), or ErrorText when nothing matches or
    // its secret cannot be read. A stored password that is literally "error" looks the same.
    static QString getPasswordFromKeychainItem(const QString &itemName, const QString &itemKind,
                                               const QString &username);
    // Creates an item in the default collection. True on success.
    static bool addKeychainItem(const QString &itemName, const QString &itemKind, const QString &username,
                                const QString &password);
    // Replaces the first match's password (and writes its three attributes again). False when
    // nothing matches or the write fails.
    static bool modifyKeychainItem(const QString &itemName, const QString &itemKind, const QString &username,
                                   const QString &newPassword);
    // Deletes the newest match. True on success and also when nothing matched.
    static bool deleteKeychainItem(const QString &itemName, const QString &itemKind, const QString &username);

    static inline const QString ErrorText = QStringLiteral("error");
    // Reads stop after this many bytes of the secret, as the fixed 1024-byte buffer always did.
    static constexpr int MaximumPasswordBytes = 1023;

    static inline const QString OnlinePasswordItem = QStringLiteral("Online Password");
    static inline const QString InternetPasswordItem = QStringLiteral("Internet Password");
    static inline const QString QuilloryKind = QStringLiteral("Quillory");
};
