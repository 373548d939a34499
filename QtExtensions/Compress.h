#pragma once

#include "Buffer.h"

// A compression method of the archive container. Methods are shared objects
// that hold no state of their own.
class cCompress : public Compress::cRefCounted
{
public:
    ~cCompress() override = default;

    virtual cBuffer Compress(cBuffer& source) const = 0;
    virtual cBuffer Decompress(cBuffer& source, unsigned int uncompressedSize) const = 0;
};

// Method 0: the bytes are stored as they are.
class cCompressNone : public cCompress
{
public:
    cBuffer Compress(cBuffer& source) const override;
    cBuffer Decompress(cBuffer& source, unsigned int uncompressedSize) const override;
};

// Method 1: bzip2 (block size 900 k, work factor 30).
//
// Compress returns a buffer with no block and length 1 when bzip2 fails.
// Decompress returns the empty buffer when the data do not decode to exactly
// the given number of bytes.
class cCompressBZ2 : public cCompress
{
public:
    cBuffer Compress(cBuffer& source) const override;
    cBuffer Decompress(cBuffer& source, unsigned int uncompressedSize) const override;
};

namespace compression {

// The method numbers as they are written into a container.
enum compressName : unsigned int {
    stored = 0,
    bzip2 = 1,
};

inline bool isKnown(unsigned int method) { return method <= bzip2; }

// The shared object of a method; method must be a known one.
const ::Compress::cRef<cCompress>& compressFunc(compressName method);

}
