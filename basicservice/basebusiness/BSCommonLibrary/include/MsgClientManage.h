/// @file
/// The client of the recorder's local message bus: one per process. It owns the
/// bus client, registers the process's watchdog and fans incoming messages out
/// to handlers registered per event and module.
///
/// Threading: nothing here takes a lock. The bus delivers messages on a thread
/// of its own choosing and ReceiveMessageHandle reads the handler registry
/// there, so do not register or unregister handlers while messages can be
/// delivered on another thread: register before starting to wait for events,
/// or do both from the same thread. Call MSGFeedWatchDog from one thread.
#ifndef MSG_CLIENT_MANAGE_H
#define MSG_CLIENT_MANAGE_H

#include "BSCommonExport.h"
#include "BusWire.h"
#include "CommonToolkit.h"

#include <cstdint>
#include <map>

/// A message handler: an object and a pointer to one of its member functions
/// void (T::*)(const char* message, int length), kept as the two machine words
/// of the platform's C++ ABI, so that a separately built process can fill it
/// (CMsgClientManage::MSGEventRegister() fills it from a pointer to member).
///
///     ARM:     ptr = function address, or byte offset in the virtual table;
///              adj = this-adjustment * 2, plus 1 when the function is virtual.
///     Itanium: ptr = function address, or 1 + byte offset in the virtual table;
///              adj = this-adjustment.
///
/// A null object or a null function makes the handler invalid; it is reported
/// when a message for it arrives. Handlers must not throw.
struct CallbackFun_t {
    void* object; ///< The object whose member function handles the message; it must outlive its registration.
    /// The pointer to member function as the two words of the platform's ABI.
    struct Method {
        std::uintptr_t ptr; ///< The function's address or its place in the virtual table (see CallbackFun_t).
        std::intptr_t adj;  ///< The this-adjustment, with the virtual flag on ARM (see CallbackFun_t).
    } method; ///< The member function called with (message, length).
};
static_assert(sizeof(CallbackFun_t) == 3 * sizeof(void*), "object pointer and two words");
#if defined(__arm__)
BSCOMMON_RECORD_SIZE(CallbackFun_t, 12);
#endif

// WatchDogInfo, the record that registers, feeds and unregisters the watchdog, is part of the
// bus's wire (BusWire.h).
BSCOMMON_RECORD_SIZE(WatchDogInfo, 36);

/// The process's client of the message bus: the bus client, the watchdog and a
/// registry of message handlers by event and module id. No base class, no
/// virtual functions; not copyable.
class BSCOMMON_API CMsgClientManage {
public:
    /// Creates the bus client (`K7X_MSGCreateMessageClient(30, "127.0.0.1", 0)`) and, with a
    /// name, registers the watchdog and prints "MSG_MANAGE: pid = ..., dog_name = ..." on
    /// standard output.
    ///
    /// When the bus client cannot be created (on a PC: no mdvr-busd answers) it logs "Create
    /// message handle failed" and ends the process with exit(1); it never returns half made.
    /// @param dogName  null for no watchdog (logged at level 0 as "Watch Dog name is NULL"), else
    ///                 32 readable bytes, copied as they are into WatchDogInfo::dogName
    /// @param dogParam copied unchanged into WatchDogInfo::dogParam of the registration; the
    ///                 library gives it no unit and no default of its own. The watchdog service
    ///                 reads it: the development bus (mdvr-busd) as the timeout in milliseconds,
    ///                 0 meaning 30000 ms (BusWire::kDogDefaultTimeoutMs). Unused without a name.
    CMsgClientManage(char const* dogName, unsigned int dogParam);
    /// Unregisters the watchdog (when one was registered) and destroys the bus client, which
    /// ends every subscription of this object.
    ~CMsgClientManage();
    CMsgClientManage(const CMsgClientManage&) = delete;            ///< Not copyable: it owns the bus client.
    CMsgClientManage& operator=(const CMsgClientManage&) = delete; ///< Not assignable: it owns the bus client.

