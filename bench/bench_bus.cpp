// Load test of the development bus, all on ipc sockets in a directory of its
// own, with a daemon of its own:
//
//   round trip   a request and its response, timed one after another: through
//                mdvr-busd (host libtoolkit client on both ends), through a
//                raw ZeroMQ ROUTER proxy in the same shape (DEALER -> ROUTER
//                -> DEALER and back; like the daemon, a program of its own),
//                and directly between two DEALERs. The three take turns in
//                1000 rounds, so that a busy machine weighs on each alike;
//                p50 and p99 of all rounds.
//   throughput   one process sends N messages to another, through the bus,
//                then directly (DEALER to DEALER) with the same frames. The
//                receiver checks that nothing was lost, duplicated or
//                reordered; the figure is messages per second from the first
//                send to the last receipt.
//
//   bench_bus [--round-trips N] [--messages N] [--size BYTES]
//
// Round trips carry 64-byte bodies, the throughput run `--size` (256).
// Exit status 1 when a message was lost, duplicated or out of order.
#include "BusWire.h"
#include "ToolkitHost.h"

#include <zmq.hpp>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

const int kEvent = 0x200;
const int kProbe = 0x201;
const int kEcho = 0x202;
const size_t kEchoSize = 64;
const int kRounds = 1000;

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

long long NowNs()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string Body(unsigned long long seq, size_t size)
{
    std::string body(size, 'b');
    std::memcpy(&body[0], &seq, sizeof seq);
    return body;
}

// The frame of a bus message as the bus client builds it: header and body.
zmq::message_t Frame(int event, const std::string& body)
{
    const Common::SMessageHead head{0, 0, 0, static_cast<unsigned short>(event),
                                    static_cast<unsigned int>(body.size())};
    zmq::message_t frame(BusWire::kHeadSize + body.size());
    BusWire::WriteHead(frame.data(), head);
    std::memcpy(static_cast<char*>(frame.data()) + BusWire::kHeadSize, body.data(), body.size());
    return frame;
}

// Runs `child` in a process of its own; returns its pid.
pid_t Fork(const std::function<void()>& child)
{
    const pid_t pid = fork();
    if (pid == 0) {
        child();
        _exit(0);
    }
    return pid;
}

void Stop(pid_t pid)
{
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
}

// --- round trips -------------------------------------------------------------

// Answers every request of kEcho with its body, until SIGTERM.
struct BusEcho {
    Common::K7X_MSG_HANDLE bus;
    void OnRequest(const char* message, int length)
    {
        Common::SMessageHead head = BusWire::ReadHead(message);
        Common::K7X_MSGResponseMessage(bus, &head, message + BusWire::kHeadSize,
                                       static_cast<unsigned int>(length) - BusWire::kHeadSize);
    }
};

