// The K7X_* bus functions of the host libtoolkit: each goes to the backend
// that the process chose (BusBackend.h).
#include "BusBackend.h"
#include "ToolkitHost.h"

#include <atomic>

namespace {

std::atomic<Common::BusBackend*>& Chosen()
{
    static std::atomic<Common::BusBackend*> chosen{&Common::DaemonBus()};
    return chosen;
}

Common::BusBackend& Backend() { return *Chosen().load(std::memory_order_relaxed); }

} // namespace

namespace Common {

K7X_MSG_HANDLE K7X_MSGCreateMessageClient(unsigned int clientType, const char* serverAddr, short port)
{
    return Backend().Create(clientType, serverAddr, port);
}

void K7X_MSGDestroyMessageClient(K7X_MSG_HANDLE handle) { Backend().Destroy(handle); }

int K7X_MSGEventRegister(K7X_MSG_HANDLE handle, int event, K7X_MSG_CALLBACK callback)
{
    return Backend().Register(handle, event, callback);
}

int K7X_MSGEventUnRegister(K7X_MSG_HANDLE handle, int event) { return Backend().Unregister(handle, event); }

int K7X_MSGSendMessage(K7X_MSG_HANDLE handle, int destination, int messageId, int session, const char* body,
                       int length, int flags)
{
    return Backend().Send(handle, destination, messageId, session, body, length, flags);
}

int K7X_MSGResponseMessage(K7X_MSG_HANDLE handle, SMessageHead* head, const char* body, unsigned int length)
{
    return Backend().Respond(handle, head, body, length);
}

int K7X_MSGWaitForEvent(K7X_MSG_HANDLE handle, int timeout) { return Backend().Wait(handle, timeout); }

} // namespace Common

namespace ToolkitHost {

bool QueryBus(Common::K7X_MSG_HANDLE handle, BusList what, int timeout, std::string& text)
{
    text.clear();
    return Backend().Query(handle, what, timeout, text);
}

bool MonitorBus(Common::K7X_MSG_HANDLE handle, const std::vector<int>& events, RoutedSink sink, void* context)
{
    return Backend().Monitor(handle, events, sink, context);
}

void UseRecordingBus(bool recording)
{
    Chosen().store(recording ? &Common::RecordingBus() : &Common::DaemonBus());
}

} // namespace ToolkitHost
