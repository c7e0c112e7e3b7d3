// mdvr-busd: the message bus of the development machine (docs/bus.md).
//
// One ZeroMQ ROUTER socket: by default an ipc socket in a directory only its
// user may enter, or TCP on 127.0.0.1 with --port. This file is the socket
// loop: it receives frames, hands them to the router (Router.h), which also
// feeds the watchdog service (Watchdog.h), and sends what the router says.
// It waits in one blocking receive until the next message or the next
// watchdog check, and looks at the socket's connection events on the clock.
#include "BusWire.h"
#include "Router.h"
#include "ToolArguments.h"
#include "ToolkitHost.h"
#include "Watchdog.h"

#include <zmq.hpp>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#define BUSD_LOG(level, ...) Common::gclDebugPrintf(level, "platform/bus/mdvr_busd", __func__, __LINE__, __VA_ARGS__)

namespace {

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

const int kMonitorMs = 100;     // connection events are read this often
const int kCongestionMs = 500;  // a client that frees no room for this long is congested
const int kHighWater = 200;     // messages queued per client, each way
const int kHandshakeMs = 500;   // a connection that has not greeted by then is closed
const size_t kMostFrames = 2;   // after the routing id; more breaks the protocol

unsigned long long Inode(int fd)
{
    struct stat st;
    return fd >= 0 && fstat(fd, &st) == 0 ? static_cast<unsigned long long>(st.st_ino) : 0;
}

class Loop {
public:
    Loop(zmq::context_t& context, busd::Router& router, busd::Watchdog& watchdog)
        : socket_(context, zmq::socket_type::router), monitor_(context, zmq::socket_type::pair), router_(router),
          watchdog_(watchdog)
    {
    }

    // Binds the endpoint; returns it as bound (the port chosen for port 0 included).
    std::string Listen(const std::string& endpoint)
    {
        socket_.set(zmq::sockopt::router_mandatory, 1);
        socket_.set(zmq::sockopt::sndtimeo, kCongestionMs);
        socket_.set(zmq::sockopt::sndhwm, kHighWater);
        socket_.set(zmq::sockopt::rcvhwm, kHighWater);
        socket_.set(zmq::sockopt::linger, 0);
        socket_.set(zmq::sockopt::handshake_ivl, kHandshakeMs);
        socket_.set(zmq::sockopt::maxmsgsize, static_cast<int64_t>(BusWire::kHeadSize + BusWire::kBodyMax));
        // A ZAP domain makes ZeroMQ refuse peers of its older protocols at
        // their first bytes; no ZAP handler runs, so every ZMTP 3 peer is let in.
        socket_.set(zmq::sockopt::zap_domain, "mdvr-bus");
        if (zmq_socket_monitor(static_cast<void*>(socket_), "inproc://mdvr-busd-monitor",
                               ZMQ_EVENT_DISCONNECTED | ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL |
                                   ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL | ZMQ_EVENT_HANDSHAKE_FAILED_AUTH) != 0)
            throw zmq::error_t();
        monitor_.set(zmq::sockopt::linger, 0);
        monitor_.connect("inproc://mdvr-busd-monitor");
        socket_.bind(endpoint);
        return socket_.get(zmq::sockopt::last_endpoint);
    }

    void Run()
    {
        long long due = 0; // of the next look at the watchdogs and the connection events
        while (!g_stop) {
            long long now = BusWire::Now();
            if (now >= due) {
                ReadMonitor();
                const long long dog = watchdog_.Check();
                now = BusWire::Now();
                due = now + kMonitorMs;
                if (dog >= 0)
                    due = std::min(due, dog);
            }
            try {
                if (Receive(static_cast<int>(std::max(0LL, due - now))))
                    Handle();
            } catch (const zmq::error_t& e) {
                if (e.num() != EINTR)
                    BUSD_LOG(0, "bus: %s\n", e.what());
            }
        }
    }

private:
    // One message: its routing id, then up to kMostFrames frames (the rest is
    // read and counted). False when none came within `timeout` ms.
    bool Receive(int timeout)
    {
        if (timeout != timeout_) {
            socket_.set(zmq::sockopt::rcvtimeo, timeout);
            timeout_ = timeout;
        }
        if (!socket_.recv(routing_))
            return false;
        count_ = 0;
        for (bool more = routing_.more(); more; ++count_) {
            zmq::message_t& frame = frames_[std::min(count_, kMostFrames)];
            (void)socket_.recv(frame); // the parts of a message arrive together
            more = frame.more();
        }
        return true;
    }

