// Host build of the support library's message bus: a client of the
// development bus daemon mdvr-busd over ZeroMQ (the wire: BusWire.h,
// docs/bus.md).
//
// A client is one DEALER socket connected to the daemon's ROUTER. Messages are
// delivered inside K7X_MSGWaitForEvent, on the caller's thread, by calling the
// receiver bound to the message's event: one blocking receive with a timeout,
// one message delivered. A client handle belongs to one thread at a time, like
// the socket under it. A monitor on the socket, read on the clock, tells when
// the connection to the daemon is made again after a loss; the client then
// repeats its hello, its subscriptions and its watchdog registration, so a
// restarted daemon knows it again without help from the process.
#include "BusBackend.h"
#include "BusWire.h"
#include "ToolkitHost.h"

#include <unistd.h>

#include <zmq.hpp>

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <string>

#define BUS_LOG(level, ...) Common::gclDebugPrintf(level, "platform/toolkit/src/BusClient", __func__, __LINE__, __VA_ARGS__)

namespace {

using Common::K7X_MSG_HANDLE;

const int kConnectTimeoutMs = 3000; // creation fails when no daemon answers by then
const int kSendTimeoutMs = 1000;    // a send waits this long for room, then fails
const int kByeTimeoutMs = 500;      // destruction waits this long for the daemon's receipt
const int kMonitorMs = 100;         // the connection events are read this often
const int kHighWater = 200;         // messages queued each way

struct Client {
    Client(zmq::context_t& context, int id)
        : socket(context, zmq::socket_type::dealer), monitor(context, zmq::socket_type::pair),
          monitorEndpoint("inproc://mdvr-bus-monitor-" + std::to_string(id))
    {
    }
    zmq::socket_t socket;
    zmq::socket_t monitor;
    std::string monitorEndpoint;
    std::string endpoint;
    unsigned int type = 0;
    bool connected = false;
    long long monitorDue = 0;    // when the connection events are read next
    int receiveTimeout = -1;     // as set on the socket
    std::map<int, Common::K7X_MSG_CALLBACK> receivers; // by event
    std::string dogRecord;       // the last watchdog registration, repeated on reconnection
    zmq::message_t frames[2];    // of the message received last: a bus message, or a command and its argument
    size_t count = 0;
};

enum class Got { kNothing, kMessage, kInterrupted, kFailed };

struct Registry {
    std::mutex mutex;
    std::set<Client*> clients;
    int next = 0;
};

Registry& Clients()
{
    static Registry registry;
    return registry;
}

// One context for the process, never destroyed: clients may outlive static
// destruction, and terminating a context blocks on open sockets.
zmq::context_t& Context()
{
    static zmq::context_t* context = new zmq::context_t(1);
    return *context;
}

Client* Find(K7X_MSG_HANDLE handle, const char* function)
{
    Registry& registry = Clients();
    std::lock_guard<std::mutex> lock(registry.mutex);
    Client* client = static_cast<Client*>(handle);
    if (registry.clients.count(client))
        return client;
    Common::gclDebugPrintf(0, "platform/toolkit/src/BusClient", function, __LINE__,
                           "bus: unknown client handle %p\n", handle);
    return nullptr;
}

zmq::message_t Int32(std::int32_t value) { return zmq::message_t(&value, sizeof value); }

// Sends a bus message: one frame. False when the daemon cannot take it (not
// connected, or no room within the send timeout).
bool SendFrame(Client& c, zmq::message_t frame)
{
    try {
        return c.socket.send(frame, zmq::send_flags::none).has_value();
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: sending to %s failed: %s\n", c.endpoint.c_str(), e.what());
        return false;
    }
}

// Sends one command with an optional argument, like SendFrame.
bool SendCommand(Client& c, const char* command, zmq::message_t argument, bool withArgument = true)
{
    try {
        zmq::message_t head(command, std::strlen(command));
        if (!c.socket.send(head, withArgument ? zmq::send_flags::sndmore : zmq::send_flags::none))
            return false;
        if (withArgument)
            c.socket.send(argument, zmq::send_flags::none); // the rest of a started message always goes
        return true;
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: sending %s to %s failed: %s\n", command, c.endpoint.c_str(), e.what());
        return false;
    }
}

bool Deliverable(int event) { return event >= 0 && event <= 0xFFFF; }

// Tells a daemon who we are and what we listen to: after connecting, and
// again after every reconnection.
void Introduce(Client& c)
{
    std::int32_t hello[2] = {static_cast<std::int32_t>(getpid()), static_cast<std::int32_t>(c.type)};
    SendCommand(c, BusWire::kHello, zmq::message_t(hello, sizeof hello));
    for (const auto& receiver : c.receivers)
        if (Deliverable(receiver.first))
            SendCommand(c, BusWire::kSub, Int32(receiver.first));
    if (!c.dogRecord.empty())
        SendFrame(c, zmq::message_t(c.dogRecord.data(), c.dogRecord.size()));
}

// Reads the connection events that have arrived; waits up to `timeout` ms for
// the first one.
void ReadMonitor(Client& c, int timeout)
{
    zmq::pollitem_t item{static_cast<void*>(c.monitor), 0, ZMQ_POLLIN, 0};
    try {
        while (zmq::poll(&item, 1, std::chrono::milliseconds(timeout)) > 0) {
            timeout = 0;
            zmq::message_t event, address;
            if (!c.monitor.recv(event) || !c.monitor.recv(address))
                return;
            std::uint16_t id = 0;
            if (event.size() >= sizeof id)
                std::memcpy(&id, event.data(), sizeof id);
            if (id == ZMQ_EVENT_HANDSHAKE_SUCCEEDED) {
                const bool again = !c.connected;
                c.connected = true;
                if (again)
                    Introduce(c);
                BUS_LOG(4, "bus: connected to %s\n", c.endpoint.c_str());
            } else if (id == ZMQ_EVENT_DISCONNECTED) {
                c.connected = false;
                BUS_LOG(4, "bus: lost the connection to %s\n", c.endpoint.c_str());
            }
        }
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: monitor of %s failed: %s\n", c.endpoint.c_str(), e.what());
    }
}

// Whether the daemon is there, from the connection events read on the clock
// (or at once while it is away): a send that finds no daemon fails by itself
// within the send timeout.
bool Connected(Client& c)
{
    const long long now = BusWire::Now();
    if (!c.connected || now >= c.monitorDue) {
        ReadMonitor(c, 0);
        c.monitorDue = now + kMonitorMs;
    }
    return c.connected;
}

// Receives one message into c.frames, waiting up to `timeout` ms.
Got Receive(Client& c, int timeout)
{
    try {
        if (timeout != c.receiveTimeout) {
            c.socket.set(zmq::sockopt::rcvtimeo, timeout);
            c.receiveTimeout = timeout;
        }
        if (!c.socket.recv(c.frames[0]))
            return Got::kNothing;
        c.count = 1;
        for (bool more = c.frames[0].more(); more; ++c.count) {
            zmq::message_t& frame = c.frames[std::min<size_t>(c.count, 1)];
            (void)c.socket.recv(frame); // the parts of a message arrive together
            more = frame.more();
        }
        return Got::kMessage;
    } catch (const zmq::error_t& e) {
        if (e.num() == EINTR)
            return Got::kInterrupted;
        BUS_LOG(0, "bus: receiving from %s failed: %s\n", c.endpoint.c_str(), e.what());
        return Got::kFailed;
    }
}

void Deliver(Client& c, const zmq::message_t& message)
{
    const Common::SMessageHead head = BusWire::ReadHead(message.data());
    auto found = c.receivers.find(head.messageId);
    if (found == c.receivers.end()) {
        BUS_LOG(4, "bus: no receiver for event 0x%x, dropped\n", head.messageId);
        return;
    }
    const Common::K7X_MSG_CALLBACK receiver = found->second;
    receiver.invoke(receiver, static_cast<const char*>(message.data()), static_cast<int>(message.size()));
}

// Waits up to `timeout` ms (negative: without end) for one message and
// delivers it: 1, or 0 when none came (or a signal came first), -1 on
// failure. With `dogs`, also ends when the watchdog list has come into it.
int Wait(Client& c, int timeout, std::string* dogs = nullptr)
{
    const long long deadline = timeout < 0 ? -1 : BusWire::Now() + timeout;
    for (;;) {
        long long now = BusWire::Now();
        if (now >= c.monitorDue) {
            ReadMonitor(c, 0);
            c.monitorDue = now + kMonitorMs;
        }
        long long wait = c.monitorDue - now;
        if (deadline >= 0)
            wait = std::min(wait, std::max(0LL, deadline - now));
        switch (Receive(c, static_cast<int>(wait))) {
        case Got::kFailed:
            return -1;
        case Got::kInterrupted:
            return 0;
        case Got::kNothing:
            break;
        case Got::kMessage:
            if (c.count == 1 && c.frames[0].size() >= BusWire::kHeadSize) {
                const zmq::message_t message(std::move(c.frames[0])); // a receiver may wait again
                Deliver(c, message);
                return 1;
            }
            const std::string command = c.frames[0].to_string();
            if (command == BusWire::kDogs && c.count == 2 && dogs != nullptr) {
                *dogs = c.frames[1].to_string();
                return 0;
            }
            if (command != BusWire::kBye && command != BusWire::kDogs)
                BUS_LOG(0, "bus: dropped an unknown message \"%s\" from the bus\n", command.c_str());
            break;
        }
        if (deadline >= 0 && BusWire::Now() >= deadline)
            return 0;
    }
}

// Checks the arguments of a message and builds its frame: header then body.
bool BuildFrame(const char* function, zmq::message_t& frame, const Common::SMessageHead& head, const char* body,
                long long length)
{
    if (length < 0 || length > BusWire::kBodyMax) {
        Common::gclDebugPrintf(0, "platform/toolkit/src/BusClient", function, __LINE__,
                               "bus: body length %lld of event 0x%x outside 0..%u, not sent\n", length,
                               head.messageId, BusWire::kBodyMax);
        return false;
    }
    if (body == nullptr && length > 0) {
        Common::gclDebugPrintf(0, "platform/toolkit/src/BusClient", function, __LINE__,
                               "bus: null body with length %lld for event 0x%x, not sent\n", length,
                               head.messageId);
        return false;
    }
    frame.rebuild(BusWire::kHeadSize + static_cast<size_t>(length));
    BusWire::WriteHead(frame.data(), head);
    if (length > 0)
        std::memcpy(static_cast<char*>(frame.data()) + BusWire::kHeadSize, body, static_cast<size_t>(length));
    return true;
}

class Daemon : public Common::BusBackend {
public:
    K7X_MSG_HANDLE Create(unsigned int clientType, const char* serverAddr, short port) override
    {
        std::string error;
        const std::string endpoint = ToolkitHost::BusEndpoint(serverAddr, port, error);
        if (endpoint.empty()) {
            BUS_LOG(0, "bus: %s\n", error.c_str());
            return nullptr;
        }
        Client* c = nullptr;
        try {
            int id;
            {
                std::lock_guard<std::mutex> lock(Clients().mutex);
                id = ++Clients().next;
            }
            c = new Client(Context(), id);
            c->endpoint = endpoint;
            c->type = clientType;
            c->socket.set(zmq::sockopt::immediate, 1); // queue nothing while there is no daemon
            c->socket.set(zmq::sockopt::linger, 0);
            c->socket.set(zmq::sockopt::reconnect_ivl, 100);
            c->socket.set(zmq::sockopt::sndtimeo, kSendTimeoutMs);
            c->socket.set(zmq::sockopt::sndhwm, kHighWater);
            c->socket.set(zmq::sockopt::rcvhwm, kHighWater);
            c->socket.set(zmq::sockopt::maxmsgsize, static_cast<int64_t>(BusWire::kHeadSize + BusWire::kBodyMax));
            if (zmq_socket_monitor(static_cast<void*>(c->socket), c->monitorEndpoint.c_str(),
                                   ZMQ_EVENT_HANDSHAKE_SUCCEEDED | ZMQ_EVENT_DISCONNECTED) != 0)
                throw zmq::error_t();
            c->monitor.connect(c->monitorEndpoint);
            c->socket.connect(endpoint);
        } catch (const zmq::error_t& e) {
            BUS_LOG(0, "bus: cannot connect to %s: %s\n", endpoint.c_str(), e.what());
            delete c;
            return nullptr;
        }
        const long long deadline = BusWire::Now() + kConnectTimeoutMs;
        while (!c->connected && BusWire::Now() < deadline)
            ReadMonitor(*c, static_cast<int>(deadline - BusWire::Now()));
        if (!c->connected) {
            BUS_LOG(0, "bus: no bus daemon answers at %s\n", endpoint.c_str());
            delete c;
            return nullptr;
        }
        c->monitorDue = BusWire::Now() + kMonitorMs;
        std::lock_guard<std::mutex> lock(Clients().mutex);
        Clients().clients.insert(c);
        return c;
    }

