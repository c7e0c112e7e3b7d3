#include "Flow.h"

#include <chrono>

namespace busd {

using BusProtocol::Command;
using BusProtocol::Fits;

namespace {

bool Fit(const Client& client, size_t size)
{
    return Fits(client.inflight.messages, client.inflight.bytes, size);
}

// A receiver that holds a sender up is congested this long after it last
// took something: it reports a take up to kTookMs late.
const long long kStalledMs = BusProtocol::kCongestionMs + BusProtocol::kTookMs;

long long WallMicroseconds()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

bool Flow::Accept(ClientId sender, unsigned short asked, zmq::message_t& message, const std::vector<ClientId>& targets)
{
    Client* s = clients_.Find(sender);
    const size_t size = message.size();
    if (s == nullptr || !Fits(s->held.messages, s->held.bytes, size))
        return false;
    s->held.Add(size);
    if (s->inbox.empty() && Ready(sender, size, targets)) {
        Deliver(sender, asked, message, targets);
        return true;
    }
    s->inbox.push_back(Pending{std::move(message), asked, targets});
    return true;
}

// Whether every receiver of a message of `size` bytes can take it now: it
// has credit, or is congested or gone. One that cannot is told that
// `sender` waits for it.
bool Flow::Ready(ClientId sender, size_t size, const std::vector<ClientId>& targets)
{
    bool ready = true;
    for (ClientId id : targets) {
        Client* r = clients_.Find(id);
        if (r == nullptr || r->gone || r->congested || Fit(*r, size))
            continue;
        if (clock_() - r->progress >= kStalledMs) { // it has taken nothing for long: nobody waits for it
            Congest(*r, id);
            if (!r->blocking.empty())
                stalled_.insert(id); // the senders it held up go on at the next Check
            continue;
        }
        ready = false;
        r->blocking.insert(sender);
        stalled_.insert(id);
        if (!r->waitSent) {
            r->waitSent = true;
            Tell(id, Command::kWait);
        }
    }
    return ready;
}

void Flow::Deliver(ClientId sender, unsigned short asked, zmq::message_t& message, const std::vector<ClientId>& targets)
{
    const size_t size = message.size(); // before it may be moved away
    delivered_.clear();
    for (size_t i = 0; i < targets.size(); ++i) {
        const ClientId id = targets[i];
        Client* r = clients_.Find(id);
        if (r == nullptr || r->gone)
            continue;
        if (r->congested) {
            ++r->dropped;
            continue;
        }
        zmq::message_t copy;
        if (i + 1 < targets.size() || !monitors_.empty())
            copy.copy(message); // shares the bytes
        else
            copy.move(message); // the last one needs no copy: the bytes go as they came
        if (Send(id, *r, &copy, 1))
            delivered_.push_back(id);
    }
    if (!monitors_.empty())
        Copy(sender, asked, message, delivered_);
    if (Client* s = clients_.Find(sender)) {
        s->freed.Add(size);
        Return(sender, *s);
    }
}

void Flow::Copy(ClientId sender, unsigned short asked, const zmq::message_t& message,
                const std::vector<ClientId>& delivered)
{
    const unsigned short event = BusWire::ReadHead(message.data()).messageId;
    BusProtocol::Routing routing;
    routing.timeUs = WallMicroseconds();
    routing.source = sender;
    routing.asked = asked;
    routing.targets = delivered;
    const char* name = BusProtocol::Name(Command::kRouted);
    const size_t cost = std::strlen(name) + BusProtocol::RoutedRecord(routing).size() + message.size();
    for (ClientId id : monitors_) {
        Client* m = clients_.Find(id);
        if (m == nullptr || m->gone || (!m->watched.empty() && !m->watched.count(event)))
            continue;
        if (!Fit(*m, cost)) { // a monitor never holds the bus up
            ++m->missed;
            ++m->dropped;
            continue;
        }
        routing.missed = m->missed;
        const std::string record = BusProtocol::RoutedRecord(routing);
        zmq::message_t frames[3];
        frames[0].rebuild(name, std::strlen(name));
        frames[1].rebuild(record.data(), record.size());
        frames[2].copy(const_cast<zmq::message_t&>(message));
        if (Send(id, *m, frames, 3))
            m->missed = 0;
    }
}

// Sends what a receiver pays for with credit, and charges it.
bool Flow::Send(ClientId to, Client& client, zmq::message_t* frames, size_t count)
{
    size_t cost = 0;
    for (size_t i = 0; i < count; ++i)
        cost += frames[i].size();
    if (!outlet_.Put(client.routing, frames, count)) {
        gone_.push_back(to);
        return false;
    }
    if (client.inflight.messages == 0)
        client.progress = clock_(); // from now on it has something to take
    client.inflight.Add(cost);
    return true;
}

// Returns a sender's freed credit with ROOM when enough has gathered or it waits.
void Flow::Return(ClientId sender, Client& s)
{
    if (s.freed.messages == 0 || s.gone ||
        !(s.wantsRoom || s.freed.messages >= BusProtocol::kWindowMessages / 2 ||
          s.freed.bytes >= BusProtocol::kWindowBytes / 2))
        return;
    const BusProtocol::Credit credit{s.freed.messages, static_cast<std::uint32_t>(s.freed.bytes)};
    s.held.messages -= s.freed.messages;
    s.held.bytes -= s.freed.bytes;
    s.freed = Amount();
    s.wantsRoom = false;
    Tell(sender, Command::kRoom, &credit, sizeof credit);
}

void Flow::Dispatch(ClientId sender)
{
    Client* s = clients_.Find(sender);
    while (s != nullptr && !s->inbox.empty()) {
        Pending& next = s->inbox.front();
        if (!Ready(sender, next.message.size(), next.targets))
            return;
        Deliver(sender, next.asked, next.message, next.targets);
        s->inbox.pop_front();
    }
    if (s != nullptr && s->gone) {
        s->held = s->freed = Amount();
        clients_.Erase(sender); // its last message has gone out
    }
}

// The senders that a receiver held up try again.
void Flow::Retry(Client& receiver, ClientId id)
{
    std::set<ClientId> senders;
    senders.swap(receiver.blocking);
    stalled_.erase(id);
    for (ClientId sender : senders)
        Dispatch(sender);
}

bool Flow::Reply(ClientId to, Command command, const std::function<std::string()>& payload)
{
    Client* c = clients_.Find(to);
    if (c == nullptr || c->gone)
        return false;
    const char* name = BusProtocol::Name(command);
    if (c->congested || !Fit(*c, std::strlen(name))) { // it reads nothing: no list is made for it
        ++c->dropped;
        return false;
    }
    const std::string text = payload();
    if (!Fit(*c, std::strlen(name) + text.size())) {
        ++c->dropped;
        return false;
    }
    zmq::message_t frames[2];
    frames[0].rebuild(name, std::strlen(name));
    frames[1].rebuild(text.data(), text.size());
    return Send(to, *c, frames, 2);
}

void Flow::Tell(ClientId to, Command command, const void* argument, size_t size)
{
    Client* c = clients_.Find(to);
    if (c == nullptr || c->gone)
        return;
    const char* name = BusProtocol::Name(command);
    zmq::message_t frames[2];
    frames[0].rebuild(name, std::strlen(name));
    if (argument)
        frames[1].rebuild(argument, size);
    if (!outlet_.Put(c->routing, frames, argument ? 2 : 1))
        gone_.push_back(to);
}

bool Flow::Took(ClientId from, const BusProtocol::Credit& credit)
{
    Client* r = clients_.Find(from);
    if (r == nullptr || credit.messages > r->inflight.messages || credit.bytes > r->inflight.bytes)
        return false;
    r->inflight.messages -= credit.messages;
    r->inflight.bytes -= credit.bytes;
    r->progress = clock_();
    r->waitSent = false;
    if (r->congested && credit.messages > 0) {
        BUS_LOG(0, "bus: client %u (pid %d) takes messages again; %llu were dropped\n", from, r->pid, r->dropped);
        r->congested = false;
        r->dropped = 0;
    }
    Retry(*r, from);
    return true;
}

void Flow::Waits(ClientId sender)
{
    if (Client* s = clients_.Find(sender)) {
        s->wantsRoom = true;
        Return(sender, *s);
    }
}

void Flow::Watch(ClientId monitor) { monitors_.insert(monitor); }

long long Flow::Check()
{
    if (stalled_.empty())
        return -1;
    const long long now = clock_();
    long long next = -1;
    std::vector<ClientId> ready;
    for (auto at = stalled_.begin(); at != stalled_.end();) {
        const ClientId id = *at;
        Client* r = clients_.Find(id);
        if (r == nullptr || r->blocking.empty()) {
            at = stalled_.erase(at);
            continue;
        }
        ++at;
        const long long due = r->progress + kStalledMs;
        if (!r->congested && now < due) {
            next = next < 0 ? due : std::min(next, due);
            continue;
        }
        if (!r->congested)
            Congest(*r, id);
        ready.push_back(id); // congested: those it held up go on
    }
    for (ClientId id : ready)
        if (Client* r = clients_.Find(id))
            Retry(*r, id);
    return next;
}

void Flow::Congest(Client& r, ClientId id)
{
    r.congested = true;
    BUS_LOG(0, "bus: client %u (pid %d) took no message for %d ms; dropping its messages until it does\n", id, r.pid,
            BusProtocol::kCongestionMs);
}

void Flow::Leave(ClientId id)
{
    monitors_.erase(id);
    Client* c = clients_.Find(id);
    if (c == nullptr)
        return;
    c->inflight = Amount();
    Retry(*c, id); // the senders it held up go on without it
    Dispatch(id);  // its own messages still go out; its record goes after the last
}

std::map<ClientId, Amount> Flow::Waiting()
{
    std::map<ClientId, Amount> waiting;
    for (auto& entry : clients_.all())
        for (const Pending& pending : entry.second.inbox)
            for (ClientId id : pending.targets)
                waiting[id].Add(pending.message.size());
    return waiting;
}

} // namespace busd
