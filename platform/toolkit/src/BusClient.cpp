// Host build of the support library's message bus: a client of the
// development bus daemon mdvr-busd over ZeroMQ (the protocol: BusProtocol.h,
// docs/bus.md).
//
// A client is one DEALER socket connected to the daemon's ROUTER. Messages are
// delivered inside K7X_MSGWaitForEvent, on the caller's thread, by calling the
// receiver bound to the message's event: one message delivered per call. A
// client handle belongs to one thread at a time, like the socket under it.
//
// Credit: the client tells the daemon what it has taken (TOOK) at least every
// kTookMs while it takes, and sends no more than its window before the daemon
// has passed it on (ROOM). A send that waits for room keeps what arrives
// meanwhile for the next waits. A monitor on the socket, read on the clock,
// tells when the connection to the daemon is made again after a loss; the
// client then repeats its hello, its subscriptions and its watchdog
// registration, so a restarted daemon knows it again without help.
#include "BusBackend.h"
#include "BusProtocol.h"
#include "ToolkitHost.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace {

using BusProtocol::Command;
using BusProtocol::Now;
using Common::K7X_MSG_HANDLE;

struct Amount {
    unsigned int messages = 0;
    unsigned long long bytes = 0;
};

// A message received: a bus message (one frame), or a command and its arguments.
struct Received {
    zmq::message_t frames[3];
    size_t count = 0;
    size_t Cost() const
    {
        size_t cost = 0;
        for (size_t i = 0; i < count; ++i)
            cost += frames[i].size();
        return cost;
    }
};

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
    std::vector<int> watched;    // as a monitor: its events (empty: all)
    bool monitoring = false;
    ToolkitHost::RoutedSink sink = nullptr;
    void* sinkContext = nullptr;
    // Credit.
    Amount sent;                 // sent, not yet returned with ROOM
    bool waitingForRoom = false; // a WAIT is on its way
    Amount owed;                 // taken, not yet told with TOOK
    long long lastTook = 0;
    // What came while a send waited for room, or a query for its answer.
    std::deque<Received> kept;
    std::string answer[2];       // the last DOGS and LIST
    Received in;                 // the message received last
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
    Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__, "bus: unknown client handle %p\n", handle);
    return nullptr;
}

// Sends a bus message: one frame. False when the daemon cannot take it (not
// connected within the send timeout).
bool SendFrame(Client& c, zmq::message_t& frame)
{
    try {
        return c.socket.send(frame, zmq::send_flags::none).has_value();
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: sending to %s failed: %s\n", c.endpoint.c_str(), e.what());
        return false;
    }
}

// Sends a command, with an argument frame when it has an argument (`size`
// bytes, which may be none).
bool SendCommand(Client& c, Command command, const void* argument = nullptr, size_t size = 0,
                 bool withArgument = false)
{
    withArgument = withArgument || size > 0;
    try {
        const char* name = BusProtocol::Name(command);
        zmq::message_t head(name, std::strlen(name));
        if (!c.socket.send(head, withArgument ? zmq::send_flags::sndmore : zmq::send_flags::none))
            return false;
        if (withArgument) {
            zmq::message_t frame(argument, size);
            c.socket.send(frame, zmq::send_flags::none); // the rest of a started message always goes
        }
        return true;
    } catch (const zmq::error_t& e) {
        BUS_LOG(0, "bus: sending %s to %s failed: %s\n", BusProtocol::Name(command), c.endpoint.c_str(), e.what());
        return false;
    }
}

bool Deliverable(int event) { return event >= 0 && event <= 0xFFFF; }

void Subscribe(Client& c, Command command, int event)
{
    const BusProtocol::Event argument{event};
    SendCommand(c, command, &argument, sizeof argument);
}

void Watch(Client& c)
{
    std::vector<BusProtocol::Event> events;
    for (int event : c.watched)
        events.push_back({event});
    // An empty argument: every event.
    SendCommand(c, Command::kMonitor, events.data(), events.size() * sizeof(BusProtocol::Event), true);
}

