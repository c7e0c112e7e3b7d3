// The message-bus client against the recording bus double.
#include "MsgClientManage.h"
#include "ToolkitHost.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

using ToolkitHost::BusCall;
typedef std::vector<std::string> Texts;
typedef std::vector<long long> Numbers;

// Every handler call: which function ran, on which object, with what.
struct Hit { std::string function; const void* self; const char* message; int length; };
std::vector<Hit> g_hits;
#define HANDLER(declaration, name, label) \
    declaration name(const char* m, int n) { g_hits.push_back({label, this, m, n}); }

struct First {
    virtual ~First() = default;
    HANDLER(void, Plain, "First::Plain") HANDLER(virtual void, Virtual, "First::Virtual")
};
struct Second { // Virtual2 in the first slot of the table: on ARM its first word is 0
    HANDLER(virtual void, Virtual2, "Second::Virtual2") HANDLER(void, Plain2, "Second::Plain2")
    virtual ~Second() = default;
};
struct Handler : First, Second { // overrides both virtual handlers
    HANDLER(void, Virtual, "Handler::Virtual") HANDLER(void, Virtual2, "Handler::Virtual2")
};
typedef void (Handler::*Method)(const char*, int);
// Removes modules 1 to `last` of event 0x43 while a message for it is
// delivered; with all three gone, registers a handler of event 0x44.
struct Unregisterer {
    CMsgClientManage* client;
    int last;
    Handler* other;
    void Handle(const char*, int)
    {
        for (int id = 1; id <= last; ++id)
            client->MSGEventUnRegister(id, 0x43);
        if (last == 3)
            client->MSGEventRegister(7, 0x44, other, &First::Plain);
    }
};

CallbackFun_t Record(void* object, Method method)
{
    CallbackFun_t record{object, {}};
    std::memcpy(&record.method, &method, sizeof method);
    return record;
}

// A message one byte into its buffer: reading the header must not assume alignment.
struct Message {
    Message(int sourceId, int session, unsigned short id, unsigned int lengthWord, int bodySize = 0)
        : event(id), bytes(1 + 16 + bodySize, 'b')
    {
        Common::SMessageHead head{sourceId, session, 0, id, lengthWord};
        std::memcpy(data(), &head, sizeof head);
    }
    char* data() { return bytes.data() + 1; }
    int event;
    std::vector<char> bytes;
};

template <class T, class F> Texts Names(const std::vector<T>& items, F name)
{
    Texts names;
    for (const T& item : items)
        names.push_back(name(item));
    return names;
}
Texts BusFunctions() { return Names(ToolkitHost::BusCalls(), [](const BusCall& c) { return c.function; }); }
Texts Called() { return Names(g_hits, [](const Hit& h) { return h.function; }); }
// The captured log lines as "<level> <message>".
Texts Logged(const ToolkitHost::LogCapture& log)
{
    return Names(log.lines(), [](const ToolkitHost::LogLine& l) { return std::to_string(l.level) + " " + l.message; });
}

class MsgClient : public ::testing::Test {
protected:
    void SetUp() override
    {
        ToolkitHost::UseRecordingBus(true);
        ToolkitHost::ResetBus();
        g_hits.clear();
        std::memset(name, 0xA5, sizeof name); // the bytes after the NUL go to the bus too
        std::memcpy(name, "recorder", 9);
    }
    void Created() { handle = ToolkitHost::BusCalls().back().handle; } // right after constructing
    // Through the receiver that the client subscribed on the bus.
    bool Deliver(Message& m)
    {
        return ToolkitHost::DeliverMessage(handle, m.event, m.data(), static_cast<int>(m.bytes.size()) - 1);
    }
    std::vector<unsigned char> DogInfo(unsigned int param)
    {
        std::vector<unsigned char> info(name, name + 32);
        for (int shift = 0; shift < 32; shift += 8)
            info.push_back(static_cast<unsigned char>(param >> shift));
        return info;
    }

    char name[32];
    Common::K7X_MSG_HANDLE handle = nullptr;
    ToolkitHost::LogCapture log;
};

