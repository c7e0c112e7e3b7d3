// The development bus end to end: a real mdvr-busd on a free loopback port,
// clients built on CMsgClientManage and the host libtoolkit, and mdvr-bus.
#include "BusWire.h"
#include "MsgClientManage.h"
#include "ParaTestSupport.h"
#include "ToolkitHost.h"

#include <zmq.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

#ifdef MDVR_EMULATED
const int kSlow = 4; // the daemon and the clients run under qemu
#else
const int kSlow = 1;
#endif

long long Now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

pid_t Spawn(const std::string& command)
{
    const pid_t pid = fork();
    if (pid == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    return pid;
}

// Waits up to `ms` for the process to end, calling `poll` meanwhile, then
// kills it. Its exit status, or -1 when it had to be killed.
template <class Poll> int Reap(pid_t pid, int ms, Poll poll)
{
    int status = 0;
    for (long long deadline = Now() + ms; Now() < deadline; poll())
        if (waitpid(pid, &status, WNOHANG) == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
}
int Reap(pid_t pid, int ms)
{
    return Reap(pid, ms, [] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); });
}

// One mdvr-busd with its standard output and error in files.
class Daemon {
public:
    Daemon() : base_("/tmp/test_bus." + std::to_string(getpid()) + "." + std::to_string(++count_)) {}
    ~Daemon()
    {
        Stop(SIGTERM);
        std::remove((base_ + ".out").c_str());
        std::remove((base_ + ".err").c_str());
    }

