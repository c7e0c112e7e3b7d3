#include "Router.h"

#include "BusWire.h"

#include <cstdarg>
#include <cstdio>

#define ROUTER_LOG(level, ...) Common::gclDebugPrintf(level, "platform/bus/Router", __func__, __LINE__, __VA_ARGS__)

namespace busd {

namespace {

// ZeroMQ numbers the connections of a socket in the order they come: of two
// routing ids, the longer or else the larger is the later connection.
bool Later(const std::string& a, const std::string& b)
{
    return a.size() != b.size() ? a.size() > b.size() : a > b;
}

std::string Printable(const Frame& frame)
{
    std::string shown(frame.data, frame.size < 16 ? frame.size : 16);
    for (char& ch : shown)
        ch = (ch >= 0x20 && ch < 0x7F) ? ch : '?';
    return shown;
}

bool Is(const Frame& frame, const char* command)
{
    return frame.size == std::char_traits<char>::length(command) &&
           std::char_traits<char>::compare(frame.data, command, frame.size) == 0;
}

} // namespace

ClientId Router::Known(const std::string& routing) const
{
    auto known = byRouting_.find(routing);
    return known == byRouting_.end() ? 0 : known->second;
}

ClientId Router::Admit(const std::string& routing, int fd, unsigned long long inode, bool& stale)
{
    stale = false;
    if (const ClientId known = Known(routing))
        return known;
    if (fd >= 0) {
        auto retired = retired_.find(fd);
        auto holder = byFd_.find(fd);
        stale = inode == 0 || (retired != retired_.end() && !Later(routing, retired->second)) ||
                (holder != byFd_.end() && !Later(routing, clients_[holder->second].routing));
        if (stale)
            return 0;
        if (holder != byFd_.end())
            Forget(holder->second); // its socket has been closed: the descriptor is another's now
    }
    if (clients_.size() >= kMostClients)
        return 0;
    do
        next_ = static_cast<ClientId>(next_ == 0xFFFF ? 1 : next_ + 1);
    while (clients_.count(next_));
    Client& client = clients_[next_];
    client.routing = routing;
    client.fd = fd;
    client.inode = inode;
    byRouting_[routing] = next_;
    if (fd >= 0)
        byFd_[fd] = next_;
    return next_;
}

void Router::Disconnected(int fd, unsigned long long inode)
{
    auto holder = byFd_.find(fd);
    if (holder != byFd_.end() && clients_[holder->second].inode != inode)
        Forget(holder->second);
}

void Router::Forget(ClientId id)
{
    auto found = clients_.find(id);
    if (found == clients_.end())
        return;
    Client& client = found->second;
    for (int event : client.events)
        Unsubscribe(id, event);
    byRouting_.erase(client.routing);
    auto holder = byFd_.find(client.fd);
    if (holder != byFd_.end() && holder->second == id) {
        byFd_.erase(holder);
        retired_[client.fd] = client.routing;
    }
    watchdog_.Orphan(id);
    clients_.erase(found);
}

Client* Router::Find(ClientId id)
{
    auto found = clients_.find(id);
    return found == clients_.end() ? nullptr : &found->second;
}

void Router::Unsubscribe(ClientId id, int event)
{
    auto found = subscribers_.find(event);
    if (found == subscribers_.end())
        return;
    found->second.erase(id);
    if (found->second.empty())
        subscribers_.erase(found);
}

Verdict Router::Bad(ClientId sender, const char* format, ...)
{
    char detail[160];
    va_list args;
    va_start(args, format);
    std::vsnprintf(detail, sizeof detail, format, args);
    va_end(args);
    const Client* client = Find(sender);
    ROUTER_LOG(0, "bus: bad message from client %u (pid %d): %s; connection closed\n", sender,
               client ? client->pid : 0, detail);
    Verdict verdict;
    verdict.action = Verdict::kClose;
    return verdict;
}

Verdict Router::Handle(ClientId sender, Frame* frames, size_t count)
{
    if (count == 1 && frames[0].size >= BusWire::kHeadSize)
        return Route(sender, frames[0]); // a bus message
    Client& client = clients_[sender];
    const Frame& command = frames[0];
    const size_t argument = count > 1 ? frames[1].size : 0;
    Verdict verdict;
    if (count == 2 && (Is(command, BusWire::kSub) || Is(command, BusWire::kUnsub)) && argument == 4) {
        const int event = BusWire::ReadInt(frames[1].data);
        if (event < 0 || event > 0xFFFF)
            return Bad(sender, "event %d outside 16 bits", event);
        const bool subscribe = Is(command, BusWire::kSub);
        if (subscribe) {
            client.events.insert(event);
            subscribers_[event].insert(sender);
        } else {
            client.events.erase(event);
            Unsubscribe(sender, event);
        }
        ROUTER_LOG(4, "bus: client %u %s event 0x%x\n", sender, subscribe ? "subscribed" : "left", event);
        return verdict;
    }
    if (count == 2 && Is(command, BusWire::kHello) && argument == 8) {
        client.pid = BusWire::ReadInt(frames[1].data);
        client.type = static_cast<unsigned int>(BusWire::ReadInt(frames[1].data + 4));
        ROUTER_LOG(4, "bus: client %u is pid %d, type %u\n", sender, client.pid, client.type);
        return verdict;
    }
    if (count == 1 && Is(command, BusWire::kBye)) {
        ROUTER_LOG(4, "bus: client %u said goodbye\n", sender);
        verdict.action = Verdict::kReply;
        verdict.reply = BusWire::kBye;
        verdict.thenForget = true;
        return verdict;
    }
    if (count == 1 && Is(command, BusWire::kDogs)) {
        if (client.congested) { // it reads nothing: no list is made for it
            ++client.dropped;
            return verdict;
        }
        answer_ = watchdog_.List();
        verdict.action = Verdict::kReply;
        verdict.reply = BusWire::kDogs;
        verdict.payload = &answer_;
        return verdict;
    }
    return Bad(sender, "command \"%s\", %zu frames, argument %zu bytes", Printable(command).c_str(), count,
               argument);
}

Verdict Router::Route(ClientId sender, Frame& frame)
{
    Common::SMessageHead head = BusWire::ReadHead(frame.data);
    const unsigned int body = head.length & BusWire::kBodyMax;
    const bool response = (head.messageId & BusWire::kResponseBit) != 0;
    if (BusWire::kHeadSize + body != frame.size)
        return Bad(sender, "event 0x%x, length word 0x%x, frame of %zu bytes", head.messageId, head.length,
                   frame.size);
    Verdict verdict;
    const ClientId destination = head.flags;
    if (response && destination == 0) {
        ROUTER_LOG(0, "bus: response 0x%x from client %u names no requesting client (flags 0); dropped\n",
                   head.messageId, sender);
        return verdict;
    }
    if (!response && destination == 0 && Watchdog::Takes(head.messageId))
        watchdog_.Take(head.messageId, sender, clients_[sender].pid, frame.data + BusWire::kHeadSize, body);

    // Delivered with the sender's client id in the flags field.
    head.flags = sender;
    head.length = body;
    BusWire::WriteHead(frame.data, head);
    targets_.clear();
    auto found = subscribers_.find(head.messageId);
    if (found != subscribers_.end()) {
        if (destination == 0)
            targets_.assign(found->second.begin(), found->second.end());
        else if (found->second.count(destination))
            targets_.push_back(destination);
    }
    if (targets_.empty()) {
        if (destination == 0)
            ROUTER_LOG(4, "bus: nobody subscribed event 0x%x from client %u; dropped\n", head.messageId, sender);
        else
            ROUTER_LOG(4, "bus: client %u has not subscribed event 0x%x from client %u; dropped\n", destination,
                       head.messageId, sender);
        return verdict;
    }
    verdict.action = Verdict::kDeliver;
    verdict.targets = &targets_;
    verdict.frame = &frame;
    return verdict;
}

} // namespace busd
