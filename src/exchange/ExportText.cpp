#include "exchange/ExportText.h"

#include <QIODevice>
#include <QSaveFile>

ExportText::ExportText(QIODevice *device)
    : m_device(device)
{
    // The chunk's string keeps its room from one chunk to the next.
    m_text.reserve(ChunkCharacters + ChunkCharacters / 4);
}

void ExportText::writeChunk()
{
    if (!m_failed && !m_text.isEmpty()) {
        // QString::toUtf8() writes a lone surrogate (damaged text) as "?", as exports always have.
        const QByteArray bytes = m_text.toUtf8();
        m_failed = m_device->write(bytes) != bytes.size();
    }
    m_text.resize(0);
}

bool ExportText::finish()
{
    if (m_device)
        writeChunk();
    return !m_failed;
}

QByteArray ExportText::takeUtf8()
{
    const QByteArray bytes = m_text.toUtf8();
    m_text = QString();
    return bytes;
}

bool ExportText::writeFile(const QString &path, const std::function<void(ExportText &)> &make, QString *error)
{
    QSaveFile file(path);
    bool written = false;
    if (file.open(QIODevice::WriteOnly)) {
        ExportText text(&file);
        make(text);
        if (text.finish())
            written = file.commit();
        else
            file.cancelWriting();
    }
    if (!written && error)
        *error = file.errorString();
    return written;
}
