// Host build of the support library's message bus: a client of the
// development bus daemon mdvr-busd over ZeroMQ (the wire: docs/bus.md).
//
// A client is one DEALER socket connected to the daemon's ROUTER. Messages are
// delivered inside K7X_MSGWaitForEvent, on the caller's thread, by calling the
// receiver bound to the message's event. A client handle belongs to one thread
// at a time, like the socket under it. A monitor on the socket tells when the
// connection to the daemon is made again after a loss; the client then repeats
// its hello, its subscriptions and its watchdog registration, so a restarted
// daemon knows it again without help from the process.
#include "BusWire.h"
#include "RecordingBus.h"

#include <unistd.h>

#include <zmq.hpp>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#define BUS_LOG(level, ...) Common::gclDebugPrintf(level, "platform/toolkit/src/BusClient", __func__, __LINE__, __VA_ARGS__)

namespace {

const int kConnectTimeoutMs = 3000; // creation fails when no daemon answers by then
const int kSendTimeoutMs = 1000;    // a send waits this long for room, then fails
const int kByeTimeoutMs = 500;      // destruction waits this long for the daemon's receipt
const int kBatch = 256;             // messages delivered by one wait at most
const int kHighWater = 10000;

std::atomic<bool> g_recording{false};

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
    long long lastMonitorCheck = 0;
    std::map<int, Common::K7X_MSG_CALLBACK> receivers; // by event
    std::string dogRecord;                              // the last watchdog registration, replayed
    std::vector<zmq::message_t> frames;                 // of the message being received
};

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

Client* Find(Common::K7X_MSG_HANDLE handle, const char* function)
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

long long Now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
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

// Sends one command with an optional payload, like SendFrame.
bool SendCommand(Client& c, const char* command, zmq::message_t payload, bool withPayload = true)
{
    try {
        zmq::message_t head(command, std::strlen(command));
        if (!c.socket.send(head, withPayload ? zmq::send_flags::sndmore : zmq::send_flags::none))
            return false;
        if (withPayload)
            c.socket.send(payload, zmq::send_flags::none); // the rest of a started message always goes
        return true;
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: sending %s to %s failed: %s\n", command, c.endpoint.c_str(), e.what());
        return false;
    }
}

