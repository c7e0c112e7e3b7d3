// mdvr-busd: the message bus of the development machine (docs/bus.md).
//
//   mdvr-busd [--port N | --ipc PATH]
//
// One ROUTER socket on 127.0.0.1 (or a local IPC socket). Messages are routed
// by event to the clients that subscribed it; responses go back to the
// requesting client; messages to destination 0 with the watchdog ids also
// feed the watchdog service, which reports a watchdog whose timeout passed
// without a feed. Logs through the support library's gclDebugPrintf.
#include "BusWire.h"

#include <json/writer.h>
#include <zmq.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#define BUSD_LOG(level, ...) Common::gclDebugPrintf(level, "platform/bus/mdvr_busd", __func__, __LINE__, __VA_ARGS__)

namespace {

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

const int kTickMs = 50;            // the watchdogs are checked this often
const int kSendTimeoutMs = 500;    // a client that takes nothing for this long is congested
const int kBatch = 1000;           // messages handled between checks of the watchdogs
const int kHighWater = 10000;

long long Now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

struct Peer {
    std::string routing; // ZeroMQ routing id of its connection
    int pid = 0;
    unsigned int type = 0;
    std::set<int> events;
    bool congested = false;
    unsigned long long dropped = 0;
};

struct Dog {
    int pid = 0;
    unsigned short client = 0;
    unsigned int timeoutMs = 0;
    long long lastFeed = 0;
    bool lapsed = false;
};

class Bus {
public:
    explicit Bus(zmq::context_t& context)
        : router_(context, zmq::socket_type::router), monitor_(context, zmq::socket_type::pair)
    {
    }

    // Binds the endpoint; returns the endpoint as bound (the port chosen for
    // port 0 included).
    std::string Listen(const std::string& endpoint)
    {
        router_.set(zmq::sockopt::router_mandatory, 1);
        router_.set(zmq::sockopt::sndtimeo, kSendTimeoutMs);
        router_.set(zmq::sockopt::sndhwm, kHighWater);
        router_.set(zmq::sockopt::rcvhwm, kHighWater);
        router_.set(zmq::sockopt::linger, 0);
        router_.set(zmq::sockopt::maxmsgsize, static_cast<int64_t>(BusWire::kHeadSize + BusWire::kBodyMax));
        if (zmq_socket_monitor(static_cast<void*>(router_), "inproc://mdvr-busd-monitor",
                               ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL | ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL |
                                   ZMQ_EVENT_HANDSHAKE_FAILED_AUTH) != 0)
            throw zmq::error_t();
        monitor_.set(zmq::sockopt::linger, 0);
        monitor_.connect("inproc://mdvr-busd-monitor");
        router_.bind(endpoint);
        return router_.get(zmq::sockopt::last_endpoint);
    }

    void Run()
    {
        long long nextCheck = Now() + kTickMs;
        while (!g_stop) {
            zmq::pollitem_t items[2] = {{static_cast<void*>(router_), 0, ZMQ_POLLIN, 0},
                                        {static_cast<void*>(monitor_), 0, ZMQ_POLLIN, 0}};
            try {
                zmq::poll(items, 2, std::chrono::milliseconds(std::max(0LL, nextCheck - Now())));
                for (int i = 0; i < kBatch && ReceiveOne(); ++i) {
                }
                ReadMonitor();
            } catch (const zmq::error_t& e) {
                if (e.num() != EINTR)
                    BUSD_LOG(0, "bus: %s\n", e.what());
            }
            if (Now() >= nextCheck) {
                CheckDogs();
                nextCheck = Now() + kTickMs;
            }
        }
    }

private:
    bool ReceiveOne()
    {
        std::vector<zmq::message_t>& frames = frames_; // kept: no allocation per message
        frames.resize(1);
        if (!router_.recv(frames[0], zmq::recv_flags::dontwait))
            return false;
        while (frames.back().more()) {
            frames.emplace_back();
            (void)router_.recv(frames.back());
        }
        Handle(frames);
        return true;
    }

