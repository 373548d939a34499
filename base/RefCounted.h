#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

// Base of objects that delete themselves when the last cRef to them goes away.
// The count is a plain integer: such objects stay in the thread that made them.
class cRefCounted
{
public:
    void IncRef() const { ++m_refCount; }

    // Releases one reference; the last one deletes the object. While the
    // object is being destroyed further releases are ignored, so that a
    // release from inside the destructor cannot delete it a second time.
    void DecRef() const
    {
        if (m_beingDestroyed)
            return;
        if (--m_refCount == 0) {
            m_beingDestroyed = 1;
            delete this;
        }
    }

    std::int32_t RefCount() const { return m_refCount; }

protected:
    cRefCounted() = default;
    // A copy is a new object: it starts without references.
    cRefCounted(const cRefCounted&) {}
    cRefCounted& operator=(const cRefCounted&) { return *this; }
    virtual ~cRefCounted() = default;

private:
    mutable std::int32_t m_beingDestroyed = 0;
    mutable std::int32_t m_refCount = 0;
};

// Owning handle of a cRefCounted object: holds one reference while it points
// to the object. Copies share the object.
template<class T>
class cRef
{
public:
    cRef() noexcept = default;
    cRef(T* object) : m_object(object) { acquire(); }
    cRef(const cRef& other) : m_object(other.m_object) { acquire(); }
    cRef(cRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template<class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    cRef(const cRef<U>& other) : m_object(other.get()) { acquire(); }
    ~cRef() { release(); }

    cRef& operator=(const cRef& other)
    {
        cRef(other).swap(*this);
        return *this;
    }
    cRef& operator=(cRef&& other) noexcept
    {
        cRef(std::move(other)).swap(*this);
        return *this;
    }
    cRef& operator=(T* object)
    {
        cRef(object).swap(*this);
        return *this;
    }

    void reset() { release(); }
    void swap(cRef& other) noexcept { std::swap(m_object, other.m_object); }

    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    bool empty() const noexcept { return m_object == nullptr; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    friend bool operator==(const cRef& a, const cRef& b) { return a.m_object == b.m_object; }
    friend bool operator!=(const cRef& a, const cRef& b) { return a.m_object != b.m_object; }

private:
    void acquire()
    {
        if (m_object)
            m_object->IncRef();
    }
    void release()
    {
        if (T* object = std::exchange(m_object, nullptr))
            object->DecRef();
    }

    T* m_object = nullptr;
};