void EchoThroughBus(int ready)
{
    signal(SIGTERM, OnSignal);
    BusEcho echo{Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", 0)};
    if (echo.bus == nullptr)
        _exit(2);
    Common::K7X_MSGEventRegister(echo.bus, kEcho, Common::K7X_Bind(&echo, &BusEcho::OnRequest));
    Common::K7X_MSGSendMessage(echo.bus, 0, kProbe, 0, "", 0, 0); // after the subscription: it has arrived
    (void)!write(ready, "r", 1);
    while (!g_stop)
        Common::K7X_MSGWaitForEvent(echo.bus, 1000);
    Common::K7X_MSGDestroyMessageClient(echo.bus);
}

struct BusRequester {
    Common::K7X_MSG_HANDLE bus = nullptr;
    bool answered = false;
    void OnResponse(const char*, int) { answered = true; }
    void Open()
    {
        bus = Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", 0);
        if (bus == nullptr)
            std::exit(2);
        Common::K7X_MSGEventRegister(bus, kEcho | BusWire::kResponseBit, Common::K7X_Bind(this, &BusRequester::OnResponse));
    }
    void RoundTrip(const std::string& body)
    {
        answered = false;
        Common::K7X_MSGSendMessage(bus, 0, kEcho, 0, body.data(), static_cast<int>(body.size()), 0);
        while (!answered)
            if (Common::K7X_MSGWaitForEvent(bus, 1000) <= 0)
                std::exit(2);
    }
};

// A raw ROUTER that passes every message from one of its two peers to the other.
void Proxy(const std::string& endpoint, int ready)
{
    zmq::context_t context(1);
    zmq::socket_t router(context, zmq::socket_type::router);
    router.bind(endpoint);
    (void)!write(ready, "r", 1);
    std::string peers[2];
    for (;;) {
        zmq::message_t from, frame;
        if (!router.recv(from) || !router.recv(frame))
            return;
        const std::string sender = from.to_string();
        if (peers[0].empty() || peers[0] == sender)
            peers[0] = sender;
        else if (peers[1].empty())
            peers[1] = sender;
        if (frame.size() < BusWire::kHeadSize)
            continue; // a greeting
        const std::string& to = peers[0] == sender ? peers[1] : peers[0];
        router.send(zmq::buffer(to), zmq::send_flags::sndmore);
        router.send(frame, zmq::send_flags::none);
    }
}

// A DEALER that sends every message back, connected or bound.
void EchoDirectly(const std::string& endpoint, bool bind, int ready)
{
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::dealer);
    if (bind) {
        socket.bind(endpoint);
    } else {
        socket.connect(endpoint);
        socket.send(zmq::str_buffer("hi"));
    }
    (void)!write(ready, "r", 1);
    for (zmq::message_t frame; socket.recv(frame);)
        socket.send(frame, zmq::send_flags::none);
}

struct Samples {
    std::vector<double> us;
    double Percentile(double p)
    {
        std::sort(us.begin(), us.end());
        return us.empty() ? 0 : us[std::min(us.size() - 1, static_cast<size_t>(p * us.size()))];
    }
};

template <class Trip> void Time(Samples& samples, int count, Trip trip)
{
    for (int i = 0; i < count; ++i) {
        const long long start = NowNs();
        trip();
        samples.us.push_back((NowNs() - start) / 1e3);
    }
}

// --- throughput ----------------------------------------------------------------

struct Tally {
    unsigned long long received = 0, lost = 0, duplicated = 0, reordered = 0;
    long long lastNs = 0;
};

// Checks sequence numbers (the body's first 8 bytes) as they arrive.
struct Checker {
    explicit Checker(unsigned long long total) : seen(total, false) {}
    void Take(const char* body, size_t size)
    {
        unsigned long long seq = ~0ULL;
        if (size >= sizeof seq)
            std::memcpy(&seq, body, sizeof seq);
        if (seq >= seen.size()) {
            ++tally.lost; // not one of ours: counted as a fault
            return;
        }
        if (seen[seq])
            ++tally.duplicated;
        else if (seq != next)
            ++tally.reordered;
        seen[seq] = true;
        next = seq + 1;
        ++tally.received;
        tally.lastNs = NowNs();
    }
    bool Done() const { return tally.received == seen.size(); }
    std::vector<bool> seen;
    unsigned long long next = 0;
    Tally tally;
};

struct BusReceiver {
    Checker checker;
    bool probed = false;
    void OnMessage(const char* message, int length)
    {
        checker.Take(message + BusWire::kHeadSize, static_cast<size_t>(length) - BusWire::kHeadSize);
    }
    void OnProbe(const char*, int) { probed = true; }
};

