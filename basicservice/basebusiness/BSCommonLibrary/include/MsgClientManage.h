// The client of the recorder's local message bus: one per process. It owns the
// bus client, registers the process's watchdog and fans incoming messages out
// to handlers registered per event and module.
//
// Threading: nothing here takes a lock. The bus delivers messages on a thread
// of its own choosing and ReceiveMessageHandle reads the handler registry
// there, so do not register or unregister handlers while messages can be
// delivered on another thread: register before starting to wait for events,
// or do both from the same thread. Call MSGFeedWatchDog from one thread.
#ifndef MSG_CLIENT_MANAGE_H
#define MSG_CLIENT_MANAGE_H

#include "BSCommonExport.h"
#include "BusWire.h"
#include "CommonToolkit.h"

#include <cstdint>
#include <map>

// A message handler: an object and a pointer to one of its member functions
// void (T::*)(const char* message, int length), kept as the two machine words
// of the platform's C++ ABI, so that a separately built process can fill it.
//   ARM:     ptr = function address, or byte offset in the virtual table;
//            adj = this-adjustment * 2, plus 1 when the function is virtual.
//   Itanium: ptr = function address, or 1 + byte offset in the virtual table;
//            adj = this-adjustment.
// A null object or a null function makes the handler invalid; it is reported
// when a message for it arrives. Handlers must not throw.
struct CallbackFun_t {
    void* object;
    struct Method {
        std::uintptr_t ptr;
        std::intptr_t adj;
    } method;
};
static_assert(sizeof(CallbackFun_t) == 3 * sizeof(void*), "object pointer and two words");
#if defined(__arm__)
BSCOMMON_RECORD_SIZE(CallbackFun_t, 12);
#endif

// WatchDogInfo, the record that registers, feeds and unregisters the
// watchdog, is part of the bus's wire (BusWire.h).
BSCOMMON_RECORD_SIZE(WatchDogInfo, 36);

class BSCOMMON_API CMsgClientManage {
public:
    // Creates the bus client; ends the process with exit(1) if that fails.
    // A non-null dogName must point at 32 readable bytes (copied as they are)
    // and registers the watchdog under that name with dogParam.
    CMsgClientManage(char const* dogName, unsigned int dogParam);
    // Unregisters the watchdog and destroys the bus client.
    ~CMsgClientManage();
    CMsgClientManage(const CMsgClientManage&) = delete;
    CMsgClientManage& operator=(const CMsgClientManage&) = delete;

    // Registers (or replaces) the handler of module `id` for bus event
    // `event`; `callback` points at one CallbackFun_t, copied. The first
    // handler of an event subscribes it on the bus. Returns 0 for a null
    // callback, else 1.
    int RegisterMessageHandle(int id, int event, void const* callback);
    // Same with the handler given as `object` followed by exactly one pointer
    // to member function of it: MSGEventRegister(id, event, &obj, &T::OnMsg).
    int MSGEventRegister(int id, int event, void const* object, ...);
    // Removes module `id` from `event`; the last one unsubscribes the event.
    // Returns 0.
    int MSGEventUnRegister(int id, int event);

    // Forwarders to the bus with this client's handle; they return the bus's
    // result.
    int MSGSendMessage(int destination, int messageId, int session, char const* body, int length, int flags);
    int MSGResponseMessage(Common::SMessageHead* head, char const* body, int length);
    int MSGWaitForEvent(unsigned int timeout);

    // Feeds the watchdog when |curTime - time of the last feed| > 9999.
    // Returns 1 when nothing was sent, else the result of the send.
    int MSGFeedWatchDog(long long curTime);

    // Called by the bus with a whole message (16-byte Common::SMessageHead,
    // then the body) and its total length. A response (message id bit 15)
    // goes to the module named by its source id; anything else to every
    // handler of the event, in ascending module id.
    void ReceiveMessageHandle(char const* message, int length);

private:
    WatchDogInfo dogInfo; // first: sent to the bus straight from the object's start
    Common::K7X_MSG_HANDLE clientHandle;
    std::map<int, std::map<int, CallbackFun_t>> handlerMap; // event -> module id -> handler
    long long lastFeedTime;
    bool dogEnabled;
};

#endif
