#pragma once

#include <QFile>
#include <QString>

// Writes a file atomically, the way every data and preferences file of the program is written: into
// a temporary file beside the target, synced to disk, then renamed over the target, so that a kill
// at any moment leaves either the old file or the new one, never a mixture.
//
// The temporary file is ".<name>.quillory-tmp-<pid>-<random>" and readable by its owner only (the
// store holds a student's grades and contacts), whatever the umask; the target ends up with the same
// mode. The process id in the name lets a later run tell a copy left by a killed process from one
// being written right now, and removeLeftovers() takes away the former.
class PropertyListSaveFile
{
public:
    explicit PropertyListSaveFile(QString path);
    ~PropertyListSaveFile();
    PropertyListSaveFile(const PropertyListSaveFile &) = delete;
    PropertyListSaveFile &operator=(const PropertyListSaveFile &) = delete;

    bool open();
    // The device to write to between open() and commit().
    QIODevice *device() { return &m_file; }
    // Syncs the temporary file, renames it over the target and syncs the folder. On failure the
    // temporary file is removed and the target is left as it was.
    bool commit();
    // Gives up: the temporary file is removed, the target never touched.
    void cancel();
    QString errorString() const { return m_error; }

    // True for names this class gives temporary files; `pid` receives the writer's process id.
    static bool isTemporaryName(const QString &name, qint64 *pid = nullptr);
    static int removeLeftovers(const QString &folder);

private:
    bool fail(const QString &what);

    QString m_path;
    QString m_temporaryPath;
    QFile m_file;
    QString m_error;
    bool m_open = false;
};
