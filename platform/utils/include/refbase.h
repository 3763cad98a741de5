#ifndef TARVO_UTILS_REFBASE_H
#define TARVO_UTILS_REFBASE_H

// Intrusive reference counting with strong (sptr) and weak (wptr) references.
//
// Contract:
//  - An object derived from RefBase is deleted when its strong count falls from 1 to 0.
//  - An object that never had a strong reference is owned by whoever created it (it may live on
//    the stack or be deleted by hand); weak references to it never promote.
//  - The counts live in a separate RefCounter, so a wptr may outlive the object: promote() then
//    returns null. promote() is safe against a concurrent release of the last strong reference.
//  - sptr<T>(this) inside a member function is safe (the count is intrusive), also in a
//    constructor, as long as the object ends up held by an sptr.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace Tarvo {

class RefCounter {
public:
    RefCounter() = default;
    RefCounter(const RefCounter&) = delete;
    RefCounter& operator=(const RefCounter&) = delete;

    int IncStrong() { return strong_.fetch_add(1, std::memory_order_relaxed); }
    int DecStrong() { return strong_.fetch_sub(1, std::memory_order_acq_rel); }
    int GetStrong() const { return strong_.load(std::memory_order_acquire); }
    // Takes a strong reference only while the object is alive (strong count above zero).
    bool AttemptIncStrong();

    void IncWeak() { weak_.fetch_add(1, std::memory_order_relaxed); }
    // Releases the counter itself when the last weak holder goes.
    void DecWeak();
    int GetWeak() const { return weak_.load(std::memory_order_acquire); }

private:
    ~RefCounter() = default;
    std::atomic<int> strong_{0};
    std::atomic<int> weak_{0};
};

class RefBase {
public:
    RefBase();
    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;
    virtual ~RefBase();

    void IncStrongRef(const void* objectId) const;
    void DecStrongRef(const void* objectId) const;
    bool AttemptIncStrongRef(const void* objectId) const;
    int GetSptrRefCount() const;

    void IncWeakRef(const void* objectId) const;
    void DecWeakRef(const void* objectId) const;
    int GetWptrRefCount() const;

    RefCounter* GetRefCounter() const { return refs_; }

    // Hooks for subclasses: called on the 0->1 and 1->0 transitions of the strong count.
    virtual void OnFirstStrongRef(const void* objectId);
    virtual void OnLastStrongRef(const void* objectId);

private:
    RefCounter* refs_;
};

template <typename T>
class wptr;

template <typename T>
class sptr {
public:
    sptr() = default;
    sptr(std::nullptr_t) {}
    sptr(T* other) : refs_(other) { Acquire(); }
    sptr(const sptr& other) : refs_(other.refs_) { Acquire(); }
    sptr(sptr&& other) noexcept : refs_(std::exchange(other.refs_, nullptr)) {}
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sptr(const sptr<U>& other) : refs_(other.GetRefPtr())
    {
        Acquire();
    }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sptr(sptr<U>&& other) noexcept : refs_(other.ForgetRef())
    {
    }
    ~sptr() { Release(); }

    template <typename... Args>
    static sptr<T> MakeSptr(Args&&... args)
    {
        return sptr<T>(new T(std::forward<Args>(args)...));
    }

    sptr& operator=(const sptr& other) { return Reset(other.refs_); }
    sptr& operator=(sptr&& other) noexcept
    {
        if (this != &other) {
            Release();
            refs_ = std::exchange(other.refs_, nullptr);
        }
        return *this;
    }
    sptr& operator=(T* other) { return Reset(other); }
    sptr& operator=(std::nullptr_t) { return Reset(nullptr); }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sptr& operator=(const sptr<U>& other)
    {
        return Reset(other.GetRefPtr());
    }

    T* GetRefPtr() const { return refs_; }
    T* operator->() const { return refs_; }
    T& operator*() const { return *refs_; }
    explicit operator bool() const { return refs_ != nullptr; }
    operator T*() const { return refs_; }

