// The message-bus client: bus client lifecycle, watchdog, handler registry and
// delivery of incoming messages to the handlers.
#include "MsgClientManage.h"

#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#define MSG_SOURCE_FILE "basicservice/basebusiness/BSCommonLibrary/src/MsgClientManage"
#define MSG_LOG(level, ...) Common::gclDebugPrintf(level, MSG_SOURCE_FILE, __func__, __LINE__, __VA_ARGS__)

namespace {

using BusWire::kDogFeed;
using BusWire::kDogRegister;
using BusWire::kDogUnregister;
using BusWire::kResponseBit;

const long long kFeedInterval = 9999; // feed when more than this has passed

const int kHeadSize = static_cast<int>(BusWire::kHeadSize);

static_assert(sizeof(void (CMsgClientManage::*)(char const*, int)) == sizeof(CallbackFun_t::Method),
              "a pointer to member function is two words");

// The name as a terminated string: the stored 32 bytes need not hold a NUL.
std::array<char, sizeof(WatchDogInfo::dogName) + 1> DogName(const WatchDogInfo& dog)
{
    std::array<char, sizeof(WatchDogInfo::dogName) + 1> name{};
    std::memcpy(name.data(), dog.dogName, sizeof dog.dogName);
    return name;
}

// Calls handler.object->*handler.method(message, length) from the two words
// of the pointer to member function. Returns false, calling nothing, when the
// handler is invalid.
bool CallHandler(const CallbackFun_t& handler, char const* message, int length)
{
    const CallbackFun_t::Method& m = handler.method;
#if defined(__arm__) || defined(__aarch64__)
    // The virtual flag lives in the adjustment, since code addresses may be odd (Thumb).
    const bool isVirtual = (m.adj & 1) != 0;
    if (handler.object == nullptr || (m.ptr == 0 && !isVirtual))
        return false;
    const std::uintptr_t adjust = static_cast<std::uintptr_t>(m.adj >> 1);
    const std::uintptr_t slot = m.ptr;
#else
    // Itanium: the virtual flag is the low bit of the first word.
    const bool isVirtual = (m.ptr & 1) != 0;
    if (handler.object == nullptr || m.ptr == 0)
        return false;
    const std::uintptr_t adjust = static_cast<std::uintptr_t>(m.adj);
    const std::uintptr_t slot = m.ptr - 1;
#endif
    void* target = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(handler.object) + adjust);
    std::uintptr_t function = m.ptr;
    if (isVirtual) {
        std::uintptr_t vtable;
        std::memcpy(&vtable, target, sizeof vtable);
        std::memcpy(&function, reinterpret_cast<const void*>(vtable + slot), sizeof function);
    }
    // A member function takes the object as its first argument.
    typedef void (*Entry)(void* self, char const* message, int length);
    reinterpret_cast<Entry>(function)(target, message, length);
    return true;
}

} // namespace

CMsgClientManage::CMsgClientManage(char const* dogName, unsigned int dogParam)
    : dogInfo(), clientHandle(nullptr), handlerMap(), lastFeedTime(0), dogEnabled(false)
{
    clientHandle = Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", 0);
    if (clientHandle == nullptr) {
        MSG_LOG(0, "MSG_MANAGE: Create message handle failed\n");
        std::exit(1);
    }
    if (dogName != nullptr) {
        dogEnabled = true;
        std::memcpy(dogInfo.dogName, dogName, sizeof dogInfo.dogName);
        dogInfo.dogParam = dogParam;
        Common::K7X_MSGSendMessage(clientHandle, 0, kDogRegister, 0, reinterpret_cast<char const*>(&dogInfo),
                                   sizeof dogInfo, 0);
        std::printf("MSG_MANAGE: pid = %d, dog_name = %s\n", static_cast<int>(getpid()), DogName(dogInfo).data());
    } else {
        MSG_LOG(0, "MSG_MANAGE: Watch Dog name is NULL\n"); // dogName stays all zero
    }
}

CMsgClientManage::~CMsgClientManage()
{
    if (dogEnabled) {
        std::printf("MSG_MANAGE: Watch dog unRegister, name = %s\n", DogName(dogInfo).data());
        Common::K7X_MSGSendMessage(clientHandle, 0, kDogUnregister, 0, reinterpret_cast<char const*>(&dogInfo),
                                   sizeof dogInfo, 0);
    }
    // Destroying the client ends every subscription of this object.
    Common::K7X_MSGDestroyMessageClient(clientHandle);
}

int CMsgClientManage::RegisterMessageHandle(int id, int event, void const* callback)
{
    if (callback == nullptr)
        return 0;
    CallbackFun_t record;
    std::memcpy(&record, callback, sizeof record);

    auto found = handlerMap.find(event);
    if (found != handlerMap.end()) {
        auto module = found->second.find(id);
        if (module != found->second.end()) {
            module->second = record;
            MSG_LOG(4, "MSG_MANAGE: event = 0x%x, Find the same message id = %d\n", event, id);
            return 1;
        }
        try {
            found->second.emplace(id, record);
        } catch (const std::bad_alloc&) {
            MSG_LOG(0, "MSG_MANAGE: out of memory, event = 0x%x, id = %d\n", event, id);
            return 0;
        }
        MSG_LOG(4, "MSG_MANAGE: event = 0x%x, add a massage id = %d\n", event, id);
        return 1;
    }

    try {
        handlerMap.emplace(event, std::map<int, CallbackFun_t>{{id, record}});
    } catch (const std::bad_alloc&) {
        MSG_LOG(0, "MSG_MANAGE: out of memory, event = 0x%x, id = %d\n", event, id);
        return 0;
    }
    Common::K7X_MSGEventRegister(clientHandle, event, Common::K7X_Bind(this, &CMsgClientManage::ReceiveMessageHandle));
    MSG_LOG(4, "MSG_MANAGE: event = 0x%x, register a new massage id = %d\n", event, id);
    return 1;
}