    /// Registers (or replaces) the handler of module @p id for bus event @p event. The first
    /// handler of an event subscribes the event on the bus; later ones only join the registry.
    /// An invalid handler is stored as given and reported when a message for it arrives.
    /// @param id       the module id, chosen by the caller; a response reaches the module whose
    ///                 id is its source id
    /// @param event    the message id (16 bits on the wire; a response has bit 15 set)
    /// @param callback points at one CallbackFun_t, which is copied
    /// @return 0 for a null @p callback (nothing stored), else 1, even when the bus refused the
    ///         subscription.
    int RegisterMessageHandle(int id, int event, void const* callback);
    /// Registers a handler given as an object and one pointer to its member function:
    /// `MSGEventRegister(id, event, &obj, &T::OnMsg)` with `void T::OnMsg(const char*, int)`.
    /// @param id     the module id, as for RegisterMessageHandle()
    /// @param event  the message id, as for RegisterMessageHandle()
    /// @param object the object the handler is called on
    /// @return 1, as RegisterMessageHandle() for a non-null record.
    int MSGEventRegister(int id, int event, void const* object, ...);
    /// Removes module @p id from @p event; removing the event's last module unsubscribes the
    /// event on the bus. An unknown event or module changes nothing.
    /// @param id    the module id
    /// @param event the message id
    /// @return 0 always.
    int MSGEventUnRegister(int id, int event);

    /// Sends a message through the bus (`K7X_MSGSendMessage` with this client's handle).
    /// @param destination the bus's destination argument
    /// @param messageId   the message id
    /// @param session     the session number, carried to the receiver and its response
    /// @param body        the body, @p length bytes
    /// @param length      the body's length
    /// @param flags       the bus's last argument (the sending module's id on the host bus)
    /// @return the bus's result unchanged.
    int MSGSendMessage(int destination, int messageId, int session, char const* body, int length, int flags);
    /// Answers a message (`K7X_MSGResponseMessage` with this client's handle).
    /// @param head   the header of the message being answered
    /// @param body   the answer's body, @p length bytes
    /// @param length the body's length
    /// @return the bus's result unchanged.
    int MSGResponseMessage(Common::SMessageHead* head, char const* body, int length);
    /// Waits for messages and delivers them (`K7X_MSGWaitForEvent` with this client's handle);
    /// with the host bus the handlers run inside this call, on the calling thread.
    /// @param timeout the longest wait in milliseconds
    /// @return the bus's result unchanged.
    int MSGWaitForEvent(unsigned int timeout);

    /// Feeds the watchdog when |@p curTime - time of the last feed| > 9999, that is at most every
    /// ten seconds of GetSystemMilliSecond(); the first call with a time above 9999 feeds.
    /// @param curTime the caller's clock in milliseconds
    /// @return 1 when nothing was sent (no watchdog, or too soon), else the result of the send.
    int MSGFeedWatchDog(long long curTime);

    /// The receiver that every subscription delivers to: the bus calls it with a whole message.
    /// A response (message id bit 15) goes to the handler whose module id is the header's source
    /// id; anything else to every handler of the event, in ascending module id. Handlers get the
    /// same @p message and @p length.
    /// @param message the 16-byte Common::SMessageHead, then the body
    /// @param length  the total length; a message whose header's body length plus 16 differs is
    ///                dropped and logged ("Invalid Parameter Length"), as are invalid handlers
    ///                ("callback ptr error"); unknown events and modules are dropped silently
    void ReceiveMessageHandle(char const* message, int length);

private:
    WatchDogInfo dogInfo; // first: sent to the bus straight from the object's start
    Common::K7X_MSG_HANDLE clientHandle;
    std::map<int, std::map<int, CallbackFun_t>> handlerMap; // event -> module id -> handler
    long long lastFeedTime;
    bool dogEnabled;
};

#endif
