// Arbitrary bytes as a bus message through CMsgClientManage::ReceiveMessageHandle,
// with handlers of real classes (plain and virtual member functions, a second
// base that needs its this-pointer adjusted, a parameter consumer) registered on
// several events and modules over the recording bus. Every delivery is checked
// against the registry: which handlers ran, in which order, on which object and
// with which buffer.
//
// Input: one control byte, then the message. Control bit 0 set: the header's
// body length is made to agree with the message (keeping its bits above 22),
// so that most inputs get past the length check.
#include "CommonParaAdapter.h"
#include "FuzzSupport.h"
#include "MsgClientManage.h"
#include "ToolkitHost.h"

#include <map>
#include <memory>
#include <vector>

namespace {

struct Hit {
    int handler;
    const void* self;
    const char* message;
    int length;
};
std::vector<Hit> g_hits;

struct Plain {
    virtual ~Plain() = default;
    void OnPlain(const char* m, int n) { g_hits.push_back({1, this, m, n}); }
    virtual void OnVirtual(const char* m, int n) { g_hits.push_back({2, this, m, n}); }
};
struct Other {
    virtual void OnOther(const char* m, int n) { g_hits.push_back({3, this, m, n}); }
    void OnOtherPlain(const char* m, int n) { g_hits.push_back({4, this, m, n}); }
    virtual ~Other() = default;
};
struct Both : Plain, Other {
    void OnVirtual(const char* m, int n) override { g_hits.push_back({5, this, m, n}); }
    void OnOther(const char* m, int n) override { g_hits.push_back({6, this, m, n}); }
};
// A process's parameter handler: parses the body and adapts the time sections.
struct ParameterHandler {
    tag_MsgTimeSetting time;
    void OnParameters(const char* m, int n)
    {
        g_hits.push_back({7, this, m, n});
        Json::Value root;
        if (ParseJsonMessage(m, n, root) == 1)
            AdaptParaJson(PARA_TIME_SETTING, root, &time);
    }
};

typedef void (Both::*Method)(const char*, int);

struct Registration {
    int module;
    int event;
    int handler;  // the label that the handler records; 0: an invalid handler
    const void* self;
};

class Fixture {
public:
    Fixture() : client(nullptr, 0)
    {
        handle = ToolkitHost::BusCalls().back().handle;
        Add(5, 0x0001, &Both::OnPlain, 1, static_cast<Plain*>(&both));
        Add(1, 0x0001, &Both::OnVirtual, 5, &both);
        Add(9, 0x0001, &Both::OnOtherPlain, 4, static_cast<Other*>(&both));
        Add(3, 0x0001, nullptr, 0, nullptr); // invalid: null function
        Add(2, 0x0001, nullptr, 0, nullptr, /*nullObject=*/true);
        Add(7, 0x0100, &Both::OnOther, 6, &both);
        Add(7, 0x8001, &Both::OnVirtual, 5, &both);
        Add(-1, 0x8001, &Both::OnOtherPlain, 4, static_cast<Other*>(&both));
        Add(0, 0xFFFF, &Both::OnPlain, 1, static_cast<Plain*>(&both));
        client.MSGEventRegister(4, 0x0200, &params, &ParameterHandler::OnParameters);
        registry[0x0200][4] = {4, 0x0200, 7, &params};
        CallbackFun_t plainOnly{&plain, {}};
        void (Plain::*virtualOnPlain)(const char*, int) = &Plain::OnVirtual;
        std::memcpy(&plainOnly.method, &virtualOnPlain, sizeof virtualOnPlain);
        client.RegisterMessageHandle(8, 0x0200, &plainOnly);
        registry[0x0200][8] = {8, 0x0200, 2, &plain};
    }

    void Add(int module, int event, Method method, int label, const void* self, bool nullObject = false)
    {
        CallbackFun_t record{nullObject ? nullptr : &both, {}};
        std::memcpy(&record.method, &method, sizeof method);
        if (method != nullptr && !nullObject)
            client.MSGEventRegister(module, event, &both, method);
        else
            client.RegisterMessageHandle(module, event, &record);
        registry[event][module] = {module, event, label, self};
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
    Both both;
    Plain plain;
    ParameterHandler params;
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
        FUZZ_CHECK(g_hits[i].self == expected[i].self, expected[i].module);
        FUZZ_CHECK(g_hits[i].message == message.chars() && g_hits[i].length == length, g_hits[i].length, length);
    }
    return 0;
}
