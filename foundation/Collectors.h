#pragma once
// Self-registration without a central list: objects of a kind register with a process-wide
// collector when they are built and leave it when they die. Collectors are singletons that come
// into being on first use and refuse to come back once destroyed at exit, so objects destroyed
// after them find no collector instead of a dangling one.

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

// A value shared between threads; every access holds the value's own mutex.
template <class T>
class CSafeVar {
public:
    CSafeVar() = default;
    explicit CSafeVar(T value) : m_value(std::move(value)) {}
    virtual ~CSafeVar() = default;
    CSafeVar(const CSafeVar&) = delete;
    CSafeVar& operator=(const CSafeVar&) = delete;

    virtual T Get() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_value;
    }
    virtual void Set(T value) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_value = std::move(value);
    }
    // Runs f(value) under the mutex, for read-modify-write without a gap between the two.
    template <class F>
    auto Apply(F&& f) const -> decltype(f(std::declval<const T&>())) {
        std::lock_guard<std::mutex> lock(m_mutex);
        return f(m_value);
    }
    template <class F>
    auto Apply(F&& f) -> decltype(f(std::declval<T&>())) {
        std::lock_guard<std::mutex> lock(m_mutex);
        return f(m_value);
    }

private:
    mutable std::mutex m_mutex;
    T m_value{};
};

// A guarded list of pointers; Get returns a copy so a caller can walk it without the lock.
template <class P>
class CSafeVector : public CSafeVar<std::vector<P>> {};

template <class T>
class CObjectCollector {
public:
    CObjectCollector() = default;
    virtual ~CObjectCollector() = default;
    CObjectCollector(const CObjectCollector&) = delete;
    CObjectCollector& operator=(const CObjectCollector&) = delete;

    // Appends; the same object registered twice is listed twice.
    virtual void Register(T* item) {
        m_items.Apply([item](std::vector<T*>& v) { v.push_back(item); });
    }
    // Removes the first equal entry and keeps the order of the rest; an absent one is ignored.
    virtual void Unregister(T* item) {
        m_items.Apply([item](std::vector<T*>& v) {
            auto it = std::find(v.begin(), v.end(), item);
            if (it != v.end()) v.erase(it);
        });
    }
    // A snapshot in registration order.
    std::vector<T*> GetItems() const { return m_items.Get(); }
    // Walks the live list under its mutex; f must not register or unregister.
    template <class F>
    void ForEachLocked(F&& f) const {
        m_items.Apply([&f](const std::vector<T*>& v) {
            for (T* item : v) f(item);
        });
    }
    size_t Count() const {
        return m_items.Apply([](const std::vector<T*>& v) { return v.size(); });
    }

private:
    CSafeVector<T*> m_items;
};

template <class T>
class CObjectCollectorHandler : public CObjectCollector<T> {};

// CSingleton<X>: one function-local static X per process, created on first use and destroyed at
// exit; after that GetInstance answers null for the rest of the run.
template <class X>
class CSingleton : public X {
public:
    static X* GetInstance() {
        if (X* p = s_instance.load(std::memory_order_acquire)) return p;
        if (s_destroyed.load(std::memory_order_acquire)) return nullptr;
        static CSingleton<X> instance;
        return s_instance.load(std::memory_order_acquire);
    }
    static bool IsDestroyed() { return s_destroyed.load(std::memory_order_acquire); }

    ~CSingleton() override {
        s_instance.store(nullptr, std::memory_order_release);
        s_destroyed.store(true, std::memory_order_release);
    }

private:
    CSingleton() { s_instance.store(this, std::memory_order_release); }
    static std::atomic<X*> s_instance;
    static std::atomic<bool> s_destroyed;
};
template <class X>
std::atomic<X*> CSingleton<X>::s_instance{nullptr};
template <class X>
std::atomic<bool> CSingleton<X>::s_destroyed{false};

// Names the collector class of an item kind; specialised next to each kind.
template <class T>
struct CCollectorTraits;

// Base of every self-registering object. The derived object hands in `this`, which avoids a
// downcast of a half-built object.
template <class T>
class CCollectorsItem {
public:
    using Collector = typename CCollectorTraits<T>::Collector;

    explicit CCollectorsItem(T* self) {
        if (Collector* collector = CSingleton<Collector>::GetInstance()) {
            m_collector = collector;
            m_self = self;
            m_collector->Register(m_self);
        }
    }
    virtual ~CCollectorsItem() {
        // The collector may have died first at exit; then there is nothing to leave.
        if (m_collector && m_self && !CSingleton<Collector>::IsDestroyed()) m_collector->Unregister(m_self);
    }
    CCollectorsItem(const CCollectorsItem&) = delete;
    CCollectorsItem& operator=(const CCollectorsItem&) = delete;

    bool IsRegistered() const { return m_collector != nullptr; }

private:
    T* m_self = nullptr;
    Collector* m_collector = nullptr;
};

// A non-owning pointer that starts null. Set never deletes; Delete destroys the target.
template <class T, bool OwnsOnSet = false, bool DeleteOnDestroy = false>
class CNullInitializedPointer {
    static_assert(!OwnsOnSet && !DeleteOnDestroy, "only the non-owning holder exists");

public:
    CNullInitializedPointer() = default;
    virtual ~CNullInitializedPointer() = default;
    CNullInitializedPointer(const CNullInitializedPointer&) = delete;
    CNullInitializedPointer& operator=(const CNullInitializedPointer&) = delete;

    virtual void Set(T* p) { m_p.store(p, std::memory_order_release); }
    virtual T* Get() const { return m_p.load(std::memory_order_acquire); }
    virtual T* operator->() const { return Get(); }
    virtual void Delete() {
        T* p = m_p.exchange(nullptr, std::memory_order_acq_rel);
        delete p;
    }

private:
    std::atomic<T*> m_p{nullptr};
};