    void Handle()
    {
        const std::string routing = routing_.to_string();
        busd::ClientId id = router_.Known(routing);
        bool stale = false;
        const int fd = id ? -1 : zmq_msg_get(routing_.handle(), ZMQ_SRCFD);
        const unsigned long long inode = id ? 0 : Inode(fd);
        if (id == 0 && (id = router_.Admit(routing, fd, inode, stale)) == 0) {
            if (stale) {
                BUSD_LOG(4, "bus: a message of a closed connection; dropped\n");
            } else {
                BUSD_LOG(0, "bus: %zu clients, no id free for another; connection closed\n", router_.size());
                Shut(fd, inode);
            }
            return;
        }
        if (count_ == 0 || count_ > kMostFrames) {
            BUSD_LOG(0, "bus: bad message from client %u: %zu frames; connection closed\n", id, count_);
            return Close(id);
        }
        busd::Frame views[kMostFrames];
        for (size_t i = 0; i < count_; ++i)
            views[i] = {static_cast<char*>(frames_[i].data()), frames_[i].size()};
        const busd::Verdict verdict = router_.Handle(id, views, count_);
        switch (verdict.action) {
        case busd::Verdict::kNothing:
            break;
        case busd::Verdict::kClose:
            Close(id);
            break;
        case busd::Verdict::kReply: {
            zmq::message_t payload;
            if (verdict.payload)
                payload.rebuild(verdict.payload->data(), verdict.payload->size());
            Send(id, verdict.reply, verdict.payload ? &payload : nullptr);
            if (verdict.thenForget)
                router_.Forget(id);
            break;
        }
        case busd::Verdict::kDeliver: {
            zmq::message_t& frame = frames_[verdict.frame - views];
            const std::vector<busd::ClientId>& targets = *verdict.targets;
            for (size_t i = 0; i < targets.size(); ++i) {
                zmq::message_t copy;
                if (i + 1 < targets.size())
                    copy.copy(frame); // shares the bytes
                else
                    copy.move(frame);
                Send(targets[i], nullptr, &copy);
            }
            break;
        }
        }
    }

    // Sends a bus message (no command) or a command with an optional payload
    // to a client. Waits for room while the client frees some now and then;
    // a client that frees none for kCongestionMs is congested and loses what
    // comes for it, without waiting, until it takes messages again.
    void Send(busd::ClientId id, const char* command, zmq::message_t* payload)
    {
        busd::Client* client = router_.Find(id);
        if (client == nullptr)
            return;
        int result = Put(client->routing, command, payload, zmq::send_flags::dontwait);
        if (result == EAGAIN && !client->congested)
            result = Put(client->routing, command, payload, zmq::send_flags::none);
        if (result == 0) {
            if (client->congested)
                BUSD_LOG(0, "bus: client %u (pid %d) takes messages again; %llu were dropped\n", id, client->pid,
                         client->dropped);
            client->congested = false;
            client->dropped = 0;
        } else if (result == EAGAIN || result == EINTR) {
            if (!client->congested)
                BUSD_LOG(0, "bus: client %u (pid %d) took no message for %d ms; dropping its messages until it "
                            "does\n", id, client->pid, kCongestionMs);
            client->congested = true;
            ++client->dropped;
        } else {
            BUSD_LOG(4, "bus: client %u (pid %d) is gone\n", id, client->pid);
            router_.Forget(id);
        }
    }

