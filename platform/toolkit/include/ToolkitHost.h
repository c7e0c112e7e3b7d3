// Hooks of the host build of libtoolkit, for tests and development tools.
// Not part of the vendor's interface: the library never includes this file.
#ifndef TOOLKIT_HOST_H
#define TOOLKIT_HOST_H

#include "CommonToolkit.h"

#include <string>
#include <vector>

namespace ToolkitHost {

// One formatted log line as gclDebugPrintf received it.
struct LogLine {
    int level;
    std::string file;
    std::string function;
    int line;
    std::string message;
};

typedef void (*LogSink)(const LogLine& line, void* context);

// Replaces standard error as the destination of every log line (no level
// filter applies to a sink). Pass nullptr to go back to standard error.
TOOLKIT_API void SetLogSink(LogSink sink, void* context);

// Collects every log line while it is alive; restores standard error after.
class TOOLKIT_API LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<LogLine>& lines() const { return lines_; }
    // Just the message texts, in order.
    std::vector<std::string> messages() const;
    void clear() { lines_.clear(); }

private:
    static void Collect(const LogLine& line, void* context);
    std::vector<LogLine> lines_;
};

// --- Where the bus is -----------------------------------------------------------
// Overrides the default endpoint: a port (TCP on 127.0.0.1), or a ZeroMQ
// endpoint such as "ipc:///tmp/b" or "tcp://127.0.0.1:7000".
const char* const kBusEnvironment = "MDVR_BUS";

// Checks that `path` is a directory that only this user may enter: not a
// symbolic link, owned by the effective user, no access for group or others.
// With `create`, makes it (mode 0700) when it is missing. False, with the
// reason in `error`, when it is not such a directory.
TOOLKIT_API bool PrivateDirectory(const std::string& path, bool create, std::string& error);

// This user's bus: ipc://$XDG_RUNTIME_DIR/mdvr-bus when XDG_RUNTIME_DIR is
// set, else ipc:///tmp/mdvr-bus-UID/bus, its directory made when missing and
// checked with PrivateDirectory. Empty, with the reason in `error`, when the
// directory is not private.
TOOLKIT_API std::string DefaultBusEndpoint(std::string& error);

// Where the bus is for a client, the daemon and the tools alike: TCP on
// `address` (127.0.0.1 when null or empty) at `port` when it is not 0, else
// MDVR_BUS when set, else DefaultBusEndpoint(). Empty, with the reason in
// `error`, when MDVR_BUS is neither a port nor an endpoint or the default's
// directory is not private.
TOOLKIT_API std::string BusEndpoint(const char* address, short port, std::string& error);

// --- The bus ------------------------------------------------------------------
// By default the K7X_* functions are a client of the development bus daemon
// mdvr-busd (docs/bus.md). UseRecordingBus(true) switches them, for the whole
// process, to a recording double that delivers nothing by itself: it records
// every K7X_* call and lets a test deliver a message to the receiver that a
// client registered. Switch before creating clients; a client belongs to the
// bus it was created on.
TOOLKIT_API void UseRecordingBus(bool recording);

// Asks the daemon for one of its lists, as a JSON array of objects (keys in
// docs/bus.md): kDogs its watchdogs, kClients its clients. Returns false
// (text empty) when the handle is unknown or no answer came within
// `timeout` ms. Messages that arrive meanwhile are delivered to the client's
// receivers.
enum class BusList { kDogs, kClients };
TOOLKIT_API bool QueryBus(Common::K7X_MSG_HANDLE handle, BusList what, int timeout, std::string& text);

// Makes the client a monitor: from now on K7X_MSGWaitForEvent also delivers,
// to `sink`, a copy of every message the daemon routes whose event is in
// `events` (all when empty): the daemon's record of how it routed it (the
// ROUTED record of the development bus, docs/bus.md) and the message as
// delivered. Copies that the client does not take in time are dropped by
// the daemon and counted in the next record. False for an unknown handle,
// an event outside 0..0xFFFF or a null sink.
typedef void (*RoutedSink)(const char* record, size_t recordSize, const char* message, size_t size,
                           void* context);
TOOLKIT_API bool MonitorBus(Common::K7X_MSG_HANDLE handle, const std::vector<int>& events, RoutedSink sink,
                            void* context);

// One call of a K7X_* bus function, with its arguments.
//   function  the function's name, e.g. "K7X_MSGSendMessage"
//   handle    the client handle (for K7X_MSGCreateMessageClient: the result)
//   numbers   the integer arguments in order:
//               K7X_MSGCreateMessageClient  clientType, port
//               K7X_MSGEventRegister        event
//               K7X_MSGEventUnRegister      event
//               K7X_MSGSendMessage          destination, messageId, session, length, flags
//               K7X_MSGResponseMessage      length
//               K7X_MSGWaitForEvent         timeout
//   text      K7X_MSGCreateMessageClient: the server address
//   pointer   K7X_MSGSendMessage: the body; K7X_MSGResponseMessage: the header;
//             K7X_MSGEventRegister: the object of the bound receiver
//   body      a copy of the body bytes (send and response)
struct BusCall {
    std::string function;
    Common::K7X_MSG_HANDLE handle = nullptr;
    std::vector<long long> numbers;
    std::string text;
    const void* pointer = nullptr;
    std::vector<unsigned char> body;
};

// The calls recorded since the last reset or clear, oldest first.
TOOLKIT_API std::vector<BusCall> BusCalls();
TOOLKIT_API void ClearBusCalls();
// Clears the record, the results and the creation failure (clients stay).
TOOLKIT_API void ResetBus();
// While set, K7X_MSGCreateMessageClient returns null.
TOOLKIT_API void SetClientCreateFails(bool fails);
// The result that the named K7X_* function returns from now on (default 0).
TOOLKIT_API void SetBusResult(const std::string& function, int result);
// Calls the receiver that `handle` registered for `event` with the message.
// Returns false when there is none.
TOOLKIT_API bool DeliverMessage(Common::K7X_MSG_HANDLE handle, int event, const char* message, int length);

} // namespace ToolkitHost

#endif
