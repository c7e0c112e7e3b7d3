#include "Watchdog.h"

#include "BusProtocol.h"

#include <json/writer.h>

#include <algorithm>
#include <cstring>

namespace busd {

bool Watchdog::Takes(int messageId)
{
    return messageId == BusWire::kDogRegister || messageId == BusWire::kDogFeed ||
           messageId == BusWire::kDogUnregister;
}

void Watchdog::Take(int messageId, unsigned short client, int pid, const char* body, unsigned int length)
{
    if (length != BusWire::kDogRecordSize) {
        BUS_LOG(0, "bus: watchdog message %d from client %u with a body of %u bytes, not %u; ignored\n", messageId,
                client, length, BusWire::kDogRecordSize);
        return;
    }
    WatchDogInfo info;
    std::memcpy(&info, body, sizeof info);
    const std::string name(info.dogName, strnlen(info.dogName, sizeof info.dogName));
    const long long now = clock_();
    auto found = dogs_.find(name);
    if (messageId == BusWire::kDogUnregister) {
        if (found != dogs_.end()) {
            dogs_.erase(found);
            BUS_LOG(4, "bus: watchdog \"%s\" unregistered\n", name.c_str());
        }
    } else if (messageId == BusWire::kDogRegister || found == dogs_.end()) {
        Register(name, client, pid, info.dogParam, now);
    } else {
        Dog& dog = found->second;
        if (dog.lapsed)
            BUS_LOG(0, "bus: watchdog \"%s\" of pid %d fed again after %lld ms\n", name.c_str(), dog.pid,
                    now - dog.lastFeed);
        dog.lapsed = false;
        dog.lastFeed = now;
    }
}

void Watchdog::Register(const std::string& name, unsigned short client, int pid, unsigned int param, long long now)
{
    auto found = dogs_.find(name);
    const bool grows = found == dogs_.end();
    const bool again = !grows && found->second.client == client;
    if (!again && (Held(client) >= kPerClient || (grows && dogs_.size() >= kMost))) {
        BUS_LOG(0, "bus: watchdog \"%s\" of pid %d refused: %u per client and %u in all at most\n", name.c_str(), pid,
                kPerClient, kMost);
        return;
    }
    Dog& dog = dogs_[name];
    dog.pid = pid;
    dog.client = client;
    dog.timeoutMs = param ? param : BusWire::kDogDefaultTimeoutMs;
    dog.lastFeed = now;
    dog.lapsed = false;
    BUS_LOG(4, "bus: watchdog \"%s\" of pid %d registered, timeout %u ms\n", name.c_str(), pid, dog.timeoutMs);
}

unsigned int Watchdog::Held(unsigned short client) const
{
    return static_cast<unsigned int>(
        std::count_if(dogs_.begin(), dogs_.end(), [&](const auto& d) { return d.second.client == client; }));
}

void Watchdog::Orphan(unsigned short client)
{
    for (auto& entry : dogs_)
        if (entry.second.client == client)
            entry.second.client = 0;
}

long long Watchdog::Check()
{
    const long long now = clock_();
    long long next = -1;
    for (auto& entry : dogs_) {
        Dog& dog = entry.second;
        if (dog.lapsed)
            continue;
        const long long due = dog.lastFeed + dog.timeoutMs + 1;
        if (now >= due) {
            dog.lapsed = true;
            BUS_LOG(0, "bus: watchdog \"%s\" of pid %d not fed for %lld ms (timeout %u ms)\n", entry.first.c_str(),
                    dog.pid, now - dog.lastFeed, dog.timeoutMs);
        } else if (next < 0 || due < next) {
            next = due;
        }
    }
    return next;
}

std::vector<std::string> Watchdog::Names(unsigned short client) const
{
    std::vector<std::string> names;
    for (const auto& entry : dogs_)
        if (entry.second.client == client)
            names.push_back(entry.first);
    return names;
}

std::string Watchdog::List() const
{
    Json::Value list(Json::arrayValue);
    const long long now = clock_();
    for (const auto& entry : dogs_) {
        namespace K = BusProtocol::Keys;
        Json::Value dog;
        dog[K::kName] = entry.first;
        dog[K::kPid] = entry.second.pid;
        dog[K::kClient] = entry.second.client;
        dog[K::kTimeoutMs] = entry.second.timeoutMs;
        dog[K::kSinceFeedMs] = Json::Int64(now - entry.second.lastFeed);
        dog[K::kLapsed] = entry.second.lapsed;
        list.append(dog);
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, list);
}

} // namespace busd
