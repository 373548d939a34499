#pragma once

#include "RefCounted.h"

// Shared values: every handle on one body sees the value that any writable
// handle stored last.

template<class T>
class cBody : public virtual cRefCounted
{
public:
    cBody() = default;
    explicit cBody(const T& value) : m_value(value) {}

    T& Value() { return m_value; }
    const T& Value() const { return m_value; }

private:
    T m_value{};
};

// A writable reference to a shared value.
template<class T>
class cHandle
{
public:
    using Body = cBody<T>;

    // A new body holding T's default value.
    cHandle() : m_body(new Body) {}
    explicit cHandle(const cRef<Body>& body) : m_body(body) {}

    // Stores into the shared body, for every sharer.
    cHandle& operator=(const T& value)
    {
        m_body->Value() = value;
        return *this;
    }
    // Copying and assigning a handle share the other's body.
    void Refer(const cHandle& other) { m_body = other.m_body; }

    T& Value() const { return m_body->Value(); }
    operator T&() const { return Value(); }

    // A handle on a new body holding a copy of the value.
    cHandle Clone() const { return cHandle(cRef<Body>(new Body(Value()))); }

    const cRef<Body>& body() const { return m_body; }

private:
    cRef<Body> m_body;
};

// A read-only view of a shared value.
template<class T>
class cReadHandle
{
public:
    using Body = cBody<T>;

    cReadHandle(const cHandle<T>& handle) : m_body(handle.body()) {}
    explicit cReadHandle(const cRef<Body>& body) : m_body(body) {}

    const T& Value() const { return m_body->Value(); }
    operator T() const { return Value(); }

    void Refer(const cReadHandle& other) { m_body = other.m_body; }
    // A view of a new body holding a copy of the value, detached from the original.
    cReadHandle Clone() const { return cReadHandle(cRef<Body>(new Body(Value()))); }

private:
    cRef<Body> m_body;
};