// Tells a daemon who we are and what we listen to: after connecting, and
// again after every reconnection.
void Introduce(Client& c)
{
    std::int32_t hello[2] = {static_cast<std::int32_t>(getpid()), static_cast<std::int32_t>(c.type)};
    SendCommand(c, BusWire::kHello, zmq::message_t(hello, sizeof hello));
    for (const auto& receiver : c.receivers)
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

// Reads the connection events now and then: checking costs a system call, and
// a send that finds no daemon fails by itself within the send timeout.
void CheckMonitor(Client& c)
{
    const long long now = Now();
    if (c.connected && now - c.lastMonitorCheck < 20)
        return;
    c.lastMonitorCheck = now;
    ReadMonitor(c, 0);
}

void Deliver(Client& c, zmq::message_t& frame)
{
    const Common::SMessageHead head = BusWire::ReadHead(frame.data());
    auto found = c.receivers.find(head.messageId);
    if (found == c.receivers.end()) {
        BUS_LOG(4, "bus: no receiver for event 0x%x, dropped\n", head.messageId);
        return;
    }
    const Common::K7X_MSG_CALLBACK receiver = found->second;
    receiver.invoke(receiver, static_cast<const char*>(frame.data()), static_cast<int>(frame.size()));
}

// Handles one message from the daemon; false when there was none.
bool ReceiveOne(Client& c, int* delivered, std::string* dogs)
{
    std::vector<zmq::message_t>& frames = c.frames; // kept: no allocation per message
    frames.resize(1);
    try {
        if (!c.socket.recv(frames[0], zmq::recv_flags::dontwait))
            return false;
        while (frames.back().more()) {
            frames.emplace_back();
            (void)c.socket.recv(frames.back());
        }
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: receiving from %s failed: %s\n", c.endpoint.c_str(), e.what());
        return false;
    }
    if (frames.size() == 1 && frames[0].size() >= BusWire::kHeadSize) {
        zmq::message_t message(std::move(frames[0])); // a receiver may wait again, reusing `frames`
        Deliver(c, message);
        ++*delivered;
        return true;
    }
    const std::string command = frames[0].to_string();
    if (command == BusWire::kDogs && frames.size() == 2 && dogs != nullptr) {
        *dogs = frames[1].to_string();
    } else if (command != BusWire::kBye && command != BusWire::kDogs) {
        BUS_LOG(0, "bus: dropped an unknown message \"%s\" from the bus\n", command.c_str());
    }
    return true;
}

// Waits up to `timeout` ms (negative: without end) for messages and delivers
// up to kBatch of them. With `dogs`, waits for the watchdog list instead.
int Wait(Client& c, int timeout, std::string* dogs = nullptr)
{
    const long long deadline = timeout < 0 ? -1 : Now() + timeout;
    int delivered = 0;
    for (;;) {
        CheckMonitor(c);
        while (delivered < kBatch && ReceiveOne(c, &delivered, dogs) && !(dogs && !dogs->empty())) {
        }
        if ((dogs ? !dogs->empty() : delivered > 0))
            return delivered;
        const long long left = deadline < 0 ? -1 : deadline - Now();
        if (deadline >= 0 && left <= 0)
            return delivered;
        zmq::pollitem_t items[2] = {{static_cast<void*>(c.socket), 0, ZMQ_POLLIN, 0},
                                    {static_cast<void*>(c.monitor), 0, ZMQ_POLLIN, 0}};
        try {
            zmq::poll(items, 2, std::chrono::milliseconds(left));
        } catch (const zmq::error_t& e) {
            if (e.num() != EINTR) {
                BUS_LOG(0, "bus: waiting on %s failed: %s\n", c.endpoint.c_str(), e.what());
                return -1;
            }
        }
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

Common::K7X_MSG_HANDLE Create(unsigned int clientType, const char* serverAddr, short port)
{
    const std::string endpoint = BusWire::ClientEndpoint(serverAddr, port);
    if (endpoint.empty()) {
        BUS_LOG(0, "bus: %s=\"%s\" is neither a port nor an endpoint\n", BusWire::kEnvironment,
                std::getenv(BusWire::kEnvironment));
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
    const long long deadline = Now() + kConnectTimeoutMs;
    while (!c->connected && Now() < deadline)
        ReadMonitor(*c, static_cast<int>(deadline - Now()));
    if (!c->connected) {
        BUS_LOG(0, "bus: no bus daemon answers at %s\n", endpoint.c_str());
        delete c;
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(Clients().mutex);
    Clients().clients.insert(c);
    return c;
}

void Destroy(Common::K7X_MSG_HANDLE handle)
{
    Client* c = Find(handle, __func__);
    if (c == nullptr)
        return;
    {
        std::lock_guard<std::mutex> lock(Clients().mutex);
        Clients().clients.erase(c);
    }
    // The daemon's receipt of the goodbye means that everything sent before
    // it (a watchdog unregistration, say) has arrived.
    ReadMonitor(*c, 0);
    if (c->connected && SendCommand(*c, BusWire::kBye, zmq::message_t(), false)) {
        const long long deadline = Now() + kByeTimeoutMs;
        zmq::pollitem_t item{static_cast<void*>(c->socket), 0, ZMQ_POLLIN, 0};
        try {
            while (Now() < deadline && zmq::poll(&item, 1, std::chrono::milliseconds(deadline - Now())) > 0) {
                std::vector<zmq::message_t> frames(1);
                (void)c->socket.recv(frames[0]);
                while (frames.back().more()) {
                    frames.emplace_back();
                    (void)c->socket.recv(frames.back());
                }
                if (frames[0].to_string() == BusWire::kBye)
                    break;
            }
        } catch (const zmq::error_t&) {
        }
    }
    zmq_socket_monitor(static_cast<void*>(c->socket), nullptr, 0);
    delete c;
}

} // namespace

namespace Common {

K7X_MSG_HANDLE K7X_MSGCreateMessageClient(unsigned int clientType, const char* serverAddr, short port)
{
    if (g_recording)
        return RecordingBus::K7X_MSGCreateMessageClient(clientType, serverAddr, port);
    return Create(clientType, serverAddr, port);
}

void K7X_MSGDestroyMessageClient(K7X_MSG_HANDLE handle)
{
    if (g_recording)
        return RecordingBus::K7X_MSGDestroyMessageClient(handle);
    Destroy(handle);
}

int K7X_MSGEventRegister(K7X_MSG_HANDLE handle, int event, K7X_MSG_CALLBACK callback)
{
    if (g_recording)
        return RecordingBus::K7X_MSGEventRegister(handle, event, callback);
    Client* c = Find(handle, __func__);
    if (c == nullptr)
        return -1;
    // Kept even when the daemon is away: it is told on reconnection.
    c->receivers[event] = callback;
    ReadMonitor(*c, 0);
    if (c->connected)
        SendCommand(*c, BusWire::kSub, Int32(event));
    return 0;
}

int K7X_MSGEventUnRegister(K7X_MSG_HANDLE handle, int event)
{
    if (g_recording)
        return RecordingBus::K7X_MSGEventUnRegister(handle, event);
    Client* c = Find(handle, __func__);
    if (c == nullptr)
        return -1;
    c->receivers.erase(event);
    ReadMonitor(*c, 0);
    if (c->connected)
        SendCommand(*c, BusWire::kUnsub, Int32(event));
    return 0;
}

int K7X_MSGSendMessage(K7X_MSG_HANDLE handle, int destination, int messageId, int session, const char* body,
                       int length, int flags)
{
    if (g_recording)
        return RecordingBus::K7X_MSGSendMessage(handle, destination, messageId, session, body, length, flags);
    Client* c = Find(handle, __func__);
    if (c == nullptr)
        return -1;
    if (destination < 0 || destination > 0xFFFF || messageId < 0 || messageId > 0xFFFF) {
        BUS_LOG(0, "bus: destination %d or event 0x%x outside 16 bits, not sent\n", destination, messageId);
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
    CheckMonitor(*c);
    if (!c->connected || !SendFrame(*c, std::move(frame))) {
        BUS_LOG(0, "bus: no bus daemon at %s, event 0x%x dropped\n", c->endpoint.c_str(), messageId);
        return -1;
    }
    return 0;
}

int K7X_MSGResponseMessage(K7X_MSG_HANDLE handle, SMessageHead* head, const char* body, unsigned int length)
{
    if (g_recording)
        return RecordingBus::K7X_MSGResponseMessage(handle, head, body, length);
    Client* c = Find(handle, __func__);
    if (c == nullptr)
        return -1;
    if (head == nullptr) {
        BUS_LOG(0, "bus: response without the request's header, not sent\n");
        return -1;
    }
    // The request's source module and session come back; its flags field
    // (the requesting client) tells the daemon where the response goes.
    SMessageHead request;
    std::memcpy(&request, head, sizeof request);
    const SMessageHead response{request.sourceId, request.session, request.flags,
                                static_cast<unsigned short>(request.messageId | BusWire::kResponseBit), length};
    zmq::message_t frame;
    if (!BuildFrame(__func__, frame, response, body, length))
        return -1;
    CheckMonitor(*c);
    if (!c->connected || !SendCommand(*c, BusWire::kRsp, std::move(frame))) {
        BUS_LOG(0, "bus: no bus daemon at %s, response 0x%x dropped\n", c->endpoint.c_str(), response.messageId);
        return -1;
    }
    return 0;
}

int K7X_MSGWaitForEvent(K7X_MSG_HANDLE handle, int timeout)
{
    if (g_recording)
        return RecordingBus::K7X_MSGWaitForEvent(handle, timeout);
    Client* c = Find(handle, __func__);
    return c == nullptr ? -1 : Wait(*c, timeout);
}

} // namespace Common

namespace ToolkitHost {

void UseRecordingBus(bool recording) { g_recording = recording; }

bool QueryDogs(Common::K7X_MSG_HANDLE handle, int timeout, std::string& text)
{
    text.clear();
    Client* c = g_recording ? nullptr : Find(handle, __func__);
    if (c == nullptr)
        return false;
    ReadMonitor(*c, 0);
    if (!c->connected || !SendCommand(*c, BusWire::kDogs, zmq::message_t(), false))
        return false;
    Wait(*c, timeout, &text);
    return !text.empty();
}

} // namespace ToolkitHost
