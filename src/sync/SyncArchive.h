#pragma once

#include <QString>

#include <optional>

// The sync archive and the temporary places around it, all at fixed paths below /tmp so that an
// archive made on one computer unpacks on another:
//   /tmp/Quillory/      staging copy of the data folder while packing
//   /tmp/Quillory.tar   the archive, for upload and after download (members "tmp/Quillory/...")
//   /tmp/tmp/           where a downloaded archive unpacks
//
// /tmp is shared with every other user of the computer, so nothing here follows a symbolic link
// found at these paths or writes into a file someone else owns: such a path is refused with a
// message saying why, and the caller shows it.
class SyncArchive
{
public:
    SyncArchive() = delete;

    static inline const QString StagingFolder = QStringLiteral("/tmp/Quillory/");
    static inline const QString ArchivePath = QStringLiteral("/tmp/Quillory.tar");
    static inline const QString UnpackFolder = QStringLiteral("/tmp/tmp/");
    static inline const QString UnpackedDataFolder = QStringLiteral("/tmp/tmp/Quillory/");
    static inline const QString MemberPrefix = QStringLiteral("tmp/Quillory/");
    static inline const QString TarPath = QStringLiteral("/usr/bin/tar");

    // Stages the data folder (without "Syncing Backups") and packs it into the archive with
    // "/usr/bin/tar" "-cf" archive staging-folder. Copy problems are logged and packing goes on with
    // what was staged; false (with the reason) only when a temporary path had to be refused.
    static bool compress(const QString &dataFolder, QString *problem);

    // Makes an empty archive file of our own for a download to fill. False when refused.
    static bool prepareForDownload(QString *problem);

    // When the archive exists: checks it, unpacks it into /tmp/tmp/ and merges /tmp/tmp/Quillory/
    // into the data folder (same names replaced, local-only files kept). The archive and /tmp/tmp/
    // are removed afterwards in every case. False (with the reason) when the archive was refused;
    // then the data folder is untouched. The same as unpack, mergeUnpacked and cleanUp in a row.
    static bool uncompress(const QString &dataFolder, QString *problem);

    enum class Unpacked { NoArchive, Ready, Refused };
    // The first half, which changes nothing of the user's: checks the archive and unpacks it into
    // /tmp/tmp/.
    static Unpacked unpack(QString *problem);
    // The second half: moves what unpack left into the data folder.
    static void mergeUnpacked(const QString &dataFolder);
    // Removes the archive and /tmp/tmp/. Here and wherever a temporary path of ours is cleared, it
    // leaves its path at once and the space it held is freed on a pool thread, which the program
    // waits for before it exits.
    static void cleanUp();

    // The reason to refuse an archive's member list, or nullopt when every member stays inside
    // "tmp/Quillory/": no absolute names, no "..", no special files, and links only to places
    // inside without any ".." in their targets (links to "." would let a lexically harmless
    // "l/l/../.." climb out).
    static std::optional<QString> checkMembers(const QString &archivePath);

    // Copies a tree into another, replacing files of the same name (each written atomically) and
    // keeping what exists only in the destination. False when anything could not be copied. With
    // `move`, files are renamed into place where the file system allows, which is atomic too and
    // costs nothing; the source tree is then left partly emptied.
    static bool mergeCopy(const QString &from, const QString &to, QString *problem, bool move = false);

    static bool archiveExists();
    // Removes the archive (never what a link there points to).
    static void removeArchive();
    // The archive when it is a plain file, as cleanUp() removes it.
    static void removeArchiveFile();
    static void removeUnpackFolder();
};
