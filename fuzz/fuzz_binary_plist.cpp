#include "PropertyListChecks.h"

#include "platform/PropertyListBinaryReader.h"

#include <cstddef>
#include <cstdint>

// Binary property lists: every input is read as one, whatever its first bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (!bytes.startsWith("bplist00"))
        bytes.prepend("bplist00");
    QString error;
    if (const auto value = PropertyListBinaryReader::read(bytes, &error))
        checkWritesBackStably(*value);
    else
        checkSaysWhy(error);
    return 0;
}