void ReceiveThroughBus(unsigned long long total, int ready, int report)
{
    BusReceiver r{Checker(total)};
    Common::K7X_MSG_HANDLE bus = Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", 0);
    if (bus == nullptr)
        _exit(2);
    Common::K7X_MSGEventRegister(bus, kEvent, Common::K7X_Bind(&r, &BusReceiver::OnMessage));
    Common::K7X_MSGEventRegister(bus, kProbe, Common::K7X_Bind(&r, &BusReceiver::OnProbe));
    // Our own probe coming back means the daemon has our subscriptions.
    while (!r.probed) {
        Common::K7X_MSGSendMessage(bus, 0, kProbe, 0, "", 0, 0);
        Common::K7X_MSGWaitForEvent(bus, 100);
    }
    (void)!write(ready, "r", 1);
    long long idleSince = NowNs();
    while (!r.checker.Done() && NowNs() - idleSince < 5000000000LL) {
        if (Common::K7X_MSGWaitForEvent(bus, 100) > 0)
            idleSince = NowNs();
    }
    r.checker.tally.lost += total - r.checker.tally.received;
    (void)!write(report, &r.checker.tally, sizeof r.checker.tally);
    Common::K7X_MSGDestroyMessageClient(bus);
}

long long SendThroughBus(unsigned long long total, size_t size, unsigned long long* failed)
{
    Common::K7X_MSG_HANDLE bus = Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", 0);
    if (bus == nullptr)
        return -1;
    const long long start = NowNs();
    for (unsigned long long seq = 0; seq < total; ++seq) {
        const std::string body = Body(seq, size);
        if (Common::K7X_MSGSendMessage(bus, 0, kEvent, 0, body.data(), static_cast<int>(size), 0) != 0)
            ++*failed;
    }
    Common::K7X_MSGDestroyMessageClient(bus);
    return start;
}

void ReceiveDirectly(unsigned long long total, const std::string& endpoint, int ready, int report)
{
    Checker checker(total);
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::dealer);
    socket.set(zmq::sockopt::linger, 0);
    socket.bind(endpoint);
    (void)!write(ready, "r", 1);
    socket.set(zmq::sockopt::rcvtimeo, 5000);
    while (!checker.Done()) {
        zmq::message_t frame;
        if (!socket.recv(frame) || frame.size() < BusWire::kHeadSize)
            break;
        checker.Take(static_cast<const char*>(frame.data()) + BusWire::kHeadSize, frame.size() - BusWire::kHeadSize);
    }
    checker.tally.lost += total - checker.tally.received;
    (void)!write(report, &checker.tally, sizeof checker.tally);
}

long long SendDirectly(unsigned long long total, size_t size, const std::string& endpoint)
{
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::dealer);
    socket.set(zmq::sockopt::immediate, 1);
    socket.connect(endpoint);
    const long long start = NowNs();
    for (unsigned long long seq = 0; seq < total; ++seq) {
        zmq::message_t frame = Frame(kEvent, Body(seq, size));
        socket.send(frame, zmq::send_flags::none);
    }
    socket.set(zmq::sockopt::linger, -1); // let the last messages go before the context ends
    socket.close();
    return start;
}

struct Result {
    Tally tally;
    double seconds = 0;
    unsigned long long failedSends = 0;
};

// Reads exactly one T from `fd`, or ends the run.
template <class T> T ReadFrom(int fd)
{
    T value;
    if (read(fd, &value, sizeof value) != sizeof value) {
        std::fprintf(stderr, "bench_bus: a process of the run failed\n");
        std::exit(2);
    }
    return value;
}

// The receiver and the sender each in a process of its own: this process
// never opens a ZeroMQ context, which a forked child could not use.
template <class Receive, class Send> Result Run(Receive receive, Send send)
{
    int ready[2], report[2], sent[2];
    if (pipe(ready) != 0 || pipe(report) != 0 || pipe(sent) != 0)
        std::exit(2);
    const pid_t receiver = Fork([&] { receive(ready[1], report[1]); });
    ReadFrom<char>(ready[0]);
    const pid_t sender = Fork([&] {
        unsigned long long failed = 0;
        const long long start = send(&failed);
        (void)!write(sent[1], &start, sizeof start);
        (void)!write(sent[1], &failed, sizeof failed);
    });
    Result result;
    const long long start = ReadFrom<long long>(sent[0]);
    result.failedSends = ReadFrom<unsigned long long>(sent[0]);
    result.tally = ReadFrom<Tally>(report[0]);
    waitpid(receiver, nullptr, 0);
    waitpid(sender, nullptr, 0);
    result.seconds = (result.tally.lastNs - start) / 1e9;
    for (int fd : {ready[0], ready[1], report[0], report[1], sent[0], sent[1]})
        close(fd);
    return result;
}

