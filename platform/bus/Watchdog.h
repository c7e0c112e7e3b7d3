// The bus's watchdog service: processes register a watchdog by name, feed it,
// and unregister it; a watchdog that goes longer than its timeout without a
// feed is reported once, and again when it is fed after all (docs/bus.md).
// It knows nothing of sockets: the router hands it the watchdog messages and
// the daemon's loop calls Check() when it is due. Time comes from the clock
// it is given, in milliseconds.
#ifndef BUSD_WATCHDOG_H
#define BUSD_WATCHDOG_H

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace busd {

class Watchdog {
public:
    typedef std::function<long long()> Clock;
    static const unsigned int kPerClient = 64; // watchdogs one client may hold
    static const unsigned int kMost = 1024;    // watchdogs in all

    explicit Watchdog(Clock clock) : clock_(std::move(clock)) {}

    // True for the ids of the service's messages (to destination 0).
    static bool Takes(int messageId);
    // A register, feed or unregister message of client `client` (process
    // `pid`) with its body.
    void Take(int messageId, unsigned short client, int pid, const char* body, unsigned int length);
    // The client has gone: its watchdogs stay watched, with client 0.
    void Orphan(unsigned short client);
    // Reports the watchdogs that lapsed since the last check. Returns when
    // the next check is due on the clock, or -1 when no watchdog can lapse.
    long long Check();
    // The watchdogs as a JSON array: name, pid, client, timeoutMs,
    // sinceFeedMs, lapsed.
    std::string List() const;
    // The names of a client's watchdogs.
    std::vector<std::string> Names(unsigned short client) const;

private:
    struct Dog {
        int pid = 0;
        unsigned short client = 0;
        unsigned int timeoutMs = 0;
        long long lastFeed = 0;
        bool lapsed = false;
    };
    void Register(const std::string& name, unsigned short client, int pid, unsigned int param, long long now);
    unsigned int Held(unsigned short client) const;

    Clock clock_;
    std::map<std::string, Dog> dogs_;
};

} // namespace busd

#endif
