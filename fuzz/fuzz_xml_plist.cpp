#include "PropertyListChecks.h"

#include "platform/PropertyListBinaryReader.h"

#include <cstddef>
#include <cstdint>

// XML property lists in any declared encoding.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (PropertyListBinaryReader::isBinary(bytes))
        return -1;
    QString error;
    if (const auto value = PropertyList::parse(bytes, &error))
        checkWritesBackStably(*value);
    else
        checkSaysWhy(error);
    return 0;
}
