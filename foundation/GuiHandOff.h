#pragma once
// The one way from another thread to the GUI thread apart from the views' command events (which
// carry a view's own commands and ticks): a call queued to run on the GUI thread after the events
// queued before it. Only the GUI thread touches the toolkit's windows; other threads hand their
// wish over here.

#include <functional>
#include <memory>

// Any thread. Runs call on the GUI thread later, also when called on the GUI thread itself.
// Nothing happens without an application object. For calls on program-wide state only: a call
// that uses an object goes through that object's CGuiHandOff.
void CallOnGuiThread(const std::function<void()>& call);

// The same for calls that use an object of the GUI thread, which owns the hand-off: calls still
// queued when the hand-off is destroyed are dropped, so a call may use its owner freely.
class CGuiHandOff {
public:
    CGuiHandOff();
    // GUI thread.
    ~CGuiHandOff();
    CGuiHandOff(const CGuiHandOff&) = delete;
    CGuiHandOff& operator=(const CGuiHandOff&) = delete;

    // Any thread.
    void Post(std::function<void()> call);

private:
    // Read and cleared on the GUI thread only; other threads only copy the pointer.
    std::shared_ptr<bool> m_alive;
};
