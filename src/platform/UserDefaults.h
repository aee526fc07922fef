#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>

class PreferencesNotifier;

// The preferences domain "com.brevandt.Quillory", kept as the property list
// ~/Library/Preferences/com.brevandt.Quillory.plist.
//
// Values are read at the point of use: every read sees the file as it is now (a change written by
// another window, or by hand, shows at once), and every change is written to the file atomically
// at once. A parsed copy is kept per file and reused while the file's size, modification time and
// inode are unchanged, so reads cost a stat(), not a parse. Safe to call from any thread.
//
// A preferences file that does not parse reads as empty. It is never overwritten: the first change
// moves it aside to "<name>.plist.damaged" (numbered when that exists) before writing a fresh file.
class UserDefaults
{
public:
    static inline const QString ProgramDomain = QStringLiteral("com.brevandt.Quillory");

    UserDefaults();
    explicit UserDefaults(QString domain);

    QString domain() const { return m_domain; }
    QString path() const;

    bool contains(const QString &key) const;
    QVariant object(const QString &key) const;
    QVariantMap dictionary(const QString &key) const;
    QVariantList array(const QString &key) const;
    // Missing (or not text): a null QString.
    QString string(const QString &key) const;
    // Missing: false / 0 / 0.0. Numbers and booleans convert into each other.
    bool boolValue(const QString &key) const;
    qint64 integer(const QString &key) const;
    double real(const QString &key) const;
    QVariantMap all() const;

    // A value inside one of the dictionaries ("Preferences - General" and the like).
    QVariant groupValue(const QString &group, const QString &key) const;

    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);
    // Several changes in one write.
    void setMany(const QVariantMap &changes, const QStringList &removals = {});

    // Says after every write of the program's own domain what it changed (on the interface thread).
    static PreferencesNotifier *notifier();

    // Forgets every cached parse (tests switch $HOME between cases).
    static void dropCaches();

private:
    QString m_domain;
};
