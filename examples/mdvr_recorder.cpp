// A small recorder process on the development bus: it registers a handler
// for parameter messages, feeds its watchdog, and for every parameter message
// adapts each section present into its record and prints the record as
// `mdvr-param show` does. It answers each message with the list of sections
// it adapted.
//
//   mdvr-recorder [--name NAME] [--event ID] [--count N]
//
// --event: the parameter message id (default 0x101); --count: stop after N
// parameter messages (default: run until SIGINT or SIGTERM). The bus is the
// one MDVR_BUS names (docs/bus.md).
#include "CommonParaAdapter.h"
#include "CommonUtils.h"
#include "MsgClientManage.h"
#include "ParaShow.h"
#include "ParaTypes.h"

#include <json/writer.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

const int kModule = 1;

// Adapts one section into a zeroed record and prints it as `mdvr-param show` does.
void Adapt(const para::Type& t, const Json::Value& doc)
{
    const para::Record& record = *t.parser.record;
    std::vector<unsigned char> r(record.size);
    const int result = AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, r.data());
    para::ShowRecord(stdout, t.key, t.type, record.name, record.size, t.parser.name, result,
                     std::string(r.begin(), r.end()), para::Layout(record));
}

class Recorder {
public:
    explicit Recorder(CMsgClientManage& bus) : bus_(bus) {}

    // Called by the bus client inside MSGWaitForEvent, on the main thread.
    void OnParameters(const char* message, int length)
    {
        Json::Value doc;
        if (!ParseJsonMessage(message, length, doc)) { // 1 when parsed
            std::printf("recorder: a parameter message that is not JSON (%d bytes)\n", length);
            std::fflush(stdout);
            return;
        }
        Json::Value sections(Json::arrayValue);
        for (const para::Type& t : para::kTypes) {
            if (para::Section(doc, t.key).isNull())
                continue;
            Adapt(t, doc);
            sections.append(t.key);
        }
        std::fflush(stdout);

        Json::Value answer;
        answer["RESULT"] = 0;
        answer["SECTIONS"] = sections;
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        const std::string text = Json::writeString(writer, answer);
        Common::SMessageHead head;
        std::memcpy(&head, message, sizeof head);
        bus_.MSGResponseMessage(&head, text.data(), static_cast<int>(text.size()));
        ++handled;
    }

    int handled = 0;

private:
    CMsgClientManage& bus_;
};

} // namespace

int main(int argc, char** argv)
{
    std::string name = "mdvr-recorder";
    int event = 0x101;
    int count = 0;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--name")
            name = argv[i + 1];
        else if (option == "--event")
            event = static_cast<int>(std::strtol(argv[i + 1], nullptr, 0));
        else if (option == "--count")
            count = std::atoi(argv[i + 1]);
    }
    if (argc % 2 == 0 || event <= 0 || event > 0x7FFF || count < 0) {
        std::fprintf(stderr, "usage: mdvr-recorder [--name NAME] [--event ID] [--count N]\n");
        return 2;
    }
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);

    char dogName[32] = {}; // the watchdog record carries 32 bytes of name
    std::strncpy(dogName, name.c_str(), sizeof dogName - 1);
    CMsgClientManage bus(dogName, 0); // dogParam 0: the bus's default timeout
    Recorder recorder(bus);
    bus.MSGEventRegister(kModule, event, &recorder, &Recorder::OnParameters);
    std::printf("recorder: listening for parameter messages 0x%x\n", event);
    std::fflush(stdout);

    while (!g_stop && (count == 0 || recorder.handled < count)) {
        bus.MSGWaitForEvent(1000);
        bus.MSGFeedWatchDog(GetSystemMilliSecond()); // sends at most once every ten seconds
    }
    return 0;
}