TEST_F(MsgClient, WatchdogRegisteredWithTheClientAndUnregisteredBeforeItsEnd)
{
    const void* object;
    ::testing::internal::CaptureStdout();
    {
        CMsgClientManage client(name, 0x01020304);
        object = &client;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "MSG_MANAGE: pid = " + std::to_string(getpid()) + ", dog_name = recorder\n"
              "MSG_MANAGE: Watch dog unRegister, name = recorder\n");
    EXPECT_EQ(BusFunctions(), (Texts{"K7X_MSGCreateMessageClient", "K7X_MSGSendMessage", "K7X_MSGSendMessage",
                                     "K7X_MSGDestroyMessageClient"}));
    std::vector<BusCall> calls = ToolkitHost::BusCalls();
    EXPECT_EQ(calls[0].numbers, (Numbers{30, 0}));
    EXPECT_EQ(calls[0].text, "127.0.0.1");
    for (int i : {1, 2}) {
        EXPECT_EQ(calls[i].numbers, (Numbers{0, i == 1 ? 6 : 7, 0, 36, 0}));
        EXPECT_EQ(calls[i].pointer, object); // straight from the object's start
        EXPECT_EQ(calls[i].body, DogInfo(0x01020304));
    }
    for (const BusCall& c : calls)
        EXPECT_EQ(c.handle, calls[0].handle);
    EXPECT_TRUE(log.lines().empty());

    ToolkitHost::ResetBus();
    {
        CMsgClientManage client(nullptr, 5);
        EXPECT_EQ(client.MSGFeedWatchDog(50000), 1);
    }
    EXPECT_EQ(BusFunctions(), (Texts{"K7X_MSGCreateMessageClient", "K7X_MSGDestroyMessageClient"}));
    ASSERT_EQ(Logged(log), Texts{"0 MSG_MANAGE: Watch Dog name is NULL\n"});
    EXPECT_EQ(log.lines()[0].file, "basicservice/basebusiness/BSCommonLibrary/src/MsgClientManage");
    EXPECT_EQ(log.lines()[0].function, "CMsgClientManage");
}

TEST_F(MsgClient, ExitsWhenTheClientCannotBeCreated)
{
    EXPECT_EXIT(
        {
            ToolkitHost::SetLogSink(nullptr, nullptr); // errors to standard error
            ToolkitHost::SetClientCreateFails(true);
            CMsgClientManage client(name, 0);
        },
        ::testing::ExitedWithCode(1), "MSG_MANAGE: Create message handle failed");
}

TEST_F(MsgClient, SubscribesAnEventWhileItHasHandlers)
{
    CMsgClientManage client(nullptr, 0);
    Handler h;
    CallbackFun_t cb = Record(&h, &Handler::Plain);
    ToolkitHost::ClearBusCalls();
    log.clear();

    EXPECT_EQ(client.RegisterMessageHandle(1, 0x100, nullptr), 0);
    EXPECT_EQ(client.RegisterMessageHandle(1, 0x100, &cb), 1);
    EXPECT_EQ(client.RegisterMessageHandle(1, 0x100, &cb), 1);
    EXPECT_EQ(client.MSGEventRegister(2, 0x100, &h, &Handler::Plain), 1);
    EXPECT_EQ(client.MSGEventUnRegister(3, 0x100), 0); // not registered
    EXPECT_EQ(client.MSGEventUnRegister(1, 0x200), 0); // unknown event
    EXPECT_EQ(client.MSGEventUnRegister(1, 0x100), 0);
    EXPECT_EQ(client.MSGEventUnRegister(2, 0x100), 0);
    EXPECT_EQ(client.RegisterMessageHandle(7, 0x100, &cb), 1);

    EXPECT_EQ(Logged(log), (Texts{"4 MSG_MANAGE: event = 0x100, register a new massage id = 1\n",
                                  "4 MSG_MANAGE: event = 0x100, Find the same message id = 1\n",
                                  "4 MSG_MANAGE: event = 0x100, add a massage id = 2\n",
                                  "4 MSG_MANAGE: Delete the module id, event = 0x100, id = 1\n",
                                  "4 MSG_MANAGE: Delete the module id, event = 0x100, id = 2\n",
                                  "4 MSG_MANAGE: Delete the message, event = 0x100\n",
                                  "4 MSG_MANAGE: event = 0x100, register a new massage id = 7\n"}));
    EXPECT_EQ(BusFunctions(), (Texts{"K7X_MSGEventRegister", "K7X_MSGEventUnRegister", "K7X_MSGEventRegister"}));
    for (const BusCall& c : ToolkitHost::BusCalls())
        EXPECT_EQ(c.numbers, Numbers{0x100});
    EXPECT_EQ(ToolkitHost::BusCalls()[0].pointer, &client);
}