    void Destroy(K7X_MSG_HANDLE handle) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return;
        {
            std::lock_guard<std::mutex> lock(Clients().mutex);
            Clients().clients.erase(c);
        }
        // The daemon's receipt of the goodbye means that everything sent before
        // it (a watchdog unregistration, say) has arrived. Messages that come
        // meanwhile are not delivered: their receivers are going.
        ReadMonitor(*c, 0);
        if (c->connected && SendCommand(*c, BusWire::kBye, zmq::message_t(), false)) {
            const long long deadline = BusWire::Now() + kByeTimeoutMs;
            for (long long left = kByeTimeoutMs; left > 0; left = deadline - BusWire::Now())
                if (Receive(*c, static_cast<int>(left)) == Got::kMessage && c->count == 1 &&
                    c->frames[0].to_string() == BusWire::kBye)
                    break;
        }
        zmq_socket_monitor(static_cast<void*>(c->socket), nullptr, 0);
        delete c;
    }

    int Register(K7X_MSG_HANDLE handle, int event, Common::K7X_MSG_CALLBACK callback) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return -1;
        // Kept even when the daemon is away: it is told on reconnection. An
        // event outside 16 bits is never delivered: the daemon is not told.
        c->receivers[event] = callback;
        if (Deliverable(event) && Connected(*c))
            SendCommand(*c, BusWire::kSub, Int32(event));
        return 0;
    }

    int Unregister(K7X_MSG_HANDLE handle, int event) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return -1;
        c->receivers.erase(event);
        if (Deliverable(event) && Connected(*c))
            SendCommand(*c, BusWire::kUnsub, Int32(event));
        return 0;
    }

    int Send(K7X_MSG_HANDLE handle, int destination, int messageId, int session, const char* body, int length,
             int flags) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return -1;
        if (destination < 0 || destination > 0xFFFF || !Deliverable(messageId)) {
            BUS_LOG(0, "bus: destination %d or event 0x%x outside 16 bits, not sent\n", destination, messageId);
            return -1;
        }
        if (messageId & BusWire::kResponseBit) {
            BUS_LOG(0, "bus: event 0x%x is a response id: K7X_MSGResponseMessage answers; not sent\n", messageId);
            return -1;
        }
        // On the way to the daemon the flags field names the destination client;
        // the daemon replaces it with the sender's client id.
        const Common::SMessageHead head{flags, session, static_cast<unsigned short>(destination),
                                        static_cast<unsigned short>(messageId), static_cast<unsigned int>(length)};
        zmq::message_t frame;
        if (!BuildFrame(__func__, frame, head, body, length))
            return -1;
        if (destination == 0 && messageId == BusWire::kDogRegister)
            c->dogRecord.assign(static_cast<const char*>(frame.data()), frame.size());
        else if (destination == 0 && messageId == BusWire::kDogUnregister)
            c->dogRecord.clear();
        if (!Connected(*c) || !SendFrame(*c, std::move(frame))) {
            BUS_LOG(0, "bus: no bus daemon at %s, event 0x%x dropped\n", c->endpoint.c_str(), messageId);
            return -1;
        }
        return 0;
    }

    int Respond(K7X_MSG_HANDLE handle, Common::SMessageHead* head, const char* body, unsigned int length) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return -1;
        if (head == nullptr) {
            BUS_LOG(0, "bus: response without the request's header, not sent\n");
            return -1;
        }
        // The request's source module and session come back; its flags field
        // (the requesting client) tells the daemon where the response goes.
        Common::SMessageHead request;
        std::memcpy(&request, head, sizeof request);
        const Common::SMessageHead response{request.sourceId, request.session, request.flags,
                                            static_cast<unsigned short>(request.messageId | BusWire::kResponseBit),
                                            length};
        zmq::message_t frame;
        if (!BuildFrame(__func__, frame, response, body, length))
            return -1;
        if (!Connected(*c) || !SendFrame(*c, std::move(frame))) {
            BUS_LOG(0, "bus: no bus daemon at %s, response 0x%x dropped\n", c->endpoint.c_str(),
                    response.messageId);
            return -1;
        }
        return 0;
    }

    int Wait(K7X_MSG_HANDLE handle, int timeout) override
    {
        Client* c = Find(handle, __func__);
        return c == nullptr ? -1 : ::Wait(*c, timeout);
    }

    bool QueryDogs(K7X_MSG_HANDLE handle, int timeout, std::string& text)
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr || !Connected(*c) || !SendCommand(*c, BusWire::kDogs, zmq::message_t(), false))
            return false;
        const long long deadline = BusWire::Now() + timeout;
        for (long long left = timeout; text.empty() && left > 0; left = deadline - BusWire::Now())
            if (::Wait(*c, static_cast<int>(left), &text) < 0)
                break;
        return !text.empty();
    }
};

Daemon& TheDaemon()
{
    static Daemon daemon;
    return daemon;
}

} // namespace

namespace Common {

BusBackend& DaemonBus() { return TheDaemon(); }

} // namespace Common

namespace ToolkitHost {

bool QueryDogs(Common::K7X_MSG_HANDLE handle, int timeout, std::string& text)
{
    text.clear();
    return TheDaemon().QueryDogs(handle, timeout, text);
}

} // namespace ToolkitHost
