// The K7X_* bus functions of the host libtoolkit go to one of two backends:
// the client of the bus daemon mdvr-busd (BusClient.cpp) or the recording
// double for unit tests (RecordingBus.cpp). The process uses one at a time,
// chosen with ToolkitHost::UseRecordingBus before it creates clients.
#ifndef BUS_BACKEND_H
#define BUS_BACKEND_H

#include "CommonToolkit.h"
#include "ToolkitHost.h"

#include <string>
#include <vector>

namespace Common {

class BusBackend {
public:
    virtual ~BusBackend() = default;
    virtual K7X_MSG_HANDLE Create(unsigned int clientType, const char* serverAddr, short port) = 0;
    virtual void Destroy(K7X_MSG_HANDLE handle) = 0;
    virtual int Register(K7X_MSG_HANDLE handle, int event, K7X_MSG_CALLBACK callback) = 0;
    virtual int Unregister(K7X_MSG_HANDLE handle, int event) = 0;
    virtual int Send(K7X_MSG_HANDLE handle, int destination, int messageId, int session, const char* body, int length,
                     int flags) = 0;
    virtual int Respond(K7X_MSG_HANDLE handle, SMessageHead* head, const char* body, unsigned int length) = 0;
    virtual int Wait(K7X_MSG_HANDLE handle, int timeout) = 0;
    // ToolkitHost::QueryBus and ToolkitHost::MonitorBus.
    virtual bool Query(K7X_MSG_HANDLE handle, ToolkitHost::BusList what, int timeout, std::string& text) = 0;
    virtual bool Monitor(K7X_MSG_HANDLE handle, const std::vector<int>& events, ToolkitHost::RoutedSink sink,
                         void* context) = 0;
};

BusBackend& DaemonBus();
BusBackend& RecordingBus();

} // namespace Common

#endif
