// The program of docs/guide.md: a recorder process that takes its clock and
// voltage-protection settings from parameter messages on the message bus.
//
//   guide_example [--wait SECONDS] [DOCUMENT]
//
// It creates the bus client with a watchdog, registers a handler for
// parameter messages (event 0x101) and waits for messages for SECONDS
// (default 10), feeding the watchdog. Given a DOCUMENT (a parameter JSON
// file), it first hands it to the handler the way the bus delivers a message:
// a 16-byte message header, then the JSON body. Exit status: 0 success, 1 a
// message whose body is not JSON, 2 a usage or input error. Without a bus the
// process ends with status 1 as soon as the bus client is created.
#include "CommonParaAdapter.h"
#include "CommonUtils.h"
#include "MsgClientManage.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

const int kParameterEvent = 0x101; // the message id of parameter messages
const int kModule = 1;             // this module's id among the handlers of an event

class Settings {
public:
    // Called inside MSGWaitForEvent with the whole message: the 16-byte
    // Common::SMessageHead, then the body, and the length of both together.
    void OnParameters(const char* message, int length)
    {
        // ParseJsonMessage skips the header itself: pass the message as it came.
        Json::Value root;
        if (ParseJsonMessage(message, length, root) != 1) {
            std::printf("parameters: the body of %d bytes is not JSON\n", length - int(sizeof(Common::SMessageHead)));
            ++badMessages;
            return;
        }

        // A parser writes every field it reads, but not the reserved bytes
        // between them: start from a zeroed record.
        tag_MsgTimeSetting time;
        std::memset(&time, 0, sizeof time);
        if (AdaptParaJson(PARA_TIME_SETTING, root, &time) == 0) {
            // Texts fill their field and then have no terminator: print at
            // most the field's size.
            std::printf("TIMEP: zone %.*s, offset %u min, daylight saving %s from month %u, week %u, weekday %u\n",
                        int(sizeof time.TIMEZ), time.TIMEZ, time.TIMEOFFSET, time.SW ? "on" : "off", time.SMON,
                        time.SWEEK_SWIND >> 4, time.SWEEK_SWIND & 0x0F);
        } else {
            std::printf("TIMEP: not in this message (record unchanged)\n");
        }

        tag_MsgVoltageProtectSetting voltage;
        std::memset(&voltage, 0, sizeof voltage);
        if (AdaptParaJson(PARA_VOLTAGE_PROTECT, root, &voltage) == 0)
            std::printf("VPP: protection %s, low %u.%02u V, high %u.%02u V\n", voltage.VPS ? "on" : "off",
                        voltage.LV / 100, voltage.LV % 100, voltage.UV / 100, voltage.UV % 100);
        else
            std::printf("VPP: not in this message (record unchanged)\n");
        std::fflush(stdout);
    }

    int badMessages = 0;
};

// A message as the bus delivers it: the header, whose length word holds the
// body's length, then the body.
std::string Message(const std::string& body)
{
    Common::SMessageHead head;
    std::memset(&head, 0, sizeof head);
    head.messageId = kParameterEvent;
    head.length = static_cast<unsigned int>(body.size());
    return std::string(reinterpret_cast<const char*>(&head), sizeof head) + body;
}

} // namespace

int main(int argc, char** argv)
{
    long waitSeconds = 10;
    const char* document = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--wait") == 0 && i + 1 < argc) {
            char* end = nullptr;
            waitSeconds = std::strtol(argv[++i], &end, 10);
            if (*argv[i] == '\0' || *end != '\0' || waitSeconds < 0 || waitSeconds > 86400) {
                std::fprintf(stderr, "guide_example: --wait takes 0 to 86400 seconds\n");
                return 2;
            }
        } else if (document == nullptr && argv[i][0] != '-') {
            document = argv[i];
        } else {
            std::fprintf(stderr, "usage: guide_example [--wait SECONDS] [DOCUMENT]\n");
            return 2;
        }
    }

    // The watchdog record carries 32 bytes of name, copied as they are: pass
    // a buffer of 32 bytes. dogParam 0 leaves the timeout to the bus.
    char dogName[32] = "guide-example";
    CMsgClientManage bus(dogName, 0); // ends the process with status 1 when there is no bus
    Settings settings;
    // The handler is `object` and a member function (const char*, int).
    bus.MSGEventRegister(kModule, kParameterEvent, &settings, &Settings::OnParameters);

    if (document) {
        std::ifstream in(document, std::ios::binary);
        std::ostringstream body;
        if (!in || !(body << in.rdbuf())) {
            std::fprintf(stderr, "guide_example: cannot read %s\n", document);
            return 2;
        }
        const std::string message = Message(body.str());
        settings.OnParameters(message.data(), static_cast<int>(message.size()));
    }

    // Messages are delivered inside MSGWaitForEvent, on this thread. The
    // watchdog is fed on every round; the client sends a feed at most once
    // every ten seconds of the clock given.
    const long long end = GetSystemMilliSecond() + waitSeconds * 1000;
    do {
        bus.MSGWaitForEvent(500);
        bus.MSGFeedWatchDog(GetSystemMilliSecond());
    } while (GetSystemMilliSecond() < end);

    bus.MSGEventUnRegister(kModule, kParameterEvent);
    return settings.badMessages ? 1 : 0;
}
