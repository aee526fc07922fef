#pragma once

#include <QString>

// The dictionary "Preferences - Syncing" and what its "Method" numbers mean.
namespace SyncingKeys {

inline const QString Group = QStringLiteral("Preferences - Syncing");
inline const QString Method = QStringLiteral("Method");
inline const QString OnlineUsername = QStringLiteral("Online Username");
inline const QString FTPName = QStringLiteral("FTP Name");
inline const QString FTPServer = QStringLiteral("FTP Server");
inline const QString FTPPath = QStringLiteral("FTP Path");

// Absent reads as NoSyncing. Any other number packs and unpacks /tmp/Quillory.tar without a transfer.
enum Method : qint64 { NoSyncing = 0, QuilloryOnline = 1, FTPServerMethod = 2, LocalArchive = 3 };

} // namespace SyncingKeys