    // Starts on `port` (0: a free one) and waits until it listens.
    void Start(int port = 0)
    {
        const std::string out = base_ + ".out";
        std::remove(out.c_str());
        pid_ = Spawn("TOOLKIT_LOG_LEVEL=4 exec " MDVR_BUSD_COMMAND " --port " + std::to_string(port) + " >" + out +
                     " 2>>" + base_ + ".err");
        const std::string marker = "listening on tcp://127.0.0.1:";
        for (long long deadline = Now() + 5000 * kSlow; Now() < deadline;) {
            const std::string text = paratest::Slurp(out);
            const size_t at = text.find(marker);
            if (at != std::string::npos && text.find('\n', at) != std::string::npos) {
                port_ = std::atoi(text.c_str() + at + marker.size());
                setenv(BusWire::kEnvironment, ("tcp://127.0.0.1:" + std::to_string(port_)).c_str(), 1);
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        FAIL() << "mdvr-busd did not start: " << Log();
    }
    // Ends the daemon with `signal`; its exit status (-1: killed).
    int Stop(int signal)
    {
        if (pid_ <= 0)
            return -1;
        kill(pid_, signal);
        const int status = Reap(pid_, 3000 * kSlow);
        pid_ = 0;
        return status;
    }
    std::string Log() const { return paratest::Slurp(base_ + ".err"); }
    size_t Count(const std::string& text) const
    {
        const std::string log = Log();
        size_t n = 0;
        for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++n;
        return n;
    }
    int port() const { return port_; }

private:
    static int count_;
    std::string base_;
    pid_t pid_ = 0;
    int port_ = 0;
};
int Daemon::count_ = 0;

// A module's handler: keeps every message it gets.
struct Module {
    std::vector<std::string> got;
    void On(const char* message, int length) { got.emplace_back(message, length); }
    Common::SMessageHead Head(size_t i) const { return BusWire::ReadHead(got.at(i).data()); }
    std::string Body(size_t i) const { return got.at(i).substr(BusWire::kHeadSize); }
    // Message i's header fields but the client id, and its body.
    std::string Seen(size_t i) const
    {
        const Common::SMessageHead h = Head(i);
        return "source " + std::to_string(h.sourceId) + " session " + std::to_string(h.session) + " event " +
               std::to_string(h.messageId) + " length " + std::to_string(h.length) + " " + Body(i);
    }
};

// Lets every client take its messages until `done` or `ms` have passed.
template <class Done> bool Pump(const std::vector<CMsgClientManage*>& clients, int ms, Done done)
{
    for (long long deadline = Now() + ms * kSlow; !done();) {
        if (Now() > deadline)
            return false;
        for (CMsgClientManage* c : clients)
            c->MSGWaitForEvent(2);
    }
    return true;
}
void PumpFor(const std::vector<CMsgClientManage*>& clients, int ms)
{
    Pump(clients, ms, [] { return false; });
}

int Send(CMsgClientManage& c, int event, const std::string& body, int destination = 0, int session = 0,
         int module = 0)
{
    return c.MSGSendMessage(destination, event, session, body.data(), static_cast<int>(body.size()), module);
}

// The daemon's watchdog list, asked through a client of its own.
std::string Dogs()
{
    Common::K7X_MSG_HANDLE client = Common::K7X_MSGCreateMessageClient(30u, "127.0.0.1", 0);
    std::string text;
    EXPECT_TRUE(ToolkitHost::QueryDogs(client, 2000 * kSlow, text));
    Common::K7X_MSGDestroyMessageClient(client);
    return text;
}

class Bus : public ::testing::Test {
protected:
    void SetUp() override
    {
        ToolkitHost::UseRecordingBus(false);
        daemon.Start();
    }
    Daemon daemon;
};

TEST_F(Bus, RequestReachesEverySubscriberAndTheResponseOnlyTheRequestingModule)
{
    CMsgClientManage requester(nullptr, 0), worker(nullptr, 0), other(nullptr, 0);
    Module ask5, ask6, work1, work2, otherWork, otherAnswer;
    requester.MSGEventRegister(5, 0x8042, &ask5, &Module::On);
    requester.MSGEventRegister(6, 0x8042, &ask6, &Module::On);
    worker.MSGEventRegister(1, 0x42, &work1, &Module::On);
    worker.MSGEventRegister(2, 0x42, &work2, &Module::On);
    other.MSGEventRegister(3, 0x42, &otherWork, &Module::On);
    other.MSGEventRegister(5, 0x8042, &otherAnswer, &Module::On); // the same module id elsewhere
    const std::vector<CMsgClientManage*> all{&requester, &worker, &other};
    PumpFor(all, 50);

    ASSERT_EQ(Send(requester, 0x42, "{\"Q\":1}", 0, 77, 5), 0);
    ASSERT_TRUE(Pump(all, 2000, [&] { return work1.got.size() + work2.got.size() + otherWork.got.size() == 3; }));
    for (const Module* m : {&work1, &work2, &otherWork})
        EXPECT_EQ(m->Seen(0), "source 5 session 77 event 66 length 7 {\"Q\":1}");
    const unsigned short requesterId = work1.Head(0).flags;
    EXPECT_NE(requesterId, 0);

    Common::SMessageHead head = work1.Head(0);
    ASSERT_EQ(worker.MSGResponseMessage(&head, "done", 4), 0);
    ASSERT_TRUE(Pump(all, 2000, [&] { return !ask5.got.empty(); }));
    PumpFor(all, 100);
    ASSERT_EQ(ask5.got.size(), 1u);
    EXPECT_EQ(ask5.Seen(0).substr(ask5.Seen(0).find(" session")), " session 77 event 32834 length 4 done");
    EXPECT_NE(ask5.Head(0).flags, requesterId); // the responder's client id
    EXPECT_TRUE(ask6.got.empty());
    EXPECT_TRUE(otherAnswer.got.empty());
}

TEST_F(Bus, DeliversOnlyWhileSubscribedAndToTheDestinationClient)
{
    CMsgClientManage a(nullptr, 0), b(nullptr, 0), c(nullptr, 0);
    Module inA, inB, inC;
    a.MSGEventRegister(1, 0x60, &inA, &Module::On);
    b.MSGEventRegister(1, 0x60, &inB, &Module::On);
    c.MSGEventRegister(1, 0x60, &inC, &Module::On);
    const std::vector<CMsgClientManage*> all{&a, &b, &c};
    PumpFor(all, 50);

    ASSERT_EQ(Send(b, 0x60, "hello"), 0);
    ASSERT_TRUE(Pump(all, 2000, [&] { return inA.got.size() == 1 && inC.got.size() == 1 && inB.got.size() == 1; }));
    const unsigned short idOfB = inA.Head(0).flags;

    ASSERT_EQ(Send(a, 0x60, "just b", idOfB), 0);
    ASSERT_TRUE(Pump(all, 2000, [&] { return inB.got.size() == 2; }));
    EXPECT_EQ(inB.Body(1), "just b");

    c.MSGEventUnRegister(1, 0x60);
    b.MSGEventUnRegister(1, 0x60);
    PumpFor(all, 50);
    ASSERT_EQ(Send(a, 0x60, "after"), 0);
    ASSERT_EQ(Send(a, 0x61, "nobody"), 0);
    ASSERT_TRUE(Pump(all, 2000, [&] { return inA.got.size() == 2; }));
    ASSERT_TRUE(Pump(all, 2000, [&] { return daemon.Count("nobody subscribed event 0x61") == 1; }));
    PumpFor(all, 100);
    EXPECT_EQ(inA.Body(1), "after");
    EXPECT_EQ(inB.got.size(), 2u);
    EXPECT_EQ(inC.got.size(), 1u);
}

TEST_F(Bus, ReportsAWatchdogOnceWhenItLapsesAndAgainWhenItIsFed)
{
    char name[32] = "lapse-test";
    std::string dogs;
    {
        CMsgClientManage client(name, 300); // dogParam: the timeout in milliseconds
        dogs = Dogs();
        EXPECT_NE(dogs.find("{\"client\":"), std::string::npos) << dogs;
        EXPECT_NE(dogs.find("\"name\":\"lapse-test\",\"pid\":" + std::to_string(getpid()) + ",\"sinceFeedMs\":"),
                  std::string::npos) << dogs;
        EXPECT_NE(dogs.find("\"timeoutMs\":300"), std::string::npos) << dogs;

        const std::string lapse = "watchdog \"lapse-test\" of pid " + std::to_string(getpid()) + " not fed for";
        ASSERT_TRUE(Pump({&client}, 3000, [&] { return daemon.Count(lapse) > 0; })) << daemon.Log();
        PumpFor({&client}, 600); // two timeouts more: still one report
        EXPECT_EQ(daemon.Count(lapse), 1u);

        EXPECT_EQ(client.MSGFeedWatchDog(100000), 0);
        const std::string again = "watchdog \"lapse-test\" of pid " + std::to_string(getpid()) + " fed again after";
        ASSERT_TRUE(Pump({&client}, 2000, [&] { return daemon.Count(again) == 1; })) << daemon.Log();
        ASSERT_TRUE(Pump({&client}, 3000, [&] { return daemon.Count(lapse) == 2; })) << daemon.Log();
    }
    // Unregistered by the destructor: no more reports, and the list is empty.
    EXPECT_EQ(Dogs(), "[]");
}

// A watchdog message whose body is not exactly the watchdog record, shorter
// or longer, registers nothing.
TEST_F(Bus, IgnoresAWatchdogRecordOfAnotherLength)
{
    CMsgClientManage client(nullptr, 0);
    for (const std::string name : {"short-body", "long-body", "exact-body"}) { // 300 ms each
        const std::string record = name + std::string(32 - name.size(), '\0') + std::string("\x2c\x01\0\0x", 5);
        EXPECT_EQ(Send(client, BusWire::kDogRegister, record.substr(0, 35 + (name[0] != 's') + (name[0] == 'l'))), 0);
    }
    // One client's messages are handled in order: the last one is there when
    // the others have been handled.
    std::string dogs;
    ASSERT_TRUE(Pump({&client}, 2000, [&] { return (dogs = Dogs()).find("exact-body") != std::string::npos; }));
    EXPECT_EQ(dogs.find("short-body"), std::string::npos) << dogs;
    EXPECT_EQ(dogs.find("long-body"), std::string::npos) << dogs;
}

TEST_F(Bus, ClientsComeBackAfterADaemonRestartAndWhatWasSentMeanwhileIsLost)
{
    char name[32] = "restart-test";
    CMsgClientManage listener(name, 0), sender(nullptr, 0);
    Module got;
    listener.MSGEventRegister(1, 0x51, &got, &Module::On);
    const std::vector<CMsgClientManage*> both{&listener, &sender};
    PumpFor(both, 50);
    ASSERT_EQ(Send(sender, 0x51, "before"), 0);
    ASSERT_TRUE(Pump(both, 2000, [&] { return got.got.size() == 1; }));

    const int port = daemon.port();
    daemon.Stop(SIGKILL);
    // Sends fail once the clients have seen the daemon go.
    int failed = 0;
    ASSERT_TRUE(Pump(both, 3000, [&] { return Send(sender, 0x51, "while down") == -1 && ++failed == 3; }));

    daemon.Start(port);
    const long long restarted = Now();
    long long back = 0;
    ASSERT_TRUE(Pump(both, 3000, [&] {
        if (!got.got.empty() && got.Body(got.got.size() - 1) == "after") {
            back = Now();
            return true;
        }
        Send(sender, 0x51, "after");
        return false;
    }));
    EXPECT_LE(back - restarted, 1000 * kSlow);
    for (size_t i = 1; i < got.got.size(); ++i)
        EXPECT_EQ(got.Body(i), "after");

    // The watchdog registration came back with the client.
    const std::string dogs = Dogs();
    EXPECT_NE(dogs.find("\"restart-test\""), std::string::npos) << dogs;
    EXPECT_EQ(daemon.Stop(SIGTERM), 0);
}

TEST_F(Bus, RejectsBadInputAndKeepsServingTheOtherClients)
{
    CMsgClientManage a(nullptr, 0), b(nullptr, 0);
    Module got;
    a.MSGEventRegister(1, 0x70, &got, &Module::On);

    // Random bytes, and a greeting of the messaging library's protocol with a
    // security mechanism the bus does not speak.
    std::mt19937 random(15);
    std::string noise(4096, '\0');
    for (char& c : noise)
        c = static_cast<char>(random());
    std::string greeting("\xff\0\0\0\0\0\0\0\x01\x7f\x03\x00" "BOGUS", 17);
    greeting.resize(64, '\0');
    for (const std::string& bytes : {noise, greeting}) {
        const int fd = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<unsigned short>(daemon.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_GT(write(fd, bytes.data(), bytes.size()), 0);
        PumpFor({&a}, 100);
        close(fd);
    }
    ASSERT_TRUE(Pump({&a}, 2000, [&] { return daemon.Count("rejected a connection") >= 1; })) << daemon.Log();

    // Well-formed transport, bad messages: each dropped with a line.
    zmq::context_t context;
    zmq::socket_t raw(context, zmq::socket_type::dealer);
    raw.set(zmq::sockopt::linger, 0);
    raw.connect("tcp://127.0.0.1:" + std::to_string(daemon.port()));
    auto frame = [](const std::string& bytes) { return zmq::message_t(bytes.data(), bytes.size()); };
    const Common::SMessageHead longer{0, 0, 0, 0x70, 100}, notResponse{0, 0, 1, 0x70, 1};
    const std::string claimsMore = std::string(reinterpret_cast<const char*>(&longer), 16) + "12345";
    const std::string requestAsResponse = std::string(reinterpret_cast<const char*>(&notResponse), 16) + "x";
    const std::vector<std::vector<std::string>> bad = {
        {"short"}, {claimsMore}, {claimsMore, "x"}, {"RSP", requestAsResponse}, {"RSP", claimsMore}, {"SUB"},
        {"SUB", "12345"}, {"NOPE", "x"}, {"HELLO", "a", "b"}};
    const size_t before = daemon.Count("bus: bad message from client");
    for (const auto& message : bad)
        for (size_t i = 0; i < message.size(); ++i)
            raw.send(frame(message[i]), i + 1 < message.size() ? zmq::send_flags::sndmore : zmq::send_flags::none);
    ASSERT_TRUE(Pump({&a}, 3000, [&] { return daemon.Count("bus: bad message from client") == before + bad.size(); }))
        << daemon.Log();

    // Through the client interface: refused with a line, nothing sent.
    {
        ToolkitHost::LogCapture log;
        std::vector<char> huge(BusWire::kBodyMax + 1, 'x');
        EXPECT_EQ(b.MSGSendMessage(0, 0x70, 0, huge.data(), static_cast<int>(huge.size()), 0), -1);
        EXPECT_EQ(b.MSGSendMessage(0, 0x70, 0, nullptr, 3, 0), -1);
        EXPECT_EQ(b.MSGSendMessage(0, 0x70, 0, "x", -1, 0), -1);
        EXPECT_EQ(b.MSGSendMessage(0, 0x10000, 0, "x", 1, 0), -1);
        int notAClient = 0;
        EXPECT_EQ(Common::K7X_MSGSendMessage(&notAClient, 0, 0x70, 0, "x", 1, 0), -1);
        EXPECT_EQ(Common::K7X_MSGWaitForEvent(&notAClient, 0), -1);
        EXPECT_EQ(Common::K7X_MSGResponseMessage(&notAClient, nullptr, "x", 1), -1);
        const std::vector<std::string> expected = {
            "bus: body length 8388608 of event 0x70 outside 0..8388607, not sent\n",
            "bus: null body with length 3 for event 0x70, not sent\n",
            "bus: body length -1 of event 0x70 outside 0..8388607, not sent\n",
            "bus: destination 0 or event 0x10000 outside 16 bits, not sent\n",
        };
        std::vector<std::string> messages;
        for (const ToolkitHost::LogLine& line : log.lines())
            if (line.level == 0)
                messages.push_back(line.message);
        ASSERT_EQ(messages.size(), 7u);
        EXPECT_EQ(std::vector<std::string>(messages.begin(), messages.begin() + 4), expected);
        for (size_t i = 4; i < 7; ++i)
            EXPECT_EQ(messages[i].find("bus: unknown client handle"), 0u) << messages[i];
    }

    ASSERT_EQ(Send(b, 0x70, "still here"), 0);
    ASSERT_TRUE(Pump({&a, &b}, 2000, [&] { return got.got.size() == 1; }));
    EXPECT_EQ(got.Body(0), "still here");
}

TEST(BusEndpoint, PortArgumentThenEnvironmentThenDefault)
{
    const struct { short port; const char* environment; const char* endpoint; } cases[] = {
        {7000, "ipc:///tmp/elsewhere", "tcp://127.0.0.1:7000"}, // an explicit port wins
        {-1, nullptr, "tcp://127.0.0.1:65535"},                  // the short is a 16-bit port
        {0, nullptr, "tcp://127.0.0.1:7931"},
        {0, "", "tcp://127.0.0.1:7931"},
        {0, "7100", "tcp://127.0.0.1:7100"},
        {0, "ipc:///tmp/bus", "ipc:///tmp/bus"},
        {0, "tcp://127.0.0.1:7200", "tcp://127.0.0.1:7200"},
        {0, "70000", ""},
        {0, "71x", ""},
        {0, "0", ""},
    };
    const char* saved = std::getenv(BusWire::kEnvironment);
    const std::string keep = saved ? saved : "";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.environment ? c.environment : "(unset)");
        if (c.environment)
            setenv(BusWire::kEnvironment, c.environment, 1);
        else
            unsetenv(BusWire::kEnvironment);
        EXPECT_EQ(BusWire::ClientEndpoint("127.0.0.1", c.port), c.endpoint);
    }
    if (saved)
        setenv(BusWire::kEnvironment, keep.c_str(), 1);
    else
        unsetenv(BusWire::kEnvironment);
}

// mdvr-bus against the test's own clients.
TEST_F(Bus, ToolSendsCallsListensAndListsWatchdogs)
{
    char name[32] = "tool-test";
    CMsgClientManage service(name, 0);
    struct Answering : Module {
        CMsgClientManage* bus;
        void Answer(const char* message, int length)
        {
            On(message, length);
            Common::SMessageHead head = BusWire::ReadHead(message);
            bus->MSGResponseMessage(&head, "{\"OK\":[1,2]}", 12);
        }
    } answering;
    answering.bus = &service;
    service.MSGEventRegister(1, 0x90, &answering, &Answering::Answer);
    PumpFor({&service}, 50);

    const std::string base = "/tmp/test_bus_tool." + std::to_string(getpid());
    // Runs the tool while the service takes its messages (and `poke` runs).
    auto run = [&](const std::string& arguments, const std::string& input = "", std::function<void()> poke = [] {}) {
        std::ofstream(base + ".in") << input;
        const pid_t pid = Spawn(MDVR_BUS_COMMAND " " + arguments + " <" + base + ".in >" + base + ".out 2>" + base + ".err");
        return Reap(pid, 10000 * kSlow, [&] { service.MSGWaitForEvent(2), poke(); });
    };
    auto out = [&] { return paratest::Slurp(base + ".out"); };
    auto err = [&] { return paratest::Slurp(base + ".err"); };

    EXPECT_EQ(run("call 0x90 '{\"A\":1}' --session 9 --module 4"), 0) << err();
    const std::string response = out(), header = "event 0x8090 (response)  source 4  session 9  client ",
                      body = "  length 12\n{\n  \"OK\" : \n  [\n    1,\n    2\n  ]\n}\n";
    EXPECT_EQ(response.substr(0, header.size()), header) << response;
    EXPECT_GT(response.size(), header.size() + body.size());
    EXPECT_EQ(response.substr(response.size() - std::min(response.size(), body.size())), body) << response;
    ASSERT_EQ(answering.got.size(), 1u);
    EXPECT_EQ(answering.Seen(0), "source 4 session 9 event 144 length 7 {\"A\":1}");

    EXPECT_EQ(run("send 0x90 - -s 3", "from stdin"), 0) << err();
    ASSERT_TRUE(Pump({&service}, 2000, [&] { return answering.got.size() == 2; }));
    EXPECT_EQ(answering.Body(1), "from stdin");

    EXPECT_EQ(run("call 0x91 x --timeout 200"), 1);
    EXPECT_EQ(err(), "mdvr-bus: no response to event 0x91 within 200 ms\n");

    EXPECT_EQ(run("dogs"), 0) << err();
    EXPECT_NE(out().find("tool-test"), std::string::npos) << out();
    EXPECT_NE(out().find(std::to_string(getpid())), std::string::npos) << out();

    EXPECT_EQ(run("listen 0x92 --count 1", "", [&] { Send(service, 0x92, std::string("\x01\x02", 2), 0, 5, 6); }), 0);
    EXPECT_EQ(out().substr(0, 34), "event 0x92  source 6  session 5  c");
    EXPECT_NE(out().find("length 2\n000000  01 02\n"), std::string::npos) << out();

    for (const char* bad : {"send 0x10000 x", "send 0x90 x --dest -1", "frobnicate", "send 0x90 x -f /nonexistent"}) {
        EXPECT_EQ(run(bad), 2) << bad;
        const std::string e = err();
        EXPECT_EQ(e.compare(0, 10, "mdvr-bus: "), 0) << e;
        EXPECT_EQ(std::count(e.begin(), e.end(), '\n'), 1) << e;
    }
    for (const char* suffix : {".in", ".out", ".err"})
        std::remove((base + suffix).c_str());
}

} // namespace
