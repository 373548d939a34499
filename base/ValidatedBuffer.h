#pragma once

#include <cstdint>
#include <string>

// Texts of the errors that ValidatedBuffer raises (Latin-1).
extern const char cszSourceTooLong[];        // "Quellpuffer zu Gro\xDF"
extern const char cszIndexInvalid[];         // "Index ung\xFCltig"
extern const char cszBufferInvalid[];        // "Pufferung\xFCltig"
extern const char cszSourceBufferInvalid[];  // "Quellpuffer ung\xFCltig"

// A fixed-size heap buffer for C library calls, with a guard word behind its
// last usable byte. An overrun is detected when the buffer is released: the
// destructor then throws. All errors are thrown as xNvMessageExc.
class ValidatedBuffer
{
public:
    // The guard, stored little-endian: the bytes 0x00 'x' 'F' 'F'. Its first
    // byte also ends a string that fills the whole buffer.
    static constexpr std::uint32_t VB_signature = 0x46467800;

    explicit ValidatedBuffer(unsigned int size = 0, char fill = 0);
    // Size is the text length + 1: the text with its terminating zero.
    explicit ValidatedBuffer(const std::string& text);
    // Throws cszBufferInvalid when the guard was overwritten.
    virtual ~ValidatedBuffer() noexcept(false);

    ValidatedBuffer(const ValidatedBuffer&) = delete;
    ValidatedBuffer& operator=(const ValidatedBuffer&) = delete;

    char* get() { return m_data; }
    const char* getConst() const { return m_data; }
    operator const char*() const { return m_data; }
    unsigned int getSize() const { return m_size; }

    // Copies n bytes; false when n exceeds the size.
    bool set(const char* source, unsigned int n);
    // Copies the string with zero padding; throws cszSourceTooLong when it
    // has size or more characters.
    ValidatedBuffer& operator=(const char* source);

    // Throw cszIndexInvalid outside 0 ... size - 1.
    char& operator[](int index);
    char& operator[](unsigned int index);
    const char& operator[](int index) const;
    const char& operator[](unsigned int index) const;

    // True when there is no block or the guard is intact.
    bool isValid() const;
    // Rewrites the guard; returns the validity before.
    bool forceValid();
    // Frees the block; returns the validity before.
    bool clearBuffer();
    // A new block of size bytes filled with fill; returns the old validity.
    bool allocBuffer(unsigned int size, char fill);
    // allocBuffer(size, 0): the old contents are lost.
    bool changeSize(unsigned int size);

private:
    void writeGuard();
    char& at(long long index) const;

    unsigned int m_allocatedSize = 0;
    unsigned int m_size = 0;
    char* m_data = nullptr;
};