    // A rejected connection: bytes that are not the bus's protocol.
    void ReadMonitor()
    {
        zmq::message_t event, address;
        while (monitor_.recv(event, zmq::recv_flags::dontwait)) {
            (void)monitor_.recv(address);
            std::uint16_t id = 0;
            std::uint32_t value = 0;
            if (event.size() >= 6) {
                std::memcpy(&id, event.data(), sizeof id);
                std::memcpy(&value, static_cast<char*>(event.data()) + 2, sizeof value);
            }
            BUSD_LOG(0, "bus: rejected a connection at %s: handshake failed (event 0x%x, %s)\n",
                     address.to_string().c_str(), id, zmq_strerror(static_cast<int>(value)));
        }
    }

    unsigned short Admit(const std::string& routing)
    {
        auto found = byRouting_.find(routing);
        if (found != byRouting_.end())
            return found->second;
        do
            next_ = static_cast<unsigned short>(next_ == 0xFFFF ? 1 : next_ + 1);
        while (peers_.count(next_));
        peers_[next_].routing = routing;
        byRouting_[routing] = next_;
        return next_;
    }

    void Forget(unsigned short id)
    {
        auto peer = peers_.find(id);
        if (peer == peers_.end())
            return;
        for (int event : peer->second.events)
            Unsubscribe(id, event);
        byRouting_.erase(peer->second.routing);
        peers_.erase(peer);
    }

    void Unsubscribe(unsigned short id, int event)
    {
        auto found = subscribers_.find(event);
        if (found == subscribers_.end())
            return;
        found->second.erase(id);
        if (found->second.empty())
            subscribers_.erase(found);
    }

    void Handle(std::vector<zmq::message_t>& frames)
    {
        const unsigned short id = Admit(frames[0].to_string());
        if (frames.size() == 2 && frames[1].size() >= BusWire::kHeadSize)
            return Route(id, false, frames[1]); // a bus message
        Peer& peer = peers_[id];
        const std::string command = frames.size() > 1 ? frames[1].to_string() : std::string();
        const size_t payload = frames.size() > 2 ? frames[2].size() : 0;
        const bool one = frames.size() == 3;

        if (command == BusWire::kRsp) {
            if (one && payload >= BusWire::kHeadSize)
                return Route(id, true, frames[2]);
        } else if ((command == BusWire::kSub || command == BusWire::kUnsub) && one && payload == 4) {
            const int event = BusWire::ReadInt(frames[2].data());
            if (command == BusWire::kSub) {
                peer.events.insert(event);
                subscribers_[event].insert(id);
            } else {
                peer.events.erase(event);
                Unsubscribe(id, event);
            }
            BUSD_LOG(4, "bus: client %u %s event 0x%x\n", id, command == BusWire::kSub ? "subscribed" : "left",
                     event);
            return;
        } else if (command == BusWire::kHello && one && payload == 8) {
            peer.pid = BusWire::ReadInt(frames[2].data());
            peer.type = static_cast<unsigned int>(BusWire::ReadInt(static_cast<char*>(frames[2].data()) + 4));
            BUSD_LOG(4, "bus: client %u is pid %d, type %u\n", id, peer.pid, peer.type);
            return;
        } else if (command == BusWire::kBye && frames.size() == 2) {
            const std::string routing = peer.routing;
            Forget(id);
            Send(routing, BusWire::kBye, nullptr);
            BUSD_LOG(4, "bus: client %u said goodbye\n", id);
            return;
        } else if (command == BusWire::kDogs && frames.size() == 2) {
            zmq::message_t list(DogsJson());
            Send(peer.routing, BusWire::kDogs, &list);
            return;
        }
        std::string shown = command.substr(0, 16); // the log gets text only, whatever came in
        for (char& ch : shown)
            ch = (ch >= 0x20 && ch < 0x7F) ? ch : '?';
        BUSD_LOG(0, "bus: bad message from client %u (pid %d): command \"%s\", %zu frames, argument %zu bytes; "
                    "dropped\n", id, peer.pid, shown.c_str(), frames.size() - 1, payload);
    }

