#pragma once

#include "harbor6/groundwork/exception.h"

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace un {

// Bases of RefCounted that say what may be done with a class; they have no members.

class HARBOR6_API assignable {};

class HARBOR6_API copyable {};

class HARBOR6_API cloneable : public assignable, public copyable {};

} // namespace un

namespace pattern {

/// An object that counts its references and is destroyed with the last one. A new object has the count 1,
/// and that reference belongs to its creator. Any thread may take and release references.
class HARBOR6_API RefCounted : public un::cloneable {
public:
    RefCounted() = default;
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;
    virtual ~RefCounted();

    /// Called when a release leaves one reference; nothing by default.
    virtual void lastRef() const;
    /// Deletes the whole object. Called when the count reaches 0.
    virtual void destroy() = 0;

    void addReference() const;
    /// Returns one reference; the object may no longer exist afterwards.
    void release();
    /// The current count, which other threads may change at any time.
    std::uint32_t references() const;

private:
    mutable std::atomic<std::uint32_t> reference_count{1};
};

/// Holds one counted reference, or none.
template<class T>
class AcquiredPtr {
public:
    AcquiredPtr() = default;
    /// Takes over the reference that `acquired` carries.
    explicit AcquiredPtr(T* acquired) : held(acquired) {}
    AcquiredPtr(const AcquiredPtr& other) : held(other.acquire()) {}
    AcquiredPtr(AcquiredPtr&& other) noexcept : held(std::exchange(other.held, nullptr)) {}
    AcquiredPtr& operator=(AcquiredPtr other) noexcept {
        std::swap(held, other.held);
        return *this;
    }
    AcquiredPtr& operator=(T* acquired) { return *this = AcquiredPtr(acquired); }
    ~AcquiredPtr() {
        if (held)
            const_cast<std::remove_const_t<T>*>(held)->release();
    }

    /// Holds `object` with a reference of its own.
    static AcquiredPtr sharing(T& object) {
        object.addReference();
        return AcquiredPtr(&object);
    }

    /// Raises un::exception if empty.
    T& operator*() const {
        if (!held)
            throw un::exception("attempt to derefernce 0", "un");
        return *held;
    }
    T* operator->() const { return &**this; }
    explicit operator bool() const { return held != nullptr; }
    T* get() const { return held; }

    /// Takes one more reference for the caller; null if empty.
    T* acquire() const {
        if (held)
            held->addReference();
        return held;
    }
    /// Hands the held reference to the caller; empty afterwards.
    T* detach() { return std::exchange(held, nullptr); }

private:
    T* held = nullptr;
};

} // namespace pattern
