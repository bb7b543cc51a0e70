#pragma once
// The registry of views and the switching between them. No view is created by name anywhere:
// each view class has one process-static view item, which registers a creator and a destroyer
// with the view manager during static construction. The main controller has the manager create
// every registered view at start-up and destroy them all at shutdown. One view is active at a
// time; a switch hides the old one, waits 100 ms and shows the new one.

#include <atomic>

#include "app/InstrumentView.h"
#include "app/ViewCommands.h"
#include "foundation/Collectors.h"

// A creator of one kind: registers with the kind's manager (CCollectorTraits<Kind>::Collector,
// reached through its singleton) when built, leaves it when destroyed. Once the manager has been
// destroyed at exit, a new creator registers nothing and its destruction does nothing.
template <class Kind, class Needs>
class CCreator {
public:
    using Manager = typename CCollectorTraits<Kind>::Collector;

    explicit CCreator(Kind* owner) : m_owner(owner) {
        if (Manager* manager = CSingleton<Manager>::GetInstance()) {
            m_manager = manager;
            m_manager->AddCreator(this);
        }
    }
    virtual ~CCreator() {
        if (m_manager && !CSingleton<Manager>::IsDestroyed()) m_manager->RemoveCreator(this);
    }
    CCreator(const CCreator&) = delete;
    CCreator& operator=(const CCreator&) = delete;

    virtual void Create(Needs& needs) = 0;

    Kind* GetOwner() const { return m_owner; }
    bool IsRegistered() const { return m_manager != nullptr; }

protected:
    Kind* m_owner;
    Manager* m_manager = nullptr;
};

template <class Kind>
class CDestroyer {
public:
    using Manager = typename CCollectorTraits<Kind>::Collector;

    explicit CDestroyer(Kind* owner) : m_owner(owner) {
        if (Manager* manager = CSingleton<Manager>::GetInstance()) {
            m_manager = manager;
            m_manager->AddDestroyer(this);
        }
    }
    virtual ~CDestroyer() {
        if (m_manager && !CSingleton<Manager>::IsDestroyed()) m_manager->RemoveDestroyer(this);
    }
    CDestroyer(const CDestroyer&) = delete;
    CDestroyer& operator=(const CDestroyer&) = delete;

    virtual void Destroy() = 0;

    Kind* GetOwner() const { return m_owner; }
    bool IsRegistered() const { return m_manager != nullptr; }

protected:
    Kind* m_owner;
    Manager* m_manager = nullptr;
};

// The registered creators of a kind, in registration order. Owns none of them.
template <class Kind, class Needs>
class CFactory {
public:
    CFactory() = default;
    virtual ~CFactory() = default;
    CFactory(const CFactory&) = delete;
    CFactory& operator=(const CFactory&) = delete;

    virtual void AddCreator(CCreator<Kind, Needs>* creator) { m_creators.Register(creator); }
    // The first equal entry; an absent one is ignored.
    virtual void RemoveCreator(CCreator<Kind, Needs>* creator) { m_creators.Unregister(creator); }

    // Calls every creator in registration order with the creators' lock held: a creator must not
    // register or unregister anything while it creates.
    void CreateAll(Needs& needs) {
        m_creators.ForEachLocked([&needs](CCreator<Kind, Needs>* creator) { creator->Create(needs); });
    }
    size_t GetCreatorCount() const { return m_creators.Count(); }
    std::vector<CCreator<Kind, Needs>*> GetCreators() const { return m_creators.GetItems(); }

private:
    CObjectCollector<CCreator<Kind, Needs>> m_creators;
};

template <class Kind>
class CTerminator {
public:
    CTerminator() = default;
    virtual ~CTerminator() = default;
    CTerminator(const CTerminator&) = delete;
    CTerminator& operator=(const CTerminator&) = delete;

    virtual void AddDestroyer(CDestroyer<Kind>* destroyer) { m_destroyers.Register(destroyer); }
    virtual void RemoveDestroyer(CDestroyer<Kind>* destroyer) { m_destroyers.Unregister(destroyer); }

    void DestroyAll() {
        m_destroyers.ForEachLocked([](CDestroyer<Kind>* destroyer) { destroyer->Destroy(); });
    }
    size_t GetDestroyerCount() const { return m_destroyers.Count(); }
    std::vector<CDestroyer<Kind>*> GetDestroyers() const { return m_destroyers.GetItems(); }

private:
    CObjectCollector<CDestroyer<Kind>> m_destroyers;
};

// ---- views ----

class CInstrumentViewItemCreator;
class CInstrumentViewItemDestroyer;
class CInstrumentViewManager;
template <>
struct CCollectorTraits<CInstrumentViewItemCreator> {
    using Collector = CInstrumentViewManager;
};
template <>
struct CCollectorTraits<CInstrumentViewItemDestroyer> {
    using Collector = CInstrumentViewManager;
};