TEST_F(MsgClient, CallsMemberFunctionsOfRealClassesThroughBothRegistrations)
{
    Handler h;
    const struct { Method method; const char* function; const void* self; } cases[] = {
        {&First::Plain, "First::Plain", static_cast<First*>(&h)},
        {&First::Virtual, "Handler::Virtual", &h},
        {&Second::Plain2, "Second::Plain2", static_cast<Second*>(&h)}, // this adjusted
        {&Second::Virtual2, "Handler::Virtual2", &h},
    };
    for (bool variadic : {false, true}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(c.function) + (variadic ? " variadic" : " record"));
            CMsgClientManage client(nullptr, 0);
            Created();
            CallbackFun_t cb = Record(&h, c.method);
            EXPECT_EQ(variadic ? client.MSGEventRegister(9, 0x42, &h, c.method)
                               : client.RegisterMessageHandle(9, 0x42, &cb), 1);
            Message m(0, 0, 0x42, 3, 3);
            g_hits.clear();
            ASSERT_TRUE(Deliver(m));
            ASSERT_EQ(g_hits.size(), 1u);
            EXPECT_EQ(g_hits[0].function, c.function);
            EXPECT_EQ(g_hits[0].self, c.self);
            EXPECT_EQ(g_hits[0].message, m.data());
            EXPECT_EQ(g_hits[0].length, 19);
        }
    }
}

TEST_F(MsgClient, DeliversRequestsToAllInModuleOrderAndResponsesToTheirModule)
{
    CMsgClientManage client(nullptr, 0);
    Created();
    Handler h;
    client.MSGEventRegister(30, 0x42, &h, &First::Virtual);
    client.MSGEventRegister(10, 0x42, &h, &Second::Virtual2); // replaced by the next
    client.MSGEventRegister(10, 0x42, &h, &First::Plain);
    client.MSGEventRegister(20, 0x42, &h, &Second::Plain2);
    CallbackFun_t nullObject = Record(nullptr, &First::Plain), nullFunction = Record(&h, nullptr);
    client.RegisterMessageHandle(15, 0x42, &nullObject);
    client.RegisterMessageHandle(25, 0x42, &nullFunction);
    client.MSGEventRegister(20, 0x8042, &h, &Second::Plain2);
    client.MSGEventRegister(30, 0x8042, &h, &First::Plain);
    log.clear();

    Message request(20, 0, 0x42, 0);
    ASSERT_TRUE(Deliver(request));
    EXPECT_EQ(Called(), (Texts{"First::Plain", "Second::Plain2", "Handler::Virtual"}));
    const std::string got = "4 MSG_MANAGE: Receice message, message id = 0x42\n";
    const std::string bad = "0 MSG_MANAGE: callback ptr error\n\n";
    EXPECT_EQ(Logged(log), (Texts{got, got, bad, got, got, bad, got}));

    for (int source : {30, 10}) { // module 10 has no handler for the response
        g_hits.clear();
        log.clear();
        Message response(source, 77, 0x8042, 0);
        ASSERT_TRUE(Deliver(response));
        EXPECT_EQ(Called(), source == 30 ? Texts{"First::Plain"} : Texts{});
        EXPECT_EQ(Logged(log), source == 30 ? Texts{"4 MSG_MANAGE: Receice response message, message id = 0x8042, "
                                                    "sourceId = 30, session = 77\n"}
                                            : Texts{});
    }

    // A handler that removes later modules, or the whole event.
    for (int last : {2, 3}) {
        Unregisterer u{&client, last, &h};
        client.MSGEventRegister(1, 0x43, &u, &Unregisterer::Handle);
        client.MSGEventRegister(2, 0x43, &h, &First::Plain);
        client.MSGEventRegister(3, 0x43, &h, &Second::Plain2);
        g_hits.clear();
        ToolkitHost::ClearBusCalls();
        Message changing(0, 0, 0x43, 0);
        ASSERT_TRUE(Deliver(changing));
        EXPECT_EQ(Called(), last == 2 ? Texts{"Second::Plain2"} : Texts{});
        EXPECT_EQ(BusFunctions(), last == 2 ? Texts{} : (Texts{"K7X_MSGEventUnRegister", "K7X_MSGEventRegister"}));
        client.MSGEventUnRegister(3, 0x43);
    }
}

