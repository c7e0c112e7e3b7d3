// The recording double of the bus: the K7X_* functions as the double
// implements them, called by the host libtoolkit while the double is in use.
#ifndef RECORDING_BUS_H
#define RECORDING_BUS_H

#include "ToolkitHost.h"

namespace RecordingBus {

Common::K7X_MSG_HANDLE K7X_MSGCreateMessageClient(unsigned int clientType, const char* serverAddr, short port);
void K7X_MSGDestroyMessageClient(Common::K7X_MSG_HANDLE handle);
int K7X_MSGEventRegister(Common::K7X_MSG_HANDLE handle, int event, Common::K7X_MSG_CALLBACK callback);
int K7X_MSGEventUnRegister(Common::K7X_MSG_HANDLE handle, int event);
int K7X_MSGSendMessage(Common::K7X_MSG_HANDLE handle, int destination, int messageId, int session,
                       const char* body, int length, int flags);
int K7X_MSGResponseMessage(Common::K7X_MSG_HANDLE handle, Common::SMessageHead* head, const char* body,
                           unsigned int length);
int K7X_MSGWaitForEvent(Common::K7X_MSG_HANDLE handle, int timeout);

} // namespace RecordingBus

#endif
