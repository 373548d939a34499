#pragma once

#include "RefCounted.h"

// The archive types share the program's one reference-counting scheme.
namespace Compress {
using ::cRefCounted;
template<class T>
using cRef = ::cRef<T>;
}

// A handle on one heap block of bytes and its length. Copies share the block;
// it is freed (array delete) with the last handle. The default buffer has no
// block and length 0.
class cBuffer
{
public:
    class cBufferImpl : public Compress::cRefCounted
    {
    public:
        cBufferImpl(char* data, long length);
        ~cBufferImpl() override;
        cBufferImpl(const cBufferImpl&) = delete;
        cBufferImpl& operator=(const cBufferImpl&) = delete;

        char* m_data;
        long m_length;
    };

    cBuffer() = default;
    // Takes over data, which must come from new[] (or be null).
    cBuffer(char* data, long length);

    char* GetBuffer() const;
    long GetBufferLength() const;

private:
    Compress::cRef<cBufferImpl> m_impl;
};
