// Fuzzes our Photoshop merged-picture reader with arbitrary bytes.
#include "FuzzOwnCodec.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return fuzzInitialize(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return fuzzOwnCodec("psd", data, size);
}