    void Route(unsigned short sender, bool response, zmq::message_t& frame)
    {
        Common::SMessageHead head = BusWire::ReadHead(frame.data());
        const unsigned int body = head.length & BusWire::kBodyMax;
        if (BusWire::kHeadSize + body != frame.size() || (response != ((head.messageId & BusWire::kResponseBit) != 0))) {
            BUSD_LOG(0, "bus: bad message from client %u (pid %d): event 0x%x, length word 0x%x, frame of %zu "
                        "bytes; dropped\n", sender, peers_[sender].pid, head.messageId, head.length, frame.size());
            return;
        }
        const unsigned short destination = head.flags;
        if (!response && destination == 0)
            Watchdog(sender, head, static_cast<const char*>(frame.data()) + BusWire::kHeadSize);

        // Delivered with the sender's client id in the flags field.
        head.flags = sender;
        head.length = body;
        BusWire::WriteHead(frame.data(), head);
        auto found = subscribers_.find(head.messageId);
        std::vector<unsigned short>& targets = targets_;
        targets.clear();
        if (found != subscribers_.end()) {
            if (destination == 0)
                targets.assign(found->second.begin(), found->second.end());
            else if (found->second.count(destination))
                targets.push_back(destination);
        }
        if (targets.empty()) {
            BUSD_LOG(4, "bus: nobody subscribed event 0x%x%s, from client %u; dropped\n", head.messageId,
                     destination ? (" at client " + std::to_string(destination)).c_str() : "", sender);
            return;
        }
        for (size_t i = 0; i < targets.size(); ++i) {
            zmq::message_t copy;
            if (i + 1 < targets.size())
                copy.copy(frame);
            else
                copy.move(frame);
            auto peer = peers_.find(targets[i]);
            if (peer != peers_.end())
                Deliver(targets[i], peer->second, copy);
        }
    }

    void Deliver(unsigned short id, Peer& peer, zmq::message_t& frame)
    {
        const int result = Send(peer.routing, nullptr, &frame, peer.congested);
        if (result == 0) {
            if (peer.congested)
                BUSD_LOG(0, "bus: client %u (pid %d) takes messages again; %llu were dropped\n", id, peer.pid,
                         peer.dropped);
            peer.congested = false;
            peer.dropped = 0;
        } else if (result == EAGAIN) {
            if (!peer.congested)
                BUSD_LOG(0, "bus: client %u (pid %d) takes no messages; dropping them until it does\n", id,
                         peer.pid);
            peer.congested = true;
            ++peer.dropped;
        } else {
            BUSD_LOG(4, "bus: client %u (pid %d) is gone\n", id, peer.pid);
            Forget(id);
        }
    }

    // Sends a command (with an optional payload), or with a null command a bus
    // message. 0 when sent, else the error (EAGAIN: no room, EHOSTUNREACH: gone).
    int Send(const std::string& routing, const char* command, zmq::message_t* payload, bool dontWait = false)
    {
        try {
            zmq::message_t to(routing.data(), routing.size());
            if (!router_.send(to, zmq::send_flags::sndmore | (dontWait ? zmq::send_flags::dontwait
                                                                       : zmq::send_flags::none)))
                return EAGAIN;
            if (command) {
                zmq::message_t name(command, std::strlen(command));
                router_.send(name, payload ? zmq::send_flags::sndmore : zmq::send_flags::none);
            }
            if (payload)
                router_.send(*payload, zmq::send_flags::none);
            return 0;
        } catch (const zmq::error_t& e) {
            return e.num();
        }
    }

    static std::string Name(const char* record)
    {
        return std::string(record, strnlen(record, 32));
    }

