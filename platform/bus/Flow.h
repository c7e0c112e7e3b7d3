// The bus's flow control (docs/bus.md): what the daemon passes on to each
// client, and when.
//
// Credit both ways. A receiver has at most a window (BusProtocol::Fits) in
// flight that its process has not taken; it says TOOK as it takes. A
// sender's messages wait in its inbox, in order, until each of their
// receivers has credit for them; the daemon holds at most a window of them
// per sender, returned with ROOM as they go out. So a sender waits for the
// slowest receiver that keeps taking, and what one client costs is bounded
// in bytes both ways. A receiver that holds a sender up and takes nothing
// for kCongestionMs is congested: what comes for it is dropped and counted
// until it takes again.
//
// Monitors get a copy of every message as it goes out, when they have
// credit for it; else the copy is dropped and counted, and nobody waits.
#ifndef BUSD_FLOW_H
#define BUSD_FLOW_H

#include "BusProtocol.h"
#include "Clients.h"

#include <functional>
#include <map>
#include <set>
#include <vector>

namespace busd {

// Where frames go: the daemon's socket, or a test's record.
class Outlet {
public:
    virtual ~Outlet() = default;
    // Sends one ZeroMQ message of `count` frames to the connection with this
    // routing id; false when the connection is gone.
    virtual bool Put(const std::string& routing, zmq::message_t* frames, size_t count) = 0;
};

class Flow {
public:
    typedef std::function<long long()> Clock;
    Flow(Clients& clients, Outlet& outlet, Clock clock) : clients_(clients), outlet_(outlet), clock_(std::move(clock))
    {
    }

    // A bus message of `sender`, its header rewritten for delivery, for
    // `targets` (which it may reorder). False when the sender went past its
    // window: it broke the protocol.
    bool Accept(ClientId sender, unsigned short asked, zmq::message_t& message, const std::vector<ClientId>& targets);
    // A command that the receiver pays for with credit (a list it asked
    // for, made only when it has credit); dropped and counted when it has
    // none. False when dropped.
    bool Reply(ClientId to, BusProtocol::Command command, const std::function<std::string()>& payload);
    // A command outside credit: BYE, ROOM, WAIT.
    void Tell(ClientId to, BusProtocol::Command command, const void* argument = nullptr, size_t size = 0);
    // TOOK: the receiver took this much. False when that is more than it had.
    bool Took(ClientId from, const BusProtocol::Credit& credit);
    // WAIT from a sender: it waits for credit.
    void Waits(ClientId sender);
    // The client gets a copy of what goes out (its filter is its own).
    void Watch(ClientId monitor);
    // Marks congested the receivers that hold a sender up and took nothing
    // for too long, and lets those senders go on. On the clock, and after
    // each message; returns when it is due next (-1: when a sender waits).
    long long Check();
    // The client, detached, is being forgotten: it receives no more; its
    // own messages still go out, and its record goes after the last.
    void Leave(ClientId id);
    // Clients found gone by a send, to be forgotten.
    std::vector<ClientId>& gone() { return gone_; }
    // Messages and bytes waiting in inboxes for each receiver.
    std::map<ClientId, Amount> Waiting();

private:
    bool Ready(ClientId sender, size_t size, const std::vector<ClientId>& targets);
    void Deliver(ClientId sender, unsigned short asked, zmq::message_t& message, const std::vector<ClientId>& targets);
    void Copy(ClientId sender, unsigned short asked, const zmq::message_t& message,
              const std::vector<ClientId>& delivered);
    void Dispatch(ClientId sender);
    void Retry(Client& receiver, ClientId id);
    void Congest(Client& receiver, ClientId id);
    void Return(ClientId sender, Client& client);
    bool Send(ClientId to, Client& client, zmq::message_t* frames, size_t count);

    Clients& clients_;
    Outlet& outlet_;
    Clock clock_;
    std::set<ClientId> stalled_;  // receivers that hold a sender up
    std::set<ClientId> monitors_;
    std::vector<ClientId> gone_;
    std::vector<ClientId> delivered_;
};

} // namespace busd

#endif
