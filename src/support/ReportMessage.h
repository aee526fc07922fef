#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// A report e-mail as a MIME message: a multipart/mixed with the body text first, then the files
// in the order they were added, each as a base64 attachment under the name given.
class ReportMessage
{
public:
    ReportMessage(QString to, QString subject, QString body);

    void setDate(const QDateTime &date) { m_date = date; }
    // `path` is read when the message is written; `name` is the file name the receiver sees.
    void attach(const QString &path, const QString &name, const QString &contentType);

    // Writes the whole message, with Unix line ends as sendmail takes it, to `path`. False (with
    // the reason) when an attachment cannot be read or the file not written.
    bool writeTo(const QString &path, QString *error = nullptr) const;

private:
    struct Attachment {
        QString path;
        QString name;
        QString contentType;
    };
    QString m_to;
    QString m_subject;
    QString m_body;
    QDateTime m_date;
    QList<Attachment> m_attachments;
};
