#include "Router.h"

#include <json/writer.h>

#include <cstdarg>
#include <cstdio>

namespace busd {

using BusProtocol::Command;

namespace {

std::string Printable(const void* data, size_t size, size_t most)
{
    std::string shown(static_cast<const char*>(data), std::min(size, most));
    for (char& ch : shown)
        ch = (ch >= 0x20 && ch < 0x7F) ? ch : '?';
    return shown;
}

bool InSixteenBits(int event) { return event >= 0 && event <= 0xFFFF; }

} // namespace

// A command, the argument it takes and who handles it. `size` 0: no argument
// frame; with `repeated`, the argument holds any number of such items.
struct Router::Handler {
    Command command;
    size_t size;
    bool repeated;
    bool (Router::*handle)(ClientId, Client&, const zmq::message_t*);
};

const Router::Handler Router::kHandlers[] = {
    {Command::kHello, sizeof(BusProtocol::Hello), false, &Router::OnHello},
    {Command::kBye, 0, false, &Router::OnBye},
    {Command::kSub, sizeof(BusProtocol::Event), false, &Router::OnSubscribe},
    {Command::kUnsub, sizeof(BusProtocol::Event), false, &Router::OnUnsubscribe},
    {Command::kDogs, 0, false, &Router::OnDogs},
    {Command::kList, 0, false, &Router::OnList},
    {Command::kMonitor, sizeof(BusProtocol::Event), true, &Router::OnMonitor},
    {Command::kTook, sizeof(BusProtocol::Credit), false, &Router::OnTook},
    {Command::kWait, 0, false, &Router::OnWait},
};

bool Router::Handle(ClientId sender, zmq::message_t* frames, size_t count)
{
    if (count == 1 && frames[0].size() >= BusWire::kHeadSize)
        return Route(sender, frames[0]); // a bus message
    Client* client = clients_.Find(sender);
    const Command command = BusProtocol::Named(frames[0].data(), frames[0].size());
    const size_t argument = count > 1 ? frames[1].size() : 0;
    for (const Handler& h : kHandlers) {
        if (h.command != command)
            continue;
        const bool fits = h.size == 0 ? count == 1
                                      : count == 2 && (h.repeated ? argument % h.size == 0 : argument == h.size);
        if (!fits || client == nullptr)
            break;
        return (this->*h.handle)(sender, *client, count > 1 ? &frames[1] : nullptr);
    }
    return Bad(sender, "command \"%s\", %zu frames, argument %zu bytes",
               Printable(frames[0].data(), frames[0].size(), 16).c_str(), count, argument);
}

bool Router::Route(ClientId sender, zmq::message_t& frame)
{
    Common::SMessageHead head = BusWire::ReadHead(frame.data());
    const unsigned int body = head.length & BusWire::kBodyMax;
    if (BusWire::kHeadSize + body != frame.size())
        return Bad(sender, "event 0x%x, length word 0x%x, frame of %zu bytes", head.messageId, head.length,
                   frame.size());
    const ClientId destination = head.flags;
    const bool response = BusProtocol::IsResponse(head);
    targets_.clear();
    if (response && destination == 0) {
        BUS_LOG(0, "bus: response 0x%x from client %u names no requesting client (flags 0); dropped\n",
                head.messageId, sender);
    } else {
        if (!response && destination == 0 && Watchdog::Takes(head.messageId))
            watchdog_.Take(head.messageId, sender, clients_.Find(sender)->pid,
                           static_cast<const char*>(frame.data()) + BusWire::kHeadSize, body);
        if (const std::set<ClientId>* subscribers = subscriptions_.Of(head.messageId)) {
            if (destination == 0)
                targets_.assign(subscribers->begin(), subscribers->end());
            else if (subscribers->count(destination))
                targets_.push_back(destination);
        }
        if (targets_.empty() && destination == 0)
            BUS_LOG(4, "bus: nobody subscribed event 0x%x from client %u; dropped\n", head.messageId, sender);
        else if (targets_.empty())
            BUS_LOG(4, "bus: client %u has not subscribed event 0x%x from client %u; dropped\n", destination,
                    head.messageId, sender);
    }
    BusProtocol::Deliverable(head, sender);
    BusWire::WriteHead(frame.data(), head);
    if (flow_.Accept(sender, destination, frame, targets_))
        return true;
    return Bad(sender, "more than %u messages or %u bytes not yet passed on", BusProtocol::kWindowMessages,
               BusProtocol::kWindowBytes);
}

bool Router::Bad(ClientId sender, const char* format, ...)
{
    char detail[160];
    va_list args;
    va_start(args, format);
    std::vsnprintf(detail, sizeof detail, format, args);
    va_end(args);
    const Client* client = clients_.Find(sender);
    BUS_LOG(0, "bus: bad message from client %u (pid %d): %s; connection closed\n", sender, client ? client->pid : 0,
            detail);
    return false;
}

bool Router::OnHello(ClientId id, Client& client, const zmq::message_t* argument)
{
    const auto hello = BusProtocol::Read<BusProtocol::Hello>(argument->data());
    client.pid = hello.pid;
    client.type = hello.type;
    client.name = Printable(hello.name, strnlen(hello.name, sizeof hello.name), sizeof hello.name);
    BUS_LOG(4, "bus: client %u is pid %d, type %u, %s\n", id, client.pid, client.type, client.name.c_str());
    return true;
}

bool Router::OnBye(ClientId id, Client&, const zmq::message_t*)
{
    BUS_LOG(4, "bus: client %u said goodbye\n", id);
    flow_.Tell(id, Command::kBye);
    Forget(id);
    return true;
}

bool Router::OnSubscribe(ClientId id, Client& client, const zmq::message_t* argument)
{
    return Subscription(id, client, argument, true);
}

bool Router::OnUnsubscribe(ClientId id, Client& client, const zmq::message_t* argument)
{
    return Subscription(id, client, argument, false);
}

bool Router::Subscription(ClientId id, Client& client, const zmq::message_t* argument, bool subscribe)
{
    const int event = BusProtocol::Read<BusProtocol::Event>(argument->data()).event;
    if (!InSixteenBits(event))
        return Bad(id, "event %d outside 16 bits", event);
    if (subscribe) {
        client.events.insert(event);
        subscriptions_.Add(event, id);
    } else {
        client.events.erase(event);
        subscriptions_.Remove(event, id);
    }
    BUS_LOG(4, "bus: client %u %s event 0x%x\n", id, subscribe ? "subscribed" : "left", event);
    return true;
}

bool Router::OnDogs(ClientId id, Client&, const zmq::message_t*)
{
    flow_.Reply(id, Command::kDogs, [this] { return watchdog_.List(); });
    return true;
}

bool Router::OnList(ClientId id, Client&, const zmq::message_t*)
{
    flow_.Reply(id, Command::kList, [this] { return List(); });
    return true;
}

bool Router::OnMonitor(ClientId id, Client& client, const zmq::message_t* argument)
{
    std::set<int> events;
    for (size_t at = 0; at < argument->size(); at += sizeof(BusProtocol::Event)) {
        const int event = BusProtocol::Read<BusProtocol::Event>(static_cast<const char*>(argument->data()) + at).event;
        if (!InSixteenBits(event))
            return Bad(id, "event %d outside 16 bits", event);
        events.insert(event);
    }
    client.monitor = true;
    client.watched.swap(events);
    flow_.Watch(id);
    BUS_LOG(4, "bus: client %u monitors %zu events (0: all)\n", id, client.watched.size());
    return true;
}

bool Router::OnTook(ClientId id, Client& client, const zmq::message_t* argument)
{
    const auto credit = BusProtocol::Read<BusProtocol::Credit>(argument->data());
    if (flow_.Took(id, credit))
        return true;
    return Bad(id, "took %u messages of %u bytes, but %u of %llu were in flight", credit.messages, credit.bytes,
               client.inflight.messages, client.inflight.bytes);
}

bool Router::OnWait(ClientId id, Client&, const zmq::message_t*)
{
    flow_.Waits(id);
    return true;
}

void Router::Forget(ClientId id)
{
    Client* client = clients_.Find(id);
    if (client == nullptr)
        return;
    for (int event : client->events)
        subscriptions_.Remove(event, id);
    client->events.clear();
    watchdog_.Orphan(id);
    clients_.Detach(id);
    flow_.Leave(id);
}

void Router::ForgetGone()
{
    std::vector<ClientId> gone;
    gone.swap(flow_.gone());
    for (ClientId id : gone) {
        const Client* client = clients_.Find(id);
        if (client != nullptr && !client->gone) {
            BUS_LOG(4, "bus: client %u (pid %d) is gone\n", id, client->pid);
            Forget(id);
        }
    }
}

std::string Router::List()
{
    namespace K = BusProtocol::Keys;
    const std::map<ClientId, Amount> waiting = flow_.Waiting();
    Json::Value list(Json::arrayValue);
    for (auto& entry : clients_.all()) {
        const Client& c = entry.second;
        if (c.gone)
            continue;
        Json::Value client;
        client[K::kId] = entry.first;
        client[K::kPid] = c.pid;
        client[K::kName] = c.name;
        client[K::kEvents] = Json::Value(Json::arrayValue);
        for (int event : c.events)
            client[K::kEvents].append(event);
        auto queued = waiting.find(entry.first);
        const Amount more = queued == waiting.end() ? Amount() : queued->second;
        client[K::kQueuedMessages] = c.inflight.messages + more.messages;
        client[K::kQueuedBytes] = Json::UInt64(c.inflight.bytes + more.bytes);
        client[K::kCongested] = c.congested;
        client[K::kDropped] = Json::UInt64(c.dropped);
        client[K::kMonitor] = c.monitor;
        client[K::kDogs] = Json::Value(Json::arrayValue);
        for (const std::string& name : watchdog_.Names(entry.first))
            client[K::kDogs].append(name);
        list.append(client);
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, list);
}

} // namespace busd
