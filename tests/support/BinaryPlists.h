#pragma once

#include <QByteArray>
#include <QList>

// Binary property lists built byte by byte, for files no well-behaved writer would make.
namespace BinaryPlists {

// A binary property list of the given objects (object 0 is the root), with one-byte references
// and four-byte offsets.
inline QByteArray fromObjects(const QList<QByteArray> &objects)
{
    QByteArray bytes = "bplist00";
    QByteArray table;
    for (const QByteArray &object : objects) {
        const quint32 offset = quint32(bytes.size());
        table += char(offset >> 24);
        table += char(offset >> 16);
        table += char(offset >> 8);
        table += char(offset);
        bytes += object;
    }
    const quint32 tableAt = quint32(bytes.size());
    bytes += table;
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = 1;
    trailer[15] = char(objects.size());
    trailer[28] = char(tableAt >> 24);
    trailer[29] = char(tableAt >> 16);
    trailer[30] = char(tableAt >> 8);
    trailer[31] = char(tableAt);
    return bytes + trailer;
}

// `levels` arrays, each holding the next one `width` times, the last holding a short string: small
// on disk, and as large as width^levels once written out.
inline QByteArray referenceBomb(int levels, int width)
{
    QList<QByteArray> objects;
    for (int level = 0; level < levels; ++level) {
        QByteArray array(1, char(0xA0 | width));
        array += QByteArray(width, char(level + 1));
        objects.append(array);
    }
    objects.append("\x55" "Essay");
    return fromObjects(objects);
}

} // namespace BinaryPlists