    void clear() { Reset(nullptr); }
    // Gives up ownership without releasing; used to move between pointer types.
    T* ForgetRef() { return std::exchange(refs_, nullptr); }

    bool operator==(std::nullptr_t) const { return refs_ == nullptr; }
    template <typename U>
    bool operator==(const sptr<U>& other) const
    {
        return refs_ == other.GetRefPtr();
    }
    bool operator==(const T* other) const { return refs_ == other; }

private:
    template <typename U>
    friend class wptr;
    struct AdoptTag {};
    // Wraps a pointer whose strong reference was already taken (by wptr::promote).
    sptr(T* other, AdoptTag) : refs_(other) {}

    void Acquire()
    {
        if (refs_ != nullptr) {
            static_cast<const RefBase*>(refs_)->IncStrongRef(this);
        }
    }
    void Release()
    {
        if (refs_ != nullptr) {
            static_cast<const RefBase*>(refs_)->DecStrongRef(this);
        }
    }
    sptr& Reset(T* other)
    {
        if (other != nullptr) {
            static_cast<const RefBase*>(other)->IncStrongRef(this);
        }
        Release();
        refs_ = other;
        return *this;
    }

    T* refs_ = nullptr;
};

template <typename T>
class wptr {
public:
    wptr() = default;
    wptr(std::nullptr_t) {}
    wptr(T* other) { Set(other); }
    wptr(const sptr<T>& other) { Set(other.GetRefPtr()); }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    wptr(const sptr<U>& other)
    {
        Set(other.GetRefPtr());
    }
    wptr(const wptr& other) { Copy(other.ptr_, other.counter_); }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    wptr(const wptr<U>& other)
    {
        Copy(other.ptr_, other.counter_);
    }
    ~wptr() { Drop(); }

    wptr& operator=(const wptr& other)
    {
        if (this != &other) {
            Drop();
            Copy(other.ptr_, other.counter_);
        }
        return *this;
    }
    wptr& operator=(const sptr<T>& other)
    {
        Drop();
        Set(other.GetRefPtr());
        return *this;
    }
    wptr& operator=(T* other)
    {
        Drop();
        Set(other);
        return *this;
    }

    // A strong reference if the object is still alive, otherwise null.
    sptr<T> promote() const
    {
        if (ptr_ == nullptr || !counter_->AttemptIncStrong()) {
            return nullptr;
        }
        return sptr<T>(ptr_, typename sptr<T>::AdoptTag{});
    }

    // True once the object is gone (or was never held strongly); a false answer may be stale.
    bool expired() const { return counter_ == nullptr || counter_->GetStrong() <= 0; }

    // The raw pointer; it may dangle once the object is gone. Use promote() to reach the object.
    T* GetRefPtr() const { return ptr_; }
    T* operator->() const { return ptr_; }
    bool operator==(const wptr& other) const { return ptr_ == other.ptr_; }
    bool operator==(const T* other) const { return ptr_ == other; }
    bool operator==(std::nullptr_t) const { return ptr_ == nullptr; }
    explicit operator bool() const { return ptr_ != nullptr; }

private:
    template <typename U>
    friend class wptr;

    void Set(T* other)
    {
        ptr_ = other;
        counter_ = other != nullptr ? static_cast<const RefBase*>(other)->GetRefCounter() : nullptr;
        if (counter_ != nullptr) {
            counter_->IncWeak();
        }
    }
    void Copy(T* ptr, RefCounter* counter)
    {
        ptr_ = ptr;
        counter_ = counter;
        if (counter_ != nullptr) {
            counter_->IncWeak();
        }
    }
    void Drop()
    {
        if (counter_ != nullptr) {
            counter_->DecWeak();
        }
        ptr_ = nullptr;
        counter_ = nullptr;
    }

    T* ptr_ = nullptr;
    RefCounter* counter_ = nullptr;
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_REFBASE_H