// Tells a daemon who we are and what we listen to: after connecting, and
// again after every reconnection. A new daemon owes and is owed nothing.
void Introduce(Client& c)
{
    c.sent = c.owed = Amount();
    c.waitingForRoom = false;
    BusProtocol::Hello hello{static_cast<std::int32_t>(getpid()), c.type, {}};
    std::memcpy(hello.name, program_invocation_short_name,
                strnlen(program_invocation_short_name, sizeof hello.name)); // NUL-padded, not terminated
    SendCommand(c, Command::kHello, &hello, sizeof hello);
    for (const auto& receiver : c.receivers)
        if (Deliverable(receiver.first))
            Subscribe(c, Command::kSub, receiver.first);
    if (c.monitoring)
        Watch(c);
    if (!c.dogRecord.empty()) {
        zmq::message_t frame(c.dogRecord.data(), c.dogRecord.size());
        if (SendFrame(c, frame))
            c.sent = {1, c.dogRecord.size()};
    }
}

// Reads the connection events that have arrived; waits up to `timeout` ms for
// the first one.
void ReadMonitor(Client& c, int timeout)
{
    try {
        BusProtocol::SocketEvent event;
        for (; BusProtocol::ReadSocketEvent(c.monitor, timeout, event); timeout = 0) {
            if (event.id == ZMQ_EVENT_HANDSHAKE_SUCCEEDED) {
                const bool again = !c.connected;
                c.connected = true;
                if (again)
                    Introduce(c);
                BUS_LOG(4, "bus: connected to %s\n", c.endpoint.c_str());
            } else if (event.id == ZMQ_EVENT_DISCONNECTED) {
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
    const long long now = Now();
    if (!c.connected || now >= c.monitorDue) {
        ReadMonitor(c, 0);
        c.monitorDue = now + BusProtocol::kMonitorMs;
    }
    return c.connected;
}

// Tells the daemon what was taken, when enough has gathered, kTookMs have
// passed since the last time, or `now` says so.
void Took(Client& c, bool now = false)
{
    if (c.owed.messages == 0)
        return;
    const long long time = Now();
    if (now || c.owed.messages >= BusProtocol::kWindowMessages / 2 || c.owed.bytes >= BusProtocol::kWindowBytes / 2 ||
        time - c.lastTook >= BusProtocol::kTookMs) {
        const BusProtocol::Credit credit{c.owed.messages, static_cast<std::uint32_t>(c.owed.bytes)};
        if (SendCommand(c, Command::kTook, &credit, sizeof credit)) {
            c.owed = Amount();
            c.lastTook = time;
        }
    }
}

// Receives one message into c.in, waiting up to `timeout` ms.
Got Receive(Client& c, int timeout)
{
    try {
        if (timeout != c.receiveTimeout) {
            c.socket.set(zmq::sockopt::rcvtimeo, timeout);
            c.receiveTimeout = timeout;
        }
        c.in.count = BusProtocol::ReceiveFrames(c.socket, c.in.frames);
        return c.in.count ? Got::kMessage : Got::kNothing;
    } catch (const zmq::error_t& e) {
        if (e.num() == EINTR)
            return Got::kInterrupted;
        BUS_LOG(0, "bus: receiving from %s failed: %s\n", c.endpoint.c_str(), e.what());
        return Got::kFailed;
    }
}

bool IsBusMessage(const Received& r) { return r.count == 1 && r.frames[0].size() >= BusWire::kHeadSize; }

// Takes a command that the client handles itself. True when `r` is for a
// receiver instead (a bus message or a monitor's copy).
bool ForReceiver(Client& c, Received& r)
{
    if (IsBusMessage(r))
        return true;
    const Command command = BusProtocol::Named(r.frames[0].data(), r.frames[0].size());
    if (command == Command::kRouted && r.count == 3) // the monitor's sink reads the record
        return true;
    if (command == Command::kRoom && r.count == 2 && r.frames[1].size() == sizeof(BusProtocol::Credit)) {
        const auto credit = BusProtocol::Read<BusProtocol::Credit>(r.frames[1].data());
        c.sent.messages -= std::min(c.sent.messages, credit.messages);
        c.sent.bytes -= std::min<unsigned long long>(c.sent.bytes, credit.bytes);
        c.waitingForRoom = false;
    } else if (command == Command::kWait && r.count == 1) {
        Took(c, true);
    } else if ((command == Command::kDogs || command == Command::kList) && r.count == 2) {
        c.owed.messages += 1; // paid for with credit, taken at once
        c.owed.bytes += r.Cost();
        c.answer[command == Command::kList] = r.frames[1].to_string();
        Took(c);
    } else if (command != Command::kBye) {
        BUS_LOG(0, "bus: dropped an unknown message \"%s\" from the bus\n",
                r.frames[0].to_string().substr(0, 16).c_str());
    }
    return false;
}

// Delivers a bus message to its receiver, or a copy to the monitor's sink.
void Deliver(Client& c, Received& r)
{
    c.owed.messages += 1;
    c.owed.bytes += r.Cost();
    Took(c);
    if (!IsBusMessage(r)) {
        if (c.sink)
            c.sink(static_cast<const char*>(r.frames[1].data()), r.frames[1].size(),
                   static_cast<const char*>(r.frames[2].data()), r.frames[2].size(), c.sinkContext);
        return;
    }
    const zmq::message_t& message = r.frames[0];
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
// failure. With `until`, returns 0 as soon as it says so instead.
template <class Until> int Wait(Client& c, int timeout, Until until)
{
    if (!c.kept.empty()) {
        Received r = std::move(c.kept.front()); // a receiver may wait again
        c.kept.pop_front();
        Deliver(c, r);
        return 1;
    }
    const long long deadline = timeout < 0 ? -1 : Now() + timeout;
    for (;;) {
        long long now = Now();
        if (now >= c.monitorDue) {
            ReadMonitor(c, 0);
            Took(c);
            c.monitorDue = now + BusProtocol::kMonitorMs;
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
            if (ForReceiver(c, c.in)) {
                Received r = std::move(c.in);
                Deliver(c, r);
                return 1;
            }
            break;
        }
        if (until() || (deadline >= 0 && Now() >= deadline))
            return 0;
    }
}

int Wait(Client& c, int timeout)
{
    return Wait(c, timeout, [] { return false; });
}

// Waits until the window has room for a message of `size` bytes, keeping
// what arrives meanwhile. False when none came within the send timeout or
// the connection is lost.
bool Room(Client& c, size_t size)
{
    const long long deadline = Now() + BusProtocol::kSendTimeoutMs;
    while (!BusProtocol::Fits(c.sent.messages, c.sent.bytes, size)) {
        if (!c.waitingForRoom)
            c.waitingForRoom = SendCommand(c, Command::kWait);
        const long long left = deadline - Now();
        if (left <= 0 || !Connected(c))
            return false;
        const Got got = Receive(c, static_cast<int>(std::min<long long>(left, BusProtocol::kMonitorMs)));
        if (got == Got::kFailed)
            return false;
        if (got == Got::kMessage && ForReceiver(c, c.in))
            c.kept.push_back(std::move(c.in));
    }
    return true;
}

// Checks the arguments of a message and sends it: header then body, within
// the window. 0, or -1 with a line.
int Post(Client& c, const char* function, const Common::SMessageHead& head, const char* body, long long length)
{
    const char* kind = BusProtocol::IsResponse(head) ? "response" : "event";
    if (length < 0 || length > BusWire::kBodyMax) {
        Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__,
                               "bus: body length %lld of %s 0x%x outside 0..%u, not sent\n", length, kind,
                               head.messageId, BusWire::kBodyMax);
        return -1;
    }
    if (body == nullptr && length > 0) {
        Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__,
                               "bus: null body with length %lld for %s 0x%x, not sent\n", length, kind,
                               head.messageId);
        return -1;
    }
    const size_t size = BusWire::kHeadSize + static_cast<size_t>(length);
    zmq::message_t frame(size);
    BusWire::WriteHead(frame.data(), head);
    if (length > 0)
        std::memcpy(static_cast<char*>(frame.data()) + BusWire::kHeadSize, body, static_cast<size_t>(length));
    if (!BusProtocol::IsResponse(head) && head.flags == 0 && head.messageId == BusWire::kDogRegister)
        c.dogRecord.assign(static_cast<const char*>(frame.data()), frame.size());
    else if (!BusProtocol::IsResponse(head) && head.flags == 0 && head.messageId == BusWire::kDogUnregister)
        c.dogRecord.clear();
    if (!Connected(c)) {
        Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__, "bus: no bus daemon at %s, %s 0x%x dropped\n",
                               c.endpoint.c_str(), kind, head.messageId);
        return -1;
    }
    if (!Room(c, size)) {
        Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__,
                               "bus: the bus took nothing more from this client for %d ms (a receiver is slow, or "
                               "the daemon is gone); %s 0x%x not sent\n",
                               BusProtocol::kSendTimeoutMs, kind, head.messageId);
        return -1;
    }
    if (!SendFrame(c, frame)) {
        Common::gclDebugPrintf(0, __FILE_NAME__, function, __LINE__, "bus: no bus daemon at %s, %s 0x%x dropped\n",
                               c.endpoint.c_str(), kind, head.messageId);
        return -1;
    }
    c.sent.messages += 1;
    c.sent.bytes += size;
    return 0;
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
            c->socket.set(zmq::sockopt::reconnect_ivl, BusProtocol::kMonitorMs);
            c->socket.set(zmq::sockopt::sndtimeo, BusProtocol::kSendTimeoutMs);
            // Credit bounds both ways, not ZeroMQ.
            c->socket.set(zmq::sockopt::sndhwm, 0);
            c->socket.set(zmq::sockopt::rcvhwm, 0);
            c->socket.set(zmq::sockopt::maxmsgsize, static_cast<int64_t>(BusProtocol::kFrameMax + 64 * 1024));
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
        const long long deadline = Now() + BusProtocol::kConnectTimeoutMs;
        while (!c->connected && Now() < deadline)
            ReadMonitor(*c, static_cast<int>(deadline - Now()));
        if (!c->connected) {
            BUS_LOG(0, "bus: no bus daemon answers at %s\n", endpoint.c_str());
            delete c;
            return nullptr;
        }
        c->monitorDue = Now() + BusProtocol::kMonitorMs;
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
        if (c->connected && SendCommand(*c, Command::kBye)) {
            const long long deadline = Now() + BusProtocol::kByeTimeoutMs;
            for (long long left = BusProtocol::kByeTimeoutMs; left > 0; left = deadline - Now())
                if (Receive(*c, static_cast<int>(left)) == Got::kMessage && c->in.count == 1 &&
                    BusProtocol::Named(c->in.frames[0].data(), c->in.frames[0].size()) == Command::kBye)
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
            Subscribe(*c, Command::kSub, event);
        return 0;
    }

    int Unregister(K7X_MSG_HANDLE handle, int event) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr)
            return -1;
        c->receivers.erase(event);
        if (Deliverable(event) && Connected(*c))
            Subscribe(*c, Command::kUnsub, event);
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
        return Post(*c, __func__, BusProtocol::Outgoing(flags, session, destination, messageId, length), body, length);
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
        return Post(*c, __func__, BusProtocol::Response(BusWire::ReadHead(head), length), body, length);
    }

    int Wait(K7X_MSG_HANDLE handle, int timeout) override
    {
        Client* c = Find(handle, __func__);
        return c == nullptr ? -1 : ::Wait(*c, timeout);
    }

    bool Query(K7X_MSG_HANDLE handle, ToolkitHost::BusList what, int timeout, std::string& text) override
    {
        Client* c = Find(handle, __func__);
        const bool clients = what == ToolkitHost::BusList::kClients;
        if (c == nullptr || !Connected(*c) || !SendCommand(*c, clients ? Command::kList : Command::kDogs))
            return false;
        std::string& answer = c->answer[clients];
        answer.clear();
        const long long deadline = Now() + timeout;
        for (long long left = timeout; answer.empty() && left > 0; left = deadline - Now())
            if (::Wait(*c, static_cast<int>(left), [&] { return !answer.empty(); }) < 0)
                break;
        text.swap(answer);
        return !text.empty();
    }

    bool Monitor(K7X_MSG_HANDLE handle, const std::vector<int>& events, ToolkitHost::RoutedSink sink,
                 void* context) override
    {
        Client* c = Find(handle, __func__);
        if (c == nullptr || sink == nullptr)
            return false;
        for (int event : events)
            if (!Deliverable(event))
                return false;
        c->watched = events;
        c->monitoring = true;
        c->sink = sink;
        c->sinkContext = context;
        if (Connected(*c))
            Watch(*c);
        return true;
    }
};

} // namespace

namespace Common {

BusBackend& DaemonBus()
{
    static Daemon daemon;
    return daemon;
}

} // namespace Common