    // 0 when sent, else the error (EAGAIN: no room, EHOSTUNREACH: gone).
    int Put(const std::string& routing, const char* command, zmq::message_t* payload, zmq::send_flags flags)
    {
        try {
            zmq::message_t to(routing.data(), routing.size());
            if (!socket_.send(to, zmq::send_flags::sndmore | flags))
                return EAGAIN;
            // The rest of a started message always goes.
            if (command) {
                zmq::message_t name(command, std::strlen(command));
                socket_.send(name, payload ? zmq::send_flags::sndmore : zmq::send_flags::none);
            }
            if (payload)
                socket_.send(*payload, zmq::send_flags::none);
            return 0;
        } catch (const zmq::error_t& e) {
            return e.num();
        }
    }

    // Ends a client that broke the protocol: forgotten, and its connection closed.
    void Close(busd::ClientId id)
    {
        const busd::Client* client = router_.Find(id);
        const int fd = client->fd;
        const unsigned long long inode = client->inode;
        router_.Forget(id);
        Shut(fd, inode);
    }

    // Closes the connection on `fd` if it still holds the socket `inode`:
    // shut down, ZeroMQ sees its end and closes it.
    static void Shut(int fd, unsigned long long inode)
    {
        if (fd >= 0 && inode != 0 && Inode(fd) == inode)
            shutdown(fd, SHUT_RDWR);
    }

    // Connection events: an ended connection frees its client; a rejected
    // one (bytes that are not the protocol) is logged.
    void ReadMonitor()
    {
        zmq::message_t event, address;
        while (monitor_.recv(event, zmq::recv_flags::dontwait)) {
            (void)monitor_.recv(address);
            std::uint16_t what = 0;
            std::uint32_t value = 0;
            if (event.size() >= 6) {
                std::memcpy(&what, event.data(), sizeof what);
                std::memcpy(&value, static_cast<char*>(event.data()) + 2, sizeof value);
            }
            if (what == ZMQ_EVENT_DISCONNECTED)
                router_.Disconnected(static_cast<int>(value), Inode(static_cast<int>(value)));
            else
                BUSD_LOG(0, "bus: rejected a connection at %s: handshake failed (event 0x%x, %s)\n",
                         address.to_string().c_str(), what, zmq_strerror(static_cast<int>(value)));
        }
    }

    zmq::socket_t socket_;
    zmq::socket_t monitor_;
    busd::Router& router_;
    busd::Watchdog& watchdog_;
    zmq::message_t routing_;
    zmq::message_t frames_[kMostFrames + 1]; // the last takes what is too many
    size_t count_ = 0;
    int timeout_ = -1; // of receives, as set on the socket
};

// Makes way for the daemon's socket file: refuses when a daemon answers there
// or when the path is not a socket; removes a socket that nobody answers on,
// the leftover of a daemon that was killed.
bool ClaimSocketPath(const std::string& path, std::string& error)
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) {
        if (errno == ENOENT)
            return true;
        error = "cannot check " + path + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISSOCK(st.st_mode)) {
        error = path + " exists and is not a socket";
        return false;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = "socket path too long: " + path;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int reason = errno;
    close(fd);
    if (connected == 0) {
        error = "a bus daemon already answers at ipc://" + path;
        return false;
    }
    if (reason != ECONNREFUSED) {
        error = "cannot check " + path + ": " + std::strerror(reason);
        return false;
    }
    if (unlink(path.c_str()) != 0) {
        error = "cannot remove the stale socket " + path + ": " + std::strerror(errno);
        return false;
    }
    BUSD_LOG(4, "bus: removed the stale socket %s\n", path.c_str());
    return true;
}

unsigned long long InodeOf(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 ? static_cast<unsigned long long>(st.st_ino) : 0;
}

