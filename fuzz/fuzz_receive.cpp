// Arbitrary bytes as a bus message through CMsgClientManage::ReceiveMessageHandle,
// with handlers registered on several events and modules over the recording
// bus, invalid ones and a parameter consumer among them. Every delivery is
// checked against the registry: which handlers ran, in which order, and with
// which buffer. (How member functions of real classes are called is the unit
// tests' business.)
//
// Input: one control byte, then the message. Control bit 0 set: the header's
// body length is made to agree with the message (keeping its bits above 22),
// so that most inputs get past the length check.
#include "CommonParaAdapter.h"
#include "FuzzSupport.h"
#include "MsgClientManage.h"
#include "ToolkitHost.h"

#include <map>
#include <vector>

namespace {

struct Hit {
    int handler;
    const char* message;
    int length;
};
std::vector<Hit> g_hits;

// A module's handler; a parameter handler also adapts the time section.
struct Handler {
    int label;
    tag_MsgTimeSetting time;
    void On(const char* m, int n) { g_hits.push_back({label, m, n}); }
    void OnParameters(const char* m, int n)
    {
        On(m, n);
        Json::Value root;
        if (ParseJsonMessage(m, n, root) == 1)
            AdaptParaJson(PARA_TIME_SETTING, root, &time);
    }
};

struct Registration {
    int module;
    int event;
    int handler; // the handler's label; 0: an invalid handler
};

class Fixture {
public:
    Fixture() : client(nullptr, 0)
    {
        handle = ToolkitHost::BusCalls().back().handle;
        const Registration valid[] = {{5, 0x0001, 1}, {1, 0x0001, 2}, {9, 0x0001, 3},  {7, 0x0100, 4},
                                      {7, 0x8001, 5}, {-1, 0x8001, 6}, {0, 0xFFFF, 7}, {8, 0x0200, 8}};
        for (const Registration& r : valid) {
            handlers[r.handler].label = r.handler;
            client.MSGEventRegister(r.module, r.event, &handlers[r.handler], &Handler::On);
            registry[r.event][r.module] = r;
        }
        client.MSGEventRegister(4, 0x0200, &handlers[9], &Handler::OnParameters);
        handlers[9].label = 9;
        registry[0x0200][4] = {4, 0x0200, 9};
        // Invalid: a null function, a null object.
        CallbackFun_t nullFunction{&handlers[0], {}}, nullObject{nullptr, {}};
        void (Handler::*on)(const char*, int) = &Handler::On;
        std::memcpy(&nullObject.method, &on, sizeof on);
        client.RegisterMessageHandle(3, 0x0001, &nullFunction);
        client.RegisterMessageHandle(2, 0x0001, &nullObject);
        registry[0x0001][3] = {3, 0x0001, 0};
        registry[0x0001][2] = {2, 0x0001, 0};
    }

    // The handlers that must run for a message, in order.
    std::vector<Registration> Expected(const unsigned char* m, int length) const
    {
        std::vector<Registration> expected;
        if (length < 16)
            return expected;
        int sourceId;
        unsigned short id;
        unsigned int lengthWord;
        std::memcpy(&sourceId, m, 4);
        std::memcpy(&id, m + 10, 2);
        std::memcpy(&lengthWord, m + 12, 4);
        if ((lengthWord & 0x7FFFFF) + 16 != static_cast<unsigned int>(length))
            return expected;
        auto event = registry.find(id);
        if (event == registry.end())
            return expected;
        for (const auto& module : event->second) {
            if ((id & 0x8000) && module.first != sourceId)
                continue;
            if (module.second.handler != 0)
                expected.push_back(module.second);
        }
        return expected;
    }

    CMsgClientManage client;
    Common::K7X_MSG_HANDLE handle;
    Handler handlers[10];
    std::map<int, std::map<int, Registration>> registry; // event -> module -> handler
};

void Quiet(const ToolkitHost::LogLine&, void*) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ToolkitHost::SetLogSink(Quiet, nullptr);
    static Fixture* fixture = [] {
        ToolkitHost::UseRecordingBus(true); // before the client is created
        return new Fixture;                 // lives as long as the process
    }();
    if (size == 0)
        return 0;
    fuzz::Guarded message(data + 1, size - 1);
    const int length = message.length();
    if ((data[0] & 1) && length >= 16) {
        unsigned int lengthWord;
        std::memcpy(&lengthWord, message.data() + 12, 4);
        lengthWord = (lengthWord & ~0x7FFFFFu) | (static_cast<unsigned int>(length - 16) & 0x7FFFFFu);
        std::memcpy(message.data() + 12, &lengthWord, 4);
    }
    const std::vector<Registration> expected = fixture->Expected(message.data(), length);

    g_hits.clear();
    unsigned short id = 0;
    if (length >= 16)
        std::memcpy(&id, message.data() + 10, 2);
    // Through the receiver bound on the bus when the event is subscribed,
    // straight to the member function otherwise.
    if (length < 16 || !ToolkitHost::DeliverMessage(fixture->handle, id, message.chars(), length))
        fixture->client.ReceiveMessageHandle(message.chars(), length);

    FUZZ_CHECK(g_hits.size() == expected.size(), static_cast<long long>(g_hits.size()),
               static_cast<long long>(expected.size()));
    for (size_t i = 0; i < expected.size(); ++i) {
        FUZZ_CHECK(g_hits[i].handler == expected[i].handler, g_hits[i].handler, expected[i].handler);
        FUZZ_CHECK(g_hits[i].message == message.chars() && g_hits[i].length == length, g_hits[i].length, length);
    }
    return 0;
}
