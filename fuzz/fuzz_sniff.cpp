// Fuzzes format recognition: sniff() peeks at arbitrary bytes, then the
// handler it names (if any) reads them.
#include "FuzzOwnCodec.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return fuzzInitialize(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = tarnby::imaging::codecs::sniff(&buffer);
    if (buffer.pos() != 0)
        __builtin_trap(); // sniff() must only peek
    return format.isEmpty() ? 0 : fuzzOwnCodec(format, data, size);
}