int CMsgClientManage::MSGEventRegister(int id, int event, void const* object, ...)
{
    CallbackFun_t record;
    std::memset(&record, 0, sizeof record);
    record.object = const_cast<void*>(object);
    va_list args;
    va_start(args, object);
    // The caller passed one pointer to member function: it travels as the
    // two-word record that CallbackFun_t::Method spells out.
    record.method = va_arg(args, CallbackFun_t::Method);
    va_end(args);
    return RegisterMessageHandle(id, event, &record);
}

int CMsgClientManage::MSGEventUnRegister(int id, int event)
{
    auto found = handlerMap.find(event);
    if (found == handlerMap.end())
        return 0;
    if (found->second.erase(id) != 0)
        MSG_LOG(4, "MSG_MANAGE: Delete the module id, event = 0x%x, id = %d\n", event, id);
    if (!found->second.empty())
        return 0;
    Common::K7X_MSGEventUnRegister(clientHandle, event);
    handlerMap.erase(found);
    MSG_LOG(4, "MSG_MANAGE: Delete the message, event = 0x%x\n", event);
    return 0;
}

int CMsgClientManage::MSGSendMessage(int destination, int messageId, int session, char const* body, int length,
                                     int flags)
{
    return Common::K7X_MSGSendMessage(clientHandle, destination, messageId, session, body, length, flags);
}

int CMsgClientManage::MSGResponseMessage(Common::SMessageHead* head, char const* body, int length)
{
    return Common::K7X_MSGResponseMessage(clientHandle, head, body, static_cast<unsigned int>(length));
}

int CMsgClientManage::MSGWaitForEvent(unsigned int timeout)
{
    return Common::K7X_MSGWaitForEvent(clientHandle, static_cast<int>(timeout));
}

int CMsgClientManage::MSGFeedWatchDog(long long curTime)
{
    if (!dogEnabled)
        return 1;
    // |curTime - lastFeedTime| without overflow: the difference of the two,
    // taken from the larger, always fits in 64 unsigned bits.
    const unsigned long long now = static_cast<unsigned long long>(curTime);
    const unsigned long long last = static_cast<unsigned long long>(lastFeedTime);
    const unsigned long long distance = curTime >= lastFeedTime ? now - last : last - now;
    if (distance <= static_cast<unsigned long long>(kFeedInterval))
        return 1;
    MSG_LOG(4, "MSG_MANAGE: Feed dog, name = %s, curTime = %llu\n", DogName(dogInfo).data(), now);
    lastFeedTime = curTime;
    return Common::K7X_MSGSendMessage(clientHandle, 0, kDogFeed, 0, reinterpret_cast<char const*>(&dogInfo),
                                      sizeof dogInfo, 0);
}

void CMsgClientManage::ReceiveMessageHandle(char const* message, int length)
{
    if (message == nullptr || length < kHeadSize) {
        MSG_LOG(0, "MSG_MANAGE: OnGetMsg, Invalid Parameter Length, event = 0x%x, length = %d!\n", 0u, length);
        return;
    }
    // The buffer need not be aligned: the header is copied out.
    const Common::SMessageHead head = BusWire::ReadHead(message);
    const int sourceId = head.sourceId;
    const int session = head.session;
    const unsigned int lengthWord = head.length;
    const unsigned int event = head.messageId;

    if (static_cast<long long>(lengthWord & BusWire::kBodyMax) + kHeadSize != length) {
        MSG_LOG(0, "MSG_MANAGE: OnGetMsg, Invalid Parameter Length, event = 0x%x, length = %d!\n", event, length);
        return;
    }
    auto found = handlerMap.find(static_cast<int>(event));
    if (found == handlerMap.end())
        return;

    if (event & kResponseBit) {
        auto module = found->second.find(sourceId);
        if (module == found->second.end())
            return;
        MSG_LOG(4, "MSG_MANAGE: Receice response message, message id = 0x%x, sourceId = %d, session = %d\n", event,
                sourceId, session);
        const CallbackFun_t handler = module->second;
        if (!CallHandler(handler, message, length))
            MSG_LOG(0, "MSG_MANAGE: callback ptr error\n\n");
        return;
    }

    for (auto module = found->second.begin(); module != found->second.end();) {
        const int id = module->first;
        const CallbackFun_t handler = module->second;
        MSG_LOG(4, "MSG_MANAGE: Receice message, message id = 0x%x\n", event);
        if (!CallHandler(handler, message, length))
            MSG_LOG(0, "MSG_MANAGE: callback ptr error\n\n");
        // A handler may have changed the registry on this thread: find the
        // next module again rather than trust the iterator.
        found = handlerMap.find(static_cast<int>(event));
        if (found == handlerMap.end())
            return;
        module = found->second.upper_bound(id);
    }
}