    void Watchdog(unsigned short sender, const Common::SMessageHead& head, const char* body)
    {
        const int id = head.messageId;
        if (id != BusWire::kDogRegister && id != BusWire::kDogFeed && id != BusWire::kDogUnregister)
            return;
        const unsigned int length = head.length & BusWire::kBodyMax;
        if (length != BusWire::kDogRecordSize) {
            BUSD_LOG(0, "bus: watchdog message %d from client %u with a body of %u bytes, not %u; ignored\n", id,
                     sender, length, BusWire::kDogRecordSize);
            return;
        }
        const std::string name = Name(body);
        unsigned int param;
        std::memcpy(&param, body + 32, sizeof param);
        const long long now = Now();
        if (id == BusWire::kDogUnregister) {
            if (dogs_.erase(name))
                BUSD_LOG(4, "bus: watchdog \"%s\" unregistered\n", name.c_str());
            return;
        }
        auto found = dogs_.find(name);
        if (found == dogs_.end() || id == BusWire::kDogRegister) {
            Dog& dog = dogs_[name];
            dog.pid = peers_[sender].pid;
            dog.client = sender;
            dog.timeoutMs = param ? param : BusWire::kDogDefaultTimeoutMs;
            dog.lastFeed = now;
            dog.lapsed = false;
            BUSD_LOG(4, "bus: watchdog \"%s\" of pid %d registered, timeout %u ms\n", name.c_str(), dog.pid,
                     dog.timeoutMs);
            return;
        }
        Dog& dog = found->second;
        if (dog.lapsed)
            BUSD_LOG(0, "bus: watchdog \"%s\" of pid %d fed again after %lld ms\n", name.c_str(), dog.pid,
                     now - dog.lastFeed);
        dog.lapsed = false;
        dog.lastFeed = now;
    }

    void CheckDogs()
    {
        const long long now = Now();
        for (auto& entry : dogs_) {
            Dog& dog = entry.second;
            if (!dog.lapsed && now - dog.lastFeed > dog.timeoutMs) {
                dog.lapsed = true;
                BUSD_LOG(0, "bus: watchdog \"%s\" of pid %d not fed for %lld ms (timeout %u ms)\n",
                         entry.first.c_str(), dog.pid, now - dog.lastFeed, dog.timeoutMs);
            }
        }
    }

    std::string DogsJson() const
    {
        Json::Value list(Json::arrayValue);
        const long long now = Now();
        for (const auto& entry : dogs_) {
            Json::Value dog;
            dog["name"] = entry.first;
            dog["pid"] = entry.second.pid;
            dog["client"] = entry.second.client;
            dog["timeoutMs"] = entry.second.timeoutMs;
            dog["sinceFeedMs"] = Json::Int64(now - entry.second.lastFeed);
            dog["lapsed"] = entry.second.lapsed;
            list.append(dog);
        }
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        return Json::writeString(writer, list);
    }

    zmq::socket_t router_;
    zmq::socket_t monitor_;
    unsigned short next_ = 0;
    std::map<unsigned short, Peer> peers_;
    std::unordered_map<std::string, unsigned short> byRouting_;
    std::unordered_map<int, std::set<unsigned short>> subscribers_;
    std::map<std::string, Dog> dogs_;
    std::vector<zmq::message_t> frames_;
    std::vector<unsigned short> targets_;
};

int Usage(const char* message)
{
    std::fprintf(stderr, "mdvr-busd: %s\nusage: mdvr-busd [--port N | --ipc PATH]\n", message);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    std::string endpoint = "tcp://127.0.0.1:" + std::to_string(BusWire::kDefaultPort);
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--port" && i + 1 < argc) {
            char* end = nullptr;
            const unsigned long port = std::strtoul(argv[++i], &end, 10);
            if (*end != '\0' || port > 65535)
                return Usage(("bad port: " + std::string(argv[i])).c_str());
            endpoint = "tcp://127.0.0.1:" + (port ? std::to_string(port) : std::string("*"));
        } else if (arg == "--ipc" && i + 1 < argc) {
            endpoint = "ipc://" + std::string(argv[++i]);
        } else {
            return Usage(("unknown argument: " + arg).c_str());
        }
    }
    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    zmq::context_t* context = new zmq::context_t(1);
    int status = 0;
    try {
        Bus bus(*context);
        const std::string bound = bus.Listen(endpoint);
        std::printf("mdvr-busd: listening on %s\n", bound.c_str());
        std::fflush(stdout);
        BUSD_LOG(4, "bus: listening on %s\n", bound.c_str());
        bus.Run();
        BUSD_LOG(4, "bus: stopped by a signal\n");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-busd: cannot listen on %s: %s\n", endpoint.c_str(), e.what());
        status = 1;
    }
    delete context; // sockets closed with linger 0: does not block
    return status;
}