void Print(const char* name, unsigned long long total, const Result& r)
{
    std::printf("  %-36s %.0f messages/s  (%llu received, %llu lost, %llu duplicated, %llu out of order, "
                "%llu sends failed; %.2f s)\n",
                name, total / r.seconds, r.tally.received, r.tally.lost, r.tally.duplicated, r.tally.reordered,
                r.failedSends, r.seconds);
}

bool Clean(const Result& r)
{
    return r.tally.lost == 0 && r.tally.duplicated == 0 && r.tally.reordered == 0 && r.failedSends == 0;
}

// Starts a child that writes one byte to `ready` when it serves; waits for it.
pid_t Serve(const std::function<void(int ready)>& serve)
{
    int ready[2];
    if (pipe(ready) != 0)
        std::exit(2);
    const pid_t pid = Fork([&] { serve(ready[1]); });
    char byte;
    if (read(ready[0], &byte, 1) != 1) {
        std::fprintf(stderr, "bench_bus: a server did not start\n");
        std::exit(2);
    }
    close(ready[0]);
    close(ready[1]);
    return pid;
}

// Starts the daemon on `endpoint` and points MDVR_BUS at it.
pid_t StartDaemon(const std::string& path)
{
    return Serve([&](int ready) {
        int out[2];
        if (pipe(out) != 0)
            _exit(2);
        const pid_t daemon = fork();
        if (daemon == 0) {
            dup2(out[1], 1);
            execl(MDVR_BUSD_PATH, "mdvr-busd", "--ipc", path.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        char c;
        while (read(out[0], &c, 1) == 1 && c != '\n') {
        }
        (void)!write(ready, "r", 1);
        signal(SIGTERM, OnSignal);
        while (!g_stop)
            pause();
        Stop(daemon);
    });
}

} // namespace

int main(int argc, char** argv)
{
    // The proxy is this program run again: a process of its own, like the daemon.
    if (argc == 4 && std::strcmp(argv[1], "--serve-proxy") == 0) {
        Proxy(argv[2], std::atoi(argv[3]));
        return 0;
    }
    unsigned long long total = 1000000;
    int trips = 20000;
    size_t size = 256;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--messages") == 0)
            total = std::strtoull(argv[i + 1], nullptr, 10);
        else if (std::strcmp(argv[i], "--round-trips") == 0)
            trips = std::atoi(argv[i + 1]);
        else if (std::strcmp(argv[i], "--size") == 0)
            size = std::strtoul(argv[i + 1], nullptr, 10);
    }
    if (total == 0 || trips < kRounds || size < 8 || size > BusWire::kBodyMax) {
        std::fprintf(stderr, "usage: bench_bus [--round-trips N (>= %d)] [--messages N] [--size BYTES (8..%u)]\n",
                     kRounds, BusWire::kBodyMax);
        return 2;
    }
    char dirTemplate[] = "/tmp/bench_bus.XXXXXX";
    const std::string dir = mkdtemp(dirTemplate);
    setenv(ToolkitHost::kBusEnvironment, ("ipc://" + dir + "/bus").c_str(), 1);
    const pid_t daemon = StartDaemon(dir + "/bus");

    // Round trips, the three paths in turn.
    const pid_t busEcho = Serve([](int ready) { EchoThroughBus(ready); });
    const std::string proxyEndpoint = "ipc://" + dir + "/proxy", directEndpoint = "ipc://" + dir + "/direct";
    const pid_t proxy = Serve([&](int ready) {
        execl("/proc/self/exe", "bench_bus", "--serve-proxy", proxyEndpoint.c_str(), std::to_string(ready).c_str(),
              static_cast<char*>(nullptr));
    });
    const pid_t proxyEcho = Serve([&](int ready) { EchoDirectly(proxyEndpoint, false, ready); });
    const pid_t directEcho = Serve([&](int ready) { EchoDirectly(directEndpoint, true, ready); });

    // The requester too runs in a process of its own; it sends back p50 and
    // p99 of each path.
    int report[2];
    if (pipe(report) != 0)
        return 2;
    const pid_t requester = Fork([&] {
        BusRequester bus;
        bus.Open();
        zmq::context_t context(1);
        zmq::socket_t viaProxy(context, zmq::socket_type::dealer), direct(context, zmq::socket_type::dealer);
        viaProxy.connect(proxyEndpoint);
        viaProxy.send(zmq::str_buffer("hi"));
        direct.connect(directEndpoint);
        const std::string echoBody(kEchoSize, 'e');
        auto raw = [&](zmq::socket_t& socket) {
            return [&] {
                zmq::message_t frame = Frame(kEcho, echoBody), answer;
                socket.send(frame, zmq::send_flags::none);
                if (!socket.recv(answer))
                    std::exit(2);
            };
        };
        auto viaBus = [&] { bus.RoundTrip(echoBody); };
        Samples paths[3], warm;
        Time(warm, 1000, viaBus), Time(warm, 1000, raw(viaProxy)), Time(warm, 1000, raw(direct));
        for (int round = 0; round < kRounds; ++round) {
            Time(paths[0], trips / kRounds, viaBus);
            Time(paths[1], trips / kRounds, raw(viaProxy));
            Time(paths[2], trips / kRounds, raw(direct));
        }
        Common::K7X_MSGDestroyMessageClient(bus.bus);
        double figures[6];
        for (int i = 0; i < 3; ++i)
            figures[2 * i] = paths[i].Percentile(0.5), figures[2 * i + 1] = paths[i].Percentile(0.99);
        (void)!write(report[1], figures, sizeof figures);
        _exit(0); // the sockets are not closed: the servers are stopped next
    });
    const std::array<double, 6> figures = ReadFrom<std::array<double, 6>>(report[0]);
    waitpid(requester, nullptr, 0);
    for (pid_t pid : {busEcho, proxyEcho, directEcho, proxy})
        Stop(pid);
    std::printf("round trip, %d of %zu-byte bodies each, in %d rounds, ipc:\n", trips, kEchoSize, kRounds);
    std::printf("  %-44s %8s %8s\n", "", "p50 us", "p99 us");
    const char* const names[3] = {"bus (DEALER -> mdvr-busd -> DEALER)",
                                  "raw ZeroMQ proxy (DEALER -> ROUTER -> DEALER)", "direct (DEALER <-> DEALER)"};
    for (int i = 0; i < 3; ++i)
        std::printf("  %-44s %8.1f %8.1f\n", names[i], figures[2 * i], figures[2 * i + 1]);
    std::printf("  bus p50 / proxy p50: %.2f\n", figures[0] / figures[2]);
    std::fflush(stdout);

    // Throughput.
    std::printf("throughput, %llu messages of %zu bytes, one process to another, ipc:\n", total, size);
    const Result through = Run([&](int ready, int report) { ReceiveThroughBus(total, ready, report); },
                               [&](unsigned long long* failed) { return SendThroughBus(total, size, failed); });
    Print("bus (DEALER -> mdvr-busd -> DEALER)", total, through);
    Stop(daemon);
    const std::string oneWay = "ipc://" + dir + "/one-way";
    const Result directly = Run([&](int ready, int report) { ReceiveDirectly(total, oneWay, ready, report); },
                                [&](unsigned long long*) { return SendDirectly(total, size, oneWay); });
    Print("direct (DEALER -> DEALER)", total, directly);
    std::printf("  bus / direct: %.2f\n", directly.seconds / through.seconds);
    for (const char* name : {"/bus", "/proxy", "/direct", "/one-way"})
        unlink((dir + name).c_str());
    rmdir(dir.c_str());
    return Clean(through) && Clean(directly) ? 0 : 1;
}