// Reached through CSingleton<CInstrumentViewManager>. GUI thread.
class CInstrumentViewManager : public CFactory<CInstrumentViewItemCreator, const CInstrumentViewCreatorNeeds>,
                               public CTerminator<CInstrumentViewItemDestroyer> {
public:
    void CreateAllViews(const CInstrumentViewCreatorNeeds& needs) { CreateAll(needs); }
    void DestroyAllViews() { DestroyAll(); }
};

// The creator side of a view item; holds the registered creator.
class CInstrumentViewItemCreator {
public:
    CInstrumentViewItemCreator();
    virtual ~CInstrumentViewItemCreator();
    CInstrumentViewItemCreator(const CInstrumentViewItemCreator&) = delete;
    CInstrumentViewItemCreator& operator=(const CInstrumentViewItemCreator&) = delete;

    virtual void Create(const CInstrumentViewCreatorNeeds& needs) = 0;
    virtual void Destroy() = 0;
    bool IsCreatorRegistered() const { return m_creator.IsRegistered(); }

private:
    class CItemCreator : public CCreator<CInstrumentViewItemCreator, const CInstrumentViewCreatorNeeds> {
    public:
        using CCreator::CCreator;
        void Create(const CInstrumentViewCreatorNeeds& needs) override { m_owner->Create(needs); }
    };
    CItemCreator m_creator;
};

// The destroyer side of a view item; holds the registered destroyer.
class CInstrumentViewItemDestroyer {
public:
    CInstrumentViewItemDestroyer();
    virtual ~CInstrumentViewItemDestroyer();
    CInstrumentViewItemDestroyer(const CInstrumentViewItemDestroyer&) = delete;
    CInstrumentViewItemDestroyer& operator=(const CInstrumentViewItemDestroyer&) = delete;

    virtual void Destroy() = 0;
    bool IsDestroyerRegistered() const { return m_destroyer.IsRegistered(); }

private:
    class CItemDestroyer : public CDestroyer<CInstrumentViewItemDestroyer> {
    public:
        using CDestroyer::CDestroyer;
        void Destroy() override { m_owner->Destroy(); }
    };
    CItemDestroyer m_destroyer;
};

// One view class's item: holds the view once created.
class CInstrumentViewItem : public CInstrumentViewItemCreator, public CInstrumentViewItemDestroyer {
public:
    CInstrumentViewItem() = default;
    // A view still held at exit is left alone: the toolkit is gone by then.
    ~CInstrumentViewItem() override;

    // Deletes the view, if there is one. A switcher or functor still aimed at it is cleared.
    void Destroy() override;
    CInstrumentViewInterface* GetView() const { return m_view; }

protected:
    CInstrumentViewInterface* m_view = nullptr;
};

// The process-static item of the view class T. Create builds the one view of T (only the first
// time) from the creation needs and aims the item's functor, if any, at it.
template <class T>
class TInstrumentViewItem : public CInstrumentViewItem {
public:
    explicit TInstrumentViewItem(CViewFunctor* functor = nullptr) : m_functor(functor) {}

    void Create(const CInstrumentViewCreatorNeeds& needs) override {
        if (!m_view) m_view = new T(needs);
        if (m_functor) m_functor->SetTarget(m_view);
    }
    void Destroy() override {
        if (m_functor && m_functor->GetTarget() == m_view) m_functor->SetTarget(nullptr);
        CInstrumentViewItem::Destroy();
    }
    T* GetTypedView() const { return static_cast<T*>(m_view); }
    CViewFunctor* GetFunctor() const { return m_functor; }

private:
    CViewFunctor* m_functor;
};

// Reached through CSingleton<CViewSwitcher>. The active view is written on the GUI thread and
// read by the tick thread.
class CViewSwitcher {
public:
    CViewSwitcher() = default;
    virtual ~CViewSwitcher() = default;
    CViewSwitcher(const CViewSwitcher&) = delete;
    CViewSwitcher& operator=(const CViewSwitcher&) = delete;

    CInstrumentViewInterface* GetActiveView() const { return m_activeView.load(std::memory_order_acquire); }
    void SetActiveView(CInstrumentViewInterface* view) { m_activeView.store(view, std::memory_order_release); }

private:
    std::atomic<CInstrumentViewInterface*> m_activeView{nullptr};
};

// The active view, or null (also once the switcher is gone at exit).
CInstrumentViewInterface* GetActiveView();

// GUI thread. Deactivates the active view, makes view (may be null) the active one, sleeps
// kViewSwitchPauseMs and activates it. Switching to the active view deactivates and reactivates
// it.
enum : unsigned { kViewSwitchPauseMs = 100 };
void SwitchToView(CInstrumentViewInterface* view);
