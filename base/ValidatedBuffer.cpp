#include "ValidatedBuffer.h"

#include "Exceptions.h"

#include <cstring>

const char cszSourceTooLong[] = "Quellpuffer zu Gro\xDF";
const char cszIndexInvalid[] = "Index ung\xFCltig";
const char cszBufferInvalid[] = "Pufferung\xFCltig";
const char cszSourceBufferInvalid[] = "Quellpuffer ung\xFCltig";

namespace {

constexpr unsigned int guardSize = 4;

// VB_signature in little-endian byte order, whatever the host's order is.
constexpr char guardBytes[guardSize] = {
    char(ValidatedBuffer::VB_signature & 0xFF),
    char((ValidatedBuffer::VB_signature >> 8) & 0xFF),
    char((ValidatedBuffer::VB_signature >> 16) & 0xFF),
    char((ValidatedBuffer::VB_signature >> 24) & 0xFF),
};

[[noreturn]] void raise(const char* text)
{
    throw xNvMessageExc(new cStringMessage(text));
}

} // namespace

ValidatedBuffer::ValidatedBuffer(unsigned int size, char fill)
{
    allocBuffer(size, fill);
}

ValidatedBuffer::ValidatedBuffer(const std::string& text)
{
    allocBuffer(unsigned(text.size()) + 1, 0);
    std::memcpy(m_data, text.data(), text.size());
}

ValidatedBuffer::~ValidatedBuffer() noexcept(false)
{
    // An overrun must not pass silently, even though this throws from a
    // destructor.
    if (!clearBuffer())
        raise(cszBufferInvalid);
}

bool ValidatedBuffer::set(const char* source, unsigned int n)
{
    if (n > m_size || (!source && n > 0))
        return false;
    if (n > 0)
        std::memcpy(m_data, source, n);
    return true;
}

ValidatedBuffer& ValidatedBuffer::operator=(const char* source)
{
    if (!source)
        raise(cszSourceBufferInvalid);
    if (std::strlen(source) >= m_size)
        raise(cszSourceTooLong);
    std::strncpy(m_data, source, m_size);
    return *this;
}

char& ValidatedBuffer::operator[](int index)
{
    return at(index);
}

char& ValidatedBuffer::operator[](unsigned int index)
{
    return at(index);
}

const char& ValidatedBuffer::operator[](int index) const
{
    return at(index);
}

const char& ValidatedBuffer::operator[](unsigned int index) const
{
    return at(index);
}

char& ValidatedBuffer::at(long long index) const
{
    if (index < 0 || index >= m_size)
        raise(cszIndexInvalid);
    return m_data[index];
}

bool ValidatedBuffer::isValid() const
{
    return !m_data || std::memcmp(m_data + m_size, guardBytes, guardSize) == 0;
}

bool ValidatedBuffer::forceValid()
{
    const bool wasValid = isValid();
    if (m_data)
        writeGuard();
    return wasValid;
}

bool ValidatedBuffer::clearBuffer()
{
    const bool wasValid = isValid();
    delete[] m_data;
    m_data = nullptr;
    m_allocatedSize = 0;
    m_size = 0;
    return wasValid;
}

bool ValidatedBuffer::allocBuffer(unsigned int size, char fill)
{
    const bool wasValid = clearBuffer();
    m_allocatedSize = size + guardSize;
    m_size = size;
    m_data = new char[m_allocatedSize];
    std::memset(m_data, fill, m_size);
    writeGuard();
    return wasValid;
}

bool ValidatedBuffer::changeSize(unsigned int size)
{
    return allocBuffer(size, 0);
}

void ValidatedBuffer::writeGuard()
{
    std::memcpy(m_data + m_size, guardBytes, guardSize);
}
