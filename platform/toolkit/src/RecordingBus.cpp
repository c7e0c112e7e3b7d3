// The recording double of the bus, for unit tests of its users
// (ToolkitHost::UseRecordingBus). Every call is recorded with its arguments;
// messages reach a client only through ToolkitHost::DeliverMessage.
#include "BusBackend.h"
#include "ToolkitHost.h"

#include <map>
#include <mutex>
#include <set>

namespace {

struct Client {
    std::map<int, Common::K7X_MSG_CALLBACK> receivers; // by event
};

struct Bus {
    std::mutex mutex;
    std::vector<ToolkitHost::BusCall> calls;
    std::map<std::string, int> results;
    std::set<Client*> clients;
    bool createFails = false;
};

Bus& TheBus()
{
    static Bus bus;
    return bus;
}

Client* Find(Bus& bus, Common::K7X_MSG_HANDLE handle)
{
    Client* client = static_cast<Client*>(handle);
    return bus.clients.count(client) ? client : nullptr;
}

// Records a call and returns the result set for its function. Expects the
// bus's mutex to be held.
int Record(Bus& bus, ToolkitHost::BusCall call)
{
    auto result = bus.results.find(call.function);
    bus.calls.push_back(std::move(call));
    return result == bus.results.end() ? 0 : result->second;
}

ToolkitHost::BusCall Call(const char* function, Common::K7X_MSG_HANDLE handle, std::vector<long long> numbers)
{
    ToolkitHost::BusCall call;
    call.function = function;
    call.handle = handle;
    call.numbers = std::move(numbers);
    return call;
}

std::vector<unsigned char> Copy(const char* bytes, long long length)
{
    if (bytes == nullptr || length <= 0)
        return {};
    const unsigned char* begin = reinterpret_cast<const unsigned char*>(bytes);
    return std::vector<unsigned char>(begin, begin + length);
}

using namespace Common;

class Recording : public BusBackend {
public:
    K7X_MSG_HANDLE Create(unsigned int clientType, const char* serverAddr, short port) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        Client* client = nullptr;
        if (!bus.createFails) {
            client = new Client;
            bus.clients.insert(client);
        }
        ToolkitHost::BusCall call = Call("K7X_MSGCreateMessageClient", client, {clientType, port});
        call.text = serverAddr ? serverAddr : "";
        Record(bus, std::move(call));
        return client;
    }

    void Destroy(K7X_MSG_HANDLE handle) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        Record(bus, Call("K7X_MSGDestroyMessageClient", handle, {}));
        if (Client* client = Find(bus, handle)) {
            bus.clients.erase(client);
            delete client;
        }
    }

    int Register(K7X_MSG_HANDLE handle, int event, K7X_MSG_CALLBACK callback) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        if (Client* client = Find(bus, handle))
            client->receivers[event] = callback;
        ToolkitHost::BusCall call = Call("K7X_MSGEventRegister", handle, {event});
        call.pointer = callback.object;
        return Record(bus, std::move(call));
    }

    int Unregister(K7X_MSG_HANDLE handle, int event) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        if (Client* client = Find(bus, handle))
            client->receivers.erase(event);
        return Record(bus, Call("K7X_MSGEventUnRegister", handle, {event}));
    }

    int Send(K7X_MSG_HANDLE handle, int destination, int messageId, int session, const char* body, int length,
             int flags) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        ToolkitHost::BusCall call =
            Call("K7X_MSGSendMessage", handle, {destination, messageId, session, length, flags});
        call.pointer = body;
        call.body = Copy(body, length);
        return Record(bus, std::move(call));
    }

    int Respond(K7X_MSG_HANDLE handle, SMessageHead* head, const char* body, unsigned int length) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        ToolkitHost::BusCall call = Call("K7X_MSGResponseMessage", handle, {length});
        call.pointer = head;
        call.body = Copy(body, length);
        return Record(bus, std::move(call));
    }

    int Wait(K7X_MSG_HANDLE handle, int timeout) override
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        return Record(bus, Call("K7X_MSGWaitForEvent", handle, {timeout}));
    }

    // No daemon stands behind the double: it has no lists and routes nothing.
    bool Query(K7X_MSG_HANDLE, ToolkitHost::BusList, int, std::string&) override { return false; }
    bool Monitor(K7X_MSG_HANDLE, const std::vector<int>&, ToolkitHost::RoutedSink, void*) override { return false; }
};

} // namespace

namespace Common {

BusBackend& RecordingBus()
{
    static Recording recording;
    return recording;
}

} // namespace Common

namespace ToolkitHost {

std::vector<BusCall> BusCalls()
{
    Bus& bus = TheBus();
    std::lock_guard<std::mutex> lock(bus.mutex);
    return bus.calls;
}

void ClearBusCalls()
{
    Bus& bus = TheBus();
    std::lock_guard<std::mutex> lock(bus.mutex);
    bus.calls.clear();
}

void ResetBus()
{
    Bus& bus = TheBus();
    std::lock_guard<std::mutex> lock(bus.mutex);
    bus.calls.clear();
    bus.results.clear();
    bus.createFails = false;
}

void SetClientCreateFails(bool fails)
{
    Bus& bus = TheBus();
    std::lock_guard<std::mutex> lock(bus.mutex);
    bus.createFails = fails;
}

void SetBusResult(const std::string& function, int result)
{
    Bus& bus = TheBus();
    std::lock_guard<std::mutex> lock(bus.mutex);
    bus.results[function] = result;
}

bool DeliverMessage(Common::K7X_MSG_HANDLE handle, int event, const char* message, int length)
{
    Common::K7X_MSG_CALLBACK receiver;
    {
        Bus& bus = TheBus();
        std::lock_guard<std::mutex> lock(bus.mutex);
        Client* client = Find(bus, handle);
        if (client == nullptr)
            return false;
        auto found = client->receivers.find(event);
        if (found == client->receivers.end())
            return false;
        receiver = found->second;
    }
    // Outside the lock: the receiver may call back into the bus.
    receiver.invoke(receiver, message, length);
    return true;
}

} // namespace ToolkitHost
