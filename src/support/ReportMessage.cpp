// GMime's GLib headers come before any Qt header (GLib uses Qt's keywords as names).
#include <fcntl.h>
#include <gmime/gmime.h>

#include "support/ReportMessage.h"
#include "support/SupportTexts.h"

#include <QFile>

#include <mutex>

namespace {

void initialiseGMime()
{
    static std::once_flag once;
    std::call_once(once, [] { g_mime_init(); });
}

// Drops a GObject reference when it goes out of scope.
template <typename T>
struct Unref {
    T *object = nullptr;
    explicit Unref(T *o)
        : object(o)
    {
    }
    ~Unref()
    {
        if (object)
            g_object_unref(object);
    }
    Unref(const Unref &) = delete;
    Unref &operator=(const Unref &) = delete;
};

void fail(QString *error, const QString &why)
{
    if (error)
        *error = why;
}

} // namespace

ReportMessage::ReportMessage(QString to, QString subject, QString body)
    : m_to(std::move(to))
    , m_subject(std::move(subject))
    , m_body(std::move(body))
{
}

void ReportMessage::attach(const QString &path, const QString &name, const QString &contentType)
{
    m_attachments.append({path, name, contentType});
}

bool ReportMessage::writeTo(const QString &path, QString *error) const
{
    initialiseGMime();
    Unref<GMimeMessage> message(g_mime_message_new(TRUE));
    GMimeObject *top = GMIME_OBJECT(message.object);
    g_mime_message_add_mailbox(message.object, GMIME_ADDRESS_TYPE_TO, nullptr, m_to.toUtf8().constData());
    g_mime_message_set_subject(message.object, m_subject.toUtf8().constData(), "utf-8");
    g_mime_object_set_header(top, SupportTexts::MailerHeader, SupportTexts::MailerName, nullptr);
    if (m_date.isValid()) {
        GDateTime *date = g_date_time_new_from_unix_local(m_date.toSecsSinceEpoch());
        g_mime_message_set_date(message.object, date);
        g_date_time_unref(date);
    }

    Unref<GMimeMultipart> mixed(g_mime_multipart_new_with_subtype("mixed"));
    Unref<GMimeTextPart> text(g_mime_text_part_new_with_subtype("plain"));
    g_mime_text_part_set_text(text.object, m_body.toUtf8().constData());
    // Quoted-printable keeps any line of a crash log or a long paragraph within SMTP's line limit.
    g_mime_part_set_content_encoding(GMIME_PART(text.object), GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
    g_mime_multipart_add(mixed.object, GMIME_OBJECT(text.object));

    for (const Attachment &attachment : m_attachments) {
        GError *openError = nullptr;
        Unref<GMimeStream> source(
            g_mime_stream_fs_open(QFile::encodeName(attachment.path).constData(), O_RDONLY, 0, &openError));
        if (!source.object) {
            fail(error, QStringLiteral("cannot read %1: %2")
                            .arg(attachment.path, QString::fromUtf8(openError ? openError->message : "")));
            if (openError)
                g_error_free(openError);
            return false;
        }
        const QByteArray type = attachment.contentType.toUtf8();
        const qsizetype slash = type.indexOf('/');
        Unref<GMimePart> part(g_mime_part_new_with_type(type.left(slash).constData(), type.mid(slash + 1).constData()));
        g_mime_object_set_disposition(GMIME_OBJECT(part.object), GMIME_DISPOSITION_ATTACHMENT);
        g_mime_part_set_filename(part.object, attachment.name.toUtf8().constData());
        Unref<GMimeDataWrapper> content(g_mime_data_wrapper_new_with_stream(source.object, GMIME_CONTENT_ENCODING_DEFAULT));
        g_mime_part_set_content(part.object, content.object);
        g_mime_part_set_content_encoding(part.object, GMIME_CONTENT_ENCODING_BASE64);
        g_mime_multipart_add(mixed.object, GMIME_OBJECT(part.object));
    }
    g_mime_message_set_mime_part(message.object, GMIME_OBJECT(mixed.object));

    GError *writeError = nullptr;
    Unref<GMimeStream> output(g_mime_stream_fs_open(QFile::encodeName(path).constData(),
                                                    O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600, &writeError));
    if (!output.object) {
        fail(error, QStringLiteral("cannot write %1: %2")
                        .arg(path, QString::fromUtf8(writeError ? writeError->message : "")));
        if (writeError)
            g_error_free(writeError);
        return false;
    }
    const bool written = g_mime_object_write_to_stream(top, nullptr, output.object) >= 0
                         && g_mime_stream_flush(output.object) == 0;
    if (!written)
        fail(error, QStringLiteral("cannot write %1").arg(path));
    return written;
}
