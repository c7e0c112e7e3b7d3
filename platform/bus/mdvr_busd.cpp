// mdvr-busd: the message bus of the development machine (docs/bus.md).
//
// One ZeroMQ ROUTER socket: by default an ipc socket in a directory only its
// user may enter, or TCP on 127.0.0.1 with --port. This file is the socket
// loop: it receives frames, hands them to the router (Router.h), and is the
// outlet through which the router's flow control sends. It waits in one
// blocking receive until the next message or the next look at the clock,
// when it reads the socket's connection events, checks the watchdogs
// (Watchdog.h) and lets the flow control find congested clients.
#include "BusProtocol.h"
#include "Router.h"
#include "ToolArguments.h"
#include "ToolkitHost.h"
#include "Watchdog.h"

#include <zmq.hpp>

#include <malloc.h>
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

namespace {

using BusProtocol::Now;

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

unsigned long long Inode(int fd)
{
    struct stat st;
    return fd >= 0 && fstat(fd, &st) == 0 ? static_cast<unsigned long long>(st.st_ino) : 0;
}

class Loop : public busd::Outlet {
public:
    Loop(zmq::context_t& context, busd::Watchdog& watchdog)
        : socket_(context, zmq::socket_type::router), monitor_(context, zmq::socket_type::pair), watchdog_(watchdog),
          router_(watchdog, *this, &Now)
    {
    }

    // Binds the endpoint; returns it as bound (the port chosen for port 0 included).
    std::string Listen(const std::string& endpoint)
    {
        socket_.set(zmq::sockopt::router_mandatory, 1);
        // What goes to a client is bounded by its credit, not by ZeroMQ; what
        // comes from one, by its window (more breaks the protocol).
        socket_.set(zmq::sockopt::sndhwm, 0);
        socket_.set(zmq::sockopt::rcvhwm, static_cast<int>(BusProtocol::kWindowMessages) + 64);
        socket_.set(zmq::sockopt::linger, 0);
        socket_.set(zmq::sockopt::handshake_ivl, BusProtocol::kHandshakeMs);
        socket_.set(zmq::sockopt::maxmsgsize, static_cast<int64_t>(BusProtocol::kFrameMax));
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
        long long due = 0; // of the next look at the clock
        while (!g_stop) {
            long long now = Now();
            if (now >= due) {
                ReadMonitor();
                const long long dog = watchdog_.Check();
                const long long stalled = router_.Tick();
                now = Now();
                due = now + BusProtocol::kMonitorMs;
                for (long long next : {dog, stalled})
                    if (next >= 0)
                        due = std::min(due, next);
            }
            try {
                if (Receive(static_cast<int>(std::max(0LL, due - now)))) {
                    Handle();
                    const long long stalled = router_.Tick(); // a receiver may hold a sender up now
                    if (stalled >= 0)
                        due = std::min(due, stalled);
                }
            } catch (const zmq::error_t& e) {
                if (e.num() != EINTR)
                    BUS_LOG(0, "bus: %s\n", e.what());
            }
        }
    }

    bool Put(const std::string& routing, zmq::message_t* frames, size_t count) override
    {
        try {
            zmq::message_t to(routing.data(), routing.size());
            if (!socket_.send(to, zmq::send_flags::sndmore | zmq::send_flags::dontwait))
                return false; // no limit is set: cannot happen
            for (size_t i = 0; i < count; ++i)
                socket_.send(frames[i], i + 1 < count ? zmq::send_flags::sndmore : zmq::send_flags::none);
            return true;
        } catch (const zmq::error_t&) {
            return false; // EHOSTUNREACH: its connection is gone
        }
    }

private:
    // One message: its routing id, then its frames. False when none came
    // within `timeout` ms.
    bool Receive(int timeout)
    {
        if (timeout != timeout_) {
            socket_.set(zmq::sockopt::rcvtimeo, timeout);
            timeout_ = timeout;
        }
        const size_t count = BusProtocol::ReceiveFrames(socket_, frames_);
        count_ = count > 0 ? count - 1 : 0;
        return count > 0;
    }

    void Handle()
    {
        busd::Clients& clients = router_.clients();
        zmq::message_t& from = frames_[0];
        const std::string routing = from.to_string();
        busd::ClientId id = clients.Known(routing);
        if (id == 0) {
            bool stale = false;
            busd::ClientId replaced = 0;
            const int fd = zmq_msg_get(from.handle(), ZMQ_SRCFD);
            const unsigned long long inode = Inode(fd);
            id = clients.Admit(routing, fd, inode, stale, replaced);
            if (replaced)
                router_.Forget(replaced);
            if (id == 0) {
                if (stale) {
                    BUS_LOG(4, "bus: a message of a closed connection; dropped\n");
                } else {
                    BUS_LOG(0, "bus: %zu clients, no id free for another; connection closed\n", clients.size());
                    Shut(fd, inode);
                }
                return;
            }
        }
        if (count_ == 0 || count_ > busd::Router::kMostFrames) {
            BUS_LOG(0, "bus: bad message from client %u: %zu frames; connection closed\n", id, count_);
            Close(id);
        } else if (!router_.Handle(id, frames_ + 1, count_)) {
            Close(id);
        }
        router_.ForgetGone();
    }

    // Ends a client that broke the protocol: forgotten, and its connection closed.
    void Close(busd::ClientId id)
    {
        const busd::Client* client = router_.clients().Find(id);
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
        BusProtocol::SocketEvent event;
        while (BusProtocol::ReadSocketEvent(monitor_, 0, event)) {
            const int fd = static_cast<int>(event.value);
            if (event.id == ZMQ_EVENT_DISCONNECTED) {
                if (const busd::ClientId id = router_.clients().Ended(fd, Inode(fd)))
                    router_.Forget(id);
            } else {
                BUS_LOG(0, "bus: rejected a connection at %s: handshake failed (event 0x%x, %s)\n",
                        event.address.c_str(), event.id, zmq_strerror(static_cast<int>(event.value)));
            }
        }
    }

    zmq::socket_t socket_;
    zmq::socket_t monitor_;
    busd::Watchdog& watchdog_;
    busd::Router router_;
    zmq::message_t frames_[1 + busd::Router::kMostFrames + 1]; // the routing id, the frames, what is too many
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
    BUS_LOG(4, "bus: removed the stale socket %s\n", path.c_str());
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
    app.add_option("--ipc", ipc, "listen on the ipc socket PATH instead")
        ->type_name("PATH")
        ->check([](const std::string& path) { return path.empty() ? std::string("an empty path") : std::string(); });
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
    // Messages of up to 8 MiB come and go: their memory goes back to the
    // system when they have gone, so that what the daemon holds is what it uses.
    mallopt(M_MMAP_THRESHOLD, 256 << 10);

    zmq::context_t* context = new zmq::context_t(1);
    int status = 0;
    unsigned long long socketFile = 0;
    try {
        busd::Watchdog watchdog(&Now);
        Loop loop(*context, watchdog);
        const std::string bound = loop.Listen(endpoint);
        socketFile = local ? InodeOf(path) : 0;
        std::printf("mdvr-busd: listening on %s\n", bound.c_str());
        std::fflush(stdout);
        BUS_LOG(4, "bus: listening on %s\n", bound.c_str());
        loop.Run();
        BUS_LOG(4, "bus: stopped by a signal\n");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-busd: cannot listen on %s: %s\n", endpoint.c_str(), e.what());
        status = 1;
    }
    delete context; // sockets closed with linger 0: does not block
    if (socketFile != 0 && InodeOf(path) == socketFile)
        unlink(path.c_str());
    return status;
}
