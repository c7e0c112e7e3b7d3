// The part of the maker's support library (libtoolkit, namespace Common)
// that BSCommonLibrary uses: debug logging and the local message bus.
//
// On the recorder this interface is provided by the vendor's build of
// libtoolkit. On a development machine the host build in platform/toolkit/src
// provides it: logging to standard error and a client of the development bus
// daemon mdvr-busd (docs/bus.md), or a recording double of the bus for tests.
#ifndef COMMON_TOOLKIT_H
#define COMMON_TOOLKIT_H

#include <cstring>

#define TOOLKIT_API __attribute__((visibility("default")))

namespace Common {

// Log levels used by the library: 0 marks errors, 4 informational traces.
TOOLKIT_API void gclDebugPrintf(int level, const char* file, const char* function, int line,
                                const char* format, ...) __attribute__((format(printf, 5, 6)));

/// The 16-byte header at the start of every bus message; the body follows it.
///
/// A message handler registered with CMsgClientManage receives the whole message, this header
/// first, and its total length (16 plus the body's length); ParseJsonMessage() skips the header
/// and parses the body. To answer a message, copy its header out of the message (it need not be
/// aligned) and pass it to CMsgClientManage::MSGResponseMessage(). A program that holds only a
/// JSON body puts a zeroed header with messageId and length set in front of it (docs/guide.md).
struct SMessageHead {
    int sourceId;             ///< The sender's module id; in a response, the module it is addressed to.
    int session;              ///< The session number chosen by the sender, carried into the response.
    unsigned short flags;     ///< Owned by the bus.
    unsigned short messageId; ///< The event (message id); bit 15 (BusWire::kResponseBit) marks a response.
    unsigned int length;      ///< Bits 0-22: the body's length; bits 23-31 are owned by the bus.
};
static_assert(sizeof(SMessageHead) == 16, "bus message header is 16 bytes");

typedef void* K7X_MSG_HANDLE;

/// A receiver bound to an object: the object, its member function (kept as the
/// raw bytes of a pointer to member function) and a thunk that calls it.
struct K7X_MSG_CALLBACK {
    void* object;                            ///< The object the member function is called on.
    unsigned char method[2 * sizeof(void*)]; ///< The pointer to member function, as its raw bytes.
    /// Calls `method` on `object` with the message and its length.
    void (*invoke)(const K7X_MSG_CALLBACK& self, const char* message, int length);
};

template <class T>
K7X_MSG_CALLBACK K7X_Bind(T* object, void (T::*method)(const char*, int))
{
    typedef void (T::*Method)(const char*, int);
    static_assert(sizeof(Method) == sizeof(K7X_MSG_CALLBACK::method), "pointer to member size");
    K7X_MSG_CALLBACK cb;
    cb.object = object;
    std::memcpy(cb.method, &method, sizeof(Method));
    cb.invoke = [](const K7X_MSG_CALLBACK& self, const char* message, int length) {
        Method m;
        std::memcpy(&m, self.method, sizeof(Method));
        (static_cast<T*>(self.object)->*m)(message, length);
    };
    return cb;
}

TOOLKIT_API K7X_MSG_HANDLE K7X_MSGCreateMessageClient(unsigned int clientType, const char* serverAddr,
                                                      short port);
TOOLKIT_API void K7X_MSGDestroyMessageClient(K7X_MSG_HANDLE handle);
TOOLKIT_API int K7X_MSGEventRegister(K7X_MSG_HANDLE handle, int event, K7X_MSG_CALLBACK callback);
TOOLKIT_API int K7X_MSGEventUnRegister(K7X_MSG_HANDLE handle, int event);
TOOLKIT_API int K7X_MSGSendMessage(K7X_MSG_HANDLE handle, int destination, int messageId, int session,
                                   const char* body, int length, int flags);
TOOLKIT_API int K7X_MSGResponseMessage(K7X_MSG_HANDLE handle, SMessageHead* head, const char* body,
                                       unsigned int length);
TOOLKIT_API int K7X_MSGWaitForEvent(K7X_MSG_HANDLE handle, int timeout);

} // namespace Common

#endif
