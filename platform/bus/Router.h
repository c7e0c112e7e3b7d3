// The bus's protocol: what a message from a client means, through a table of
// command handlers, and where a bus message goes (docs/bus.md). It works on
// frames already received; the client table (Clients.h), the subscriptions
// (Subscriptions.h), the flow control (Flow.h) and the watchdog service
// (Watchdog.h) keep the state, and the daemon's loop moves the frames.
#ifndef BUSD_ROUTER_H
#define BUSD_ROUTER_H

#include "Clients.h"
#include "Flow.h"
#include "Subscriptions.h"
#include "Watchdog.h"

#include <string>
#include <vector>

namespace busd {

class Router {
public:
    static const size_t kMostFrames = 2; // a message's frames: a bus message, or a command and its argument

    Router(Watchdog& watchdog, Outlet& outlet, Flow::Clock clock)
        : watchdog_(watchdog), flow_(clients_, outlet, std::move(clock))
    {
    }

    Clients& clients() { return clients_; }

    // A message of `count` frames (1..kMostFrames) from `sender`. False when
    // it broke the protocol: the connection is to be closed.
    bool Handle(ClientId sender, zmq::message_t* frames, size_t count);
    // Forgets a client: its subscriptions end, its watchdogs are orphaned,
    // and its id is free again once its own messages have gone out.
    void Forget(ClientId id);
    // Forgets the clients that a send found gone.
    void ForgetGone();
    // On the clock: congestion. Returns when it is due next (-1: when a
    // sender waits for a receiver).
    long long Tick()
    {
        const long long next = flow_.Check();
        ForgetGone();
        return next;
    }
    // The clients as a JSON array (mdvr-bus list).
    std::string List();

private:
    struct Handler;
    static const Handler kHandlers[];

    bool Route(ClientId sender, zmq::message_t& frame);
    bool Bad(ClientId sender, const char* format, ...) __attribute__((format(printf, 3, 4)));
    bool OnHello(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnBye(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnSubscribe(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnUnsubscribe(ClientId id, Client& client, const zmq::message_t* argument);
    bool Subscription(ClientId id, Client& client, const zmq::message_t* argument, bool subscribe);
    bool OnDogs(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnList(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnMonitor(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnTook(ClientId id, Client& client, const zmq::message_t* argument);
    bool OnWait(ClientId id, Client& client, const zmq::message_t* argument);

    Watchdog& watchdog_;
    Clients clients_;
    Subscriptions subscriptions_;
    Flow flow_;
    std::vector<ClientId> targets_;
};

} // namespace busd

#endif
