#include "Buffer.h"

cBuffer::cBufferImpl::cBufferImpl(char* data, long length)
    : m_data(data)
    , m_length(length)
{
}

cBuffer::cBufferImpl::~cBufferImpl()
{
    delete[] m_data;
}

cBuffer::cBuffer(char* data, long length)
    : m_impl(new cBufferImpl(data, length))
{
}

char* cBuffer::GetBuffer() const
{
    return m_impl ? m_impl->m_data : nullptr;
}

long cBuffer::GetBufferLength() const
{
    return m_impl ? m_impl->m_length : 0;
}