TEST_F(MsgClient, ForwardsAResponseWithItsWholeLength)
{
    CMsgClientManage client(nullptr, 0);
    ToolkitHost::ClearBusCalls();
    ToolkitHost::SetBusResult("K7X_MSGResponseMessage", 7);
    const std::vector<char> body(70000, 'r'); // longer than 16 bits
    Common::SMessageHead head{3, 4, 0, 0x8042, 0};
    EXPECT_EQ(client.MSGResponseMessage(&head, body.data(), 70000), 7);
    ASSERT_EQ(BusFunctions(), Texts{"K7X_MSGResponseMessage"});
    EXPECT_EQ(ToolkitHost::BusCalls()[0].numbers, Numbers{70000});
    EXPECT_EQ(ToolkitHost::BusCalls()[0].pointer, &head);
}

TEST_F(MsgClient, DropsAMessageWhoseLengthDisagreesWithItsHeader)
{
    CMsgClientManage client(nullptr, 0);
    Handler h;
    client.MSGEventRegister(1, 0x42, &h, &First::Plain);
    // A 4-byte body (20 bytes in all) with its length word, passed with a length.
    const struct { unsigned int lengthWord; int length; const char* logged; /* null: delivered */ } cases[] = {
        {4, 20, nullptr},
        {0xFF800004, 20, nullptr}, // bits above 22 are not the length
        {5, 20, "event = 0x42, length = 20!"},
        {4, 21, "event = 0x42, length = 21!"},
        {0x7FFFFF, 15, "event = 0x0, length = 15!"}, // too short for a header
        {4, INT_MIN, "event = 0x0, length = -2147483648!"},
        {4, 16, "event = 0x0, length = 16!"}, // a null message
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        Message m(0, 0, 0x42, c.lengthWord, 4);
        g_hits.clear();
        log.clear();
        client.ReceiveMessageHandle(c.length == 16 ? nullptr : m.data(), c.length);
        EXPECT_EQ(g_hits.size(), c.logged ? 0u : 1u);
        const std::string invalid = "0 MSG_MANAGE: OnGetMsg, Invalid Parameter Length, ";
        EXPECT_EQ(Logged(log), c.logged ? Texts{invalid + c.logged + "\n"}
                                        : Texts{"4 MSG_MANAGE: Receice message, message id = 0x42\n"});
    }
}

TEST_F(MsgClient, FeedsTheWatchdogWhenMoreThan9999HavePassedEitherWay)
{
    CMsgClientManage client(name, 0);
    ToolkitHost::SetBusResult("K7X_MSGSendMessage", 42);
    ToolkitHost::ClearBusCalls();
    const struct { long long now; bool feeds; } steps[] = {
        {9999, false}, {10000, true}, {19999, false}, {20000, true}, {10000, true}, {LLONG_MIN, true},
        {LLONG_MIN + 9999, false}, {LLONG_MAX, true}, {LLONG_MAX - 9999, false}, {LLONG_MIN, true}};
    for (const auto& s : steps) {
        SCOPED_TRACE(s.now);
        log.clear();
        EXPECT_EQ(client.MSGFeedWatchDog(s.now), s.feeds ? 42 : 1);
        EXPECT_EQ(log.lines().size(), s.feeds ? 1u : 0u);
    }
    EXPECT_EQ(Logged(log), Texts{"4 MSG_MANAGE: Feed dog, name = recorder, curTime = 9223372036854775808\n"});
    std::vector<BusCall> feeds = ToolkitHost::BusCalls();
    EXPECT_EQ(feeds.size(), 6u);
    for (const BusCall& c : feeds) {
        EXPECT_EQ(c.numbers, (Numbers{0, 3, 0, 36, 0}));
        EXPECT_EQ(c.pointer, &client);
        EXPECT_EQ(c.body, DogInfo(0));
    }
}

} // namespace
