#include "Compress.h"

#include <bzlib.h>

namespace {

constexpr int kBlockSize100k = 9;
constexpr int kVerbosity = 0;
constexpr int kWorkFactor = 30;

// Indexed by compression::compressName; built before main.
const Compress::cRef<cCompress> s_methods[] = {
    new cCompressNone,
    new cCompressBZ2,
};

}

cBuffer cCompressNone::Compress(cBuffer& source) const
{
    return source;
}

cBuffer cCompressNone::Decompress(cBuffer& source, unsigned int) const
{
    return source;
}

cBuffer cCompressBZ2::Compress(cBuffer& source) const
{
    // bzip2's documented worst case is 1 % plus 600 bytes above the input.
    auto capacity = static_cast<unsigned int>(source.GetBufferLength() * 1.02 + 600);
    char* compressed = new char[capacity];
    const int result = BZ2_bzBuffToBuffCompress(compressed, &capacity, source.GetBuffer(),
                                                static_cast<unsigned int>(source.GetBufferLength()),
                                                kBlockSize100k, kVerbosity, kWorkFactor);
    if (result != BZ_OK) {
        delete[] compressed;
        return cBuffer(nullptr, 1);
    }
    return cBuffer(compressed, capacity);
}

cBuffer cCompressBZ2::Decompress(cBuffer& source, unsigned int uncompressedSize) const
{
    char* data = new char[uncompressedSize];
    unsigned int length = uncompressedSize;
    const int result = BZ2_bzBuffToBuffDecompress(data, &length, source.GetBuffer(),
                                                  static_cast<unsigned int>(source.GetBufferLength()),
                                                  0, kVerbosity);
    // On an error bzip2 leaves length as it was, so the result code decides
    // first; a stream that decodes to fewer bytes than recorded is just as
    // unusable.
    if (result != BZ_OK || length != uncompressedSize) {
        delete[] data;
        return cBuffer();
    }
    return cBuffer(data, length);
}

const Compress::cRef<cCompress>& compression::compressFunc(compressName method)
{
    return s_methods[method];
}
