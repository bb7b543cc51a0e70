#pragma once
// How input reaches a view: every touch on its controls and every periodic tick is a command
// event with a numeric identifier and an integer, which the view's command distributor maps to
// one of the view's member functions. Other threads reach a view only by posting such events.
// Functors do one thing to a view when executed: switch to it, hand it a parameter and switch to
// it, or stand in for another functor.

#include <cstdint>
#include <functional>
#include <map>

#include "foundation/InstrumentEnums.h"

class wxEvent;
class CInstrumentViewInterface;

// One entry of a view's command table: the view and the member function that handles the command
// (identifier, integer parameter; true when handled).
template <class T>
class CViewCommand {
public:
    typedef bool (T::*Handler)(uint32_t id, uint32_t param);

    CViewCommand(T* object, Handler handler) : m_object(object), m_handler(handler) {}
    virtual ~CViewCommand() = default;
    CViewCommand(const CViewCommand&) = delete;
    CViewCommand& operator=(const CViewCommand&) = delete;

    // False when the command has no object or no handler.
    bool Execute(uint32_t id, uint32_t param) const {
        if (!m_object || !m_handler) return false;
        return (m_object->*m_handler)(id, param);
    }

private:
    T* m_object;
    Handler m_handler;
};

// A view's command table; owns its commands.
template <class T>
class CViewCommandDistributor {
public:
    CViewCommandDistributor() = default;
    virtual ~CViewCommandDistributor() {
        for (const auto& entry : m_commands) delete entry.second;
        m_commands.clear();
    }
    CViewCommandDistributor(const CViewCommandDistributor&) = delete;
    CViewCommandDistributor& operator=(const CViewCommandDistributor&) = delete;

    // Takes the command; one already entered under the identifier is replaced and deleted.
    void AddCommand(uint32_t id, CViewCommand<T>* command) {
        CViewCommand<T>*& slot = m_commands[id];
        if (slot != command) delete slot;
        slot = command;
    }
    bool HasCommand(uint32_t id) const { return m_commands.count(id) != 0; }
    size_t GetCommandCount() const { return m_commands.size(); }

    // Only an exact identifier counts; false when there is none or its handler says so.
    bool DistributeCommand(uint32_t id, uint32_t param) const {
        const auto it = m_commands.find(id);
        if (it == m_commands.end() || !it->second) return false;
        return it->second->Execute(id, param);
    }

private:
    std::map<uint32_t, CViewCommand<T>*> m_commands;
};

// Button clicked, check box clicked and text updated: the only events a view looks up in its
// command table.
bool IsViewCommandEvent(const wxEvent& event);

// Any thread. Queues a button-clicked event with the identifier and the integer on the view; the
// toolkit delivers it on the GUI thread, in posting order. False (and nothing posted) for a null
// view. The caller keeps the view alive until the event is delivered or the view is destroyed
// (destroying a view drops what is queued on it).
bool PostViewCommand(CInstrumentViewInterface* view, int32_t id, int32_t param);

// ---- functors ----

class CFunctorBase {
public:
    CFunctorBase() = default;
    virtual ~CFunctorBase() = default;
    CFunctorBase(const CFunctorBase&) = delete;
    CFunctorBase& operator=(const CFunctorBase&) = delete;

    virtual void Execute() = 0;
};

// A functor aimed at one view (null until set). GUI thread.
template <class V>
class CFunctorViewBase : public CFunctorBase {
public:
    virtual void SetTarget(V* view) { m_target = view; }
    V* GetTarget() const { return m_target; }

protected:
    V* m_target = nullptr;
};

// Switches to its target view.
class CViewFunctor : public CFunctorViewBase<CInstrumentViewInterface> {
public:
    void Execute() override;
};

// What a view implements to receive a parameter before it is switched to.
template <class P>
class CViewParamCallBack {
public:
    CViewParamCallBack() = default;
    virtual ~CViewParamCallBack() = default;
    CViewParamCallBack(const CViewParamCallBack&) = delete;
    CViewParamCallBack& operator=(const CViewParamCallBack&) = delete;

    virtual void ReceiveParam(P param) = 0;
};

// Switches to its target; executed with a parameter, it first hands the parameter to its
// receiver (if one is set).
template <class P>
class CViewFunctorParam : public CViewFunctor {
public:
    using CViewFunctor::Execute;

    virtual void Execute(P param) {
        if (m_receiver) m_receiver->ReceiveParam(param);
        CViewFunctor::Execute();
    }
    void SetParamReceiver(CViewParamCallBack<P>* receiver) { m_receiver = receiver; }
    CViewParamCallBack<P>* GetParamReceiver() const { return m_receiver; }

private:
    CViewParamCallBack<P>* m_receiver = nullptr;
};

// Stands for another functor, which must outlive it.
class CProxyFunctor : public CFunctorBase {
public:
    explicit CProxyFunctor(CFunctorBase& functor) : m_functor(functor) {}
    void Execute() override { m_functor.Execute(); }

private:
    CFunctorBase& m_functor;
};

// Refers to a functor that may be missing; executing without one does nothing.
class CFunctorBaseReference {
public:
    explicit CFunctorBaseReference(CFunctorBase* functor = nullptr) : m_functor(functor) {}
    virtual ~CFunctorBaseReference() = default;
    CFunctorBaseReference(const CFunctorBaseReference&) = delete;
    CFunctorBaseReference& operator=(const CFunctorBaseReference&) = delete;

    virtual void Execute() {
        if (m_functor) m_functor->Execute();
    }
    void Set(CFunctorBase* functor) { m_functor = functor; }
    CFunctorBase* Get() const { return m_functor; }

private:
    CFunctorBase* m_functor;
};

// The application-wide command-line functor: aimed at the update view by its view item, with the
// update view as its receiver; the main controller executes it once with the special command.
CViewFunctorParam<eUpdateCommandLineSpecialCmdParamCmd>& GetCommandLineFunctor();
