// Who subscribed which event: the clients a message for an event goes to,
// each once, in ascending client id.
#ifndef BUSD_SUBSCRIPTIONS_H
#define BUSD_SUBSCRIPTIONS_H

#include "Clients.h"

#include <set>
#include <unordered_map>

namespace busd {

class Subscriptions {
public:
    void Add(int event, ClientId id) { byEvent_[event].insert(id); }
    void Remove(int event, ClientId id)
    {
        auto found = byEvent_.find(event);
        if (found != byEvent_.end() && found->second.erase(id) && found->second.empty())
            byEvent_.erase(found);
    }
    // The subscribers of `event`, null for none.
    const std::set<ClientId>* Of(int event) const
    {
        auto found = byEvent_.find(event);
        return found == byEvent_.end() ? nullptr : &found->second;
    }

private:
    std::unordered_map<int, std::set<ClientId>> byEvent_;
};

} // namespace busd

#endif
