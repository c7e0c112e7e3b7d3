// Load test of the development bus: one process sends N messages with
// 256-byte bodies to another, first through mdvr-busd (host libtoolkit client
// on both ends), then directly between the same two kinds of ZeroMQ sockets
// (DEALER to DEALER) with the same frames. The receiver checks that nothing
// was lost, duplicated or reordered; the figure is messages per second from
// the first send to the last receipt.
//
//   bench_bus [--messages N] [--size BYTES]
//
// Exit status 1 when a message was lost, duplicated or out of order.
#include "BusWire.h"
#include "ToolkitHost.h"

#include <zmq.hpp>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

const int kEvent = 0x200;
const int kProbe = 0x201;

long long NowNs()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

// What the receiver saw, sent back to the parent through a pipe.
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

std::string Body(unsigned long long seq, size_t size)
{
    std::string body(size, 'b');
    std::memcpy(&body[0], &seq, sizeof seq);
    return body;
}

// --- through the bus ---------------------------------------------------------

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
    Common::K7X_MSG_HANDLE bus = Common::K7X_MSGCreateMessageClient(30u, "127.0.0.1", 0);
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
        const unsigned long long before = r.checker.tally.received;
        Common::K7X_MSGWaitForEvent(bus, 100);
        if (r.checker.tally.received != before)
            idleSince = NowNs();
    }
    r.checker.tally.lost += total - r.checker.tally.received;
    (void)!write(report, &r.checker.tally, sizeof r.checker.tally);
    Common::K7X_MSGDestroyMessageClient(bus);
    _exit(0);
}

long long SendThroughBus(unsigned long long total, size_t size, unsigned long long* failed)
{
    Common::K7X_MSG_HANDLE bus = Common::K7X_MSGCreateMessageClient(30u, "127.0.0.1", 0);
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

// --- directly ----------------------------------------------------------------

void ReceiveDirectly(unsigned long long total, const std::string& endpoint, int ready, int report)
{
    Checker checker(total);
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::dealer);
    socket.set(zmq::sockopt::rcvhwm, 10000);
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
    _exit(0);
}

long long SendDirectly(unsigned long long total, size_t size, const std::string& endpoint)
{
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::dealer);
    socket.set(zmq::sockopt::immediate, 1);
    socket.set(zmq::sockopt::sndhwm, 10000);
    socket.connect(endpoint);
    const long long start = NowNs();
    for (unsigned long long seq = 0; seq < total; ++seq) {
        // The same frame as the bus client's: header and body.
        const std::string body = Body(seq, size);
        const Common::SMessageHead head{0, 0, 0, kEvent, static_cast<unsigned int>(size)};
        zmq::message_t frame(BusWire::kHeadSize + size);
        BusWire::WriteHead(frame.data(), head);
        std::memcpy(static_cast<char*>(frame.data()) + BusWire::kHeadSize, body.data(), size);
        socket.send(frame, zmq::send_flags::none);
    }
    socket.set(zmq::sockopt::linger, -1); // let the last messages go before the context ends
    socket.close();
    return start;
}

// --- the runs ----------------------------------------------------------------

struct Result {
    Tally tally;
    double seconds = 0;
    unsigned long long failedSends = 0;
};

template <class Receive, class Send> Result Run(Receive receive, Send send)
{
    int ready[2], report[2];
    if (pipe(ready) != 0 || pipe(report) != 0)
        std::exit(2);
    const pid_t child = fork();
    if (child == 0)
        receive(ready[1], report[1]);
    char byte;
    Result result;
    if (read(ready[0], &byte, 1) != 1)
        std::exit(2);
    const long long start = send(&result.failedSends);
    if (read(report[0], &result.tally, sizeof result.tally) != sizeof result.tally)
        std::exit(2);
    waitpid(child, nullptr, 0);
    result.seconds = (result.tally.lastNs - start) / 1e9;
    for (int fd : {ready[0], ready[1], report[0], report[1]})
        close(fd);
    return result;
}

void Print(const char* name, unsigned long long total, const Result& r)
{
    std::printf("%-38s %llu received, %llu lost, %llu duplicated, %llu out of order, %llu sends failed; "
                "%.2f s, %.0f messages/s\n",
                name, r.tally.received, r.tally.lost, r.tally.duplicated, r.tally.reordered, r.failedSends, r.seconds,
                total / r.seconds);
}

bool Clean(const Result& r)
{
    return r.tally.lost == 0 && r.tally.duplicated == 0 && r.tally.reordered == 0 && r.failedSends == 0;
}

// Starts the daemon on a free port; returns its pid and sets MDVR_BUS.
pid_t StartDaemon()
{
    int out[2];
    if (pipe(out) != 0)
        std::exit(2);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], 1);
        execl(MDVR_BUSD_PATH, "mdvr-busd", "--port", "0", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(out[1]);
    std::string line;
    char c;
    while (read(out[0], &c, 1) == 1 && c != '\n')
        line += c;
    const size_t at = line.find("tcp://");
    if (at == std::string::npos) {
        std::fprintf(stderr, "bench_bus: the daemon did not start\n");
        std::exit(2);
    }
    setenv(BusWire::kEnvironment, line.substr(at).c_str(), 1);
    return pid;
}

} // namespace

int main(int argc, char** argv)
{
    unsigned long long total = 1000000;
    size_t size = 256;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--messages") == 0)
            total = std::strtoull(argv[i + 1], nullptr, 10);
        else if (std::strcmp(argv[i], "--size") == 0)
            size = std::strtoul(argv[i + 1], nullptr, 10);
    }
    if (total == 0 || size < 8 || size > BusWire::kBodyMax) {
        std::fprintf(stderr, "usage: bench_bus [--messages N] [--size BYTES (8..%u)]\n", BusWire::kBodyMax);
        return 2;
    }
    std::printf("%llu messages of %zu bytes, one process to another\n", total, size);

    const pid_t daemon = StartDaemon();
    const Result bus = Run([&](int ready, int report) { ReceiveThroughBus(total, ready, report); },
                           [&](unsigned long long* failed) { return SendThroughBus(total, size, failed); });
    kill(daemon, SIGTERM);
    waitpid(daemon, nullptr, 0);
    Print("bus (DEALER -> mdvr-busd -> DEALER):", total, bus);

    const std::string endpoint = std::getenv(BusWire::kEnvironment); // the daemon's port, free again
    const Result direct = Run([&](int ready, int report) { ReceiveDirectly(total, endpoint, ready, report); },
                              [&](unsigned long long*) { return SendDirectly(total, size, endpoint); });
    Print("direct (DEALER -> DEALER):", total, direct);
    std::printf("bus / direct: %.2f\n", direct.seconds / bus.seconds);
    return Clean(bus) && Clean(direct) ? 0 : 1;
}