const char* const kExitStatus = "Exit status:\n"
                                "  0  stopped by SIGINT or SIGTERM\n"
                                "  1  cannot listen: a bus daemon answers at the endpoint, the address is taken,\n"
                                "     or the socket's directory is not private\n"
                                "  2  usage error, or MDVR_BUS neither a port nor an endpoint";

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"The message bus of the development machine: routes messages between recorder processes by\n"
                 "event and runs the watchdog service. Listens on an ipc socket in a directory only its user\n"
                 "may enter ($XDG_RUNTIME_DIR/mdvr-bus, else /tmp/mdvr-bus-UID/bus), on $MDVR_BUS when set,\n"
                 "or where an option says; prints \"mdvr-busd: listening on ENDPOINT\" and logs on standard\n"
                 "error (everything with TOOLKIT_LOG_LEVEL=4).",
                 "mdvr-busd"};
    app.set_version_flag("--version", std::string("mdvr-busd (BSCommonLibrary) ") + BSCOMMON_VERSION);
    int port = -1;
    std::string ipc;
    app.add_option("-p,--port", port, "listen on TCP 127.0.0.1:N instead (0: a free port)")
        ->type_name("N")
        ->check(CLI::Range(0, 65535).description(""));
    app.add_option("--ipc", ipc, "listen on the ipc socket PATH instead")->type_name("PATH");
    app.footer(kExitStatus);
    if (const int status = ParseArguments(app, argc, argv); status >= 0)
        return status;
    if (port >= 0 && !ipc.empty()) {
        std::fprintf(stderr, "mdvr-busd: --port or --ipc, not both\n");
        return 2;
    }

    std::string endpoint, error;
    if (port >= 0)
        endpoint = "tcp://127.0.0.1:" + (port ? std::to_string(port) : std::string("*"));
    else if (!ipc.empty())
        endpoint = "ipc://" + ipc;
    else if ((endpoint = ToolkitHost::BusEndpoint("127.0.0.1", 0, error)).empty()) {
        // With MDVR_BUS set, only its value can be wrong: an input error.
        std::fprintf(stderr, "mdvr-busd: %s\n", error.c_str());
        return std::getenv(ToolkitHost::kBusEnvironment) ? 2 : 1;
    }
    if (endpoint.compare(0, 16, "tcp://127.0.0.1:") != 0 && endpoint.compare(0, 6, "ipc://") != 0) {
        std::fprintf(stderr, "mdvr-busd: %s is neither ipc nor TCP on 127.0.0.1\n", endpoint.c_str());
        return 2;
    }

    umask(077); // the socket file is its user's alone, wherever it is
    const bool local = endpoint.compare(0, 6, "ipc://") == 0;
    const std::string path = local ? endpoint.substr(6) : std::string();
    if (local && !ClaimSocketPath(path, error)) {
        std::fprintf(stderr, "mdvr-busd: %s\n", error.c_str());
        return 1;
    }

    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    zmq::context_t* context = new zmq::context_t(1);
    int status = 0;
    unsigned long long socketFile = 0;
    try {
        busd::Watchdog watchdog(&BusWire::Now);
        busd::Router router(watchdog);
        Loop loop(*context, router, watchdog);
        const std::string bound = loop.Listen(endpoint);
        socketFile = local ? InodeOf(path) : 0;
        std::printf("mdvr-busd: listening on %s\n", bound.c_str());
        std::fflush(stdout);
        BUSD_LOG(4, "bus: listening on %s\n", bound.c_str());
        loop.Run();
        BUSD_LOG(4, "bus: stopped by a signal\n");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-busd: cannot listen on %s: %s\n", endpoint.c_str(), e.what());
        status = 1;
    }
    delete context; // sockets closed with linger 0: does not block
    if (socketFile != 0 && InodeOf(path) == socketFile)
        unlink(path.c_str());
    return status;
}
