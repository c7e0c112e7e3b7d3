// A small recorder process on the development bus: it registers a handler
// for parameter messages, feeds its watchdog, and for every parameter message
// adapts each section present into its record and prints the record as
// `mdvr-param show` does. It answers each message with the list of sections
// it adapted.
//
//   mdvr-recorder [--name NAME] [--event ID] [--count N] [--help] [--version]
//
// --event: the parameter message id (default 0x101; decimal or 0x-hex);
// --count: stop after N parameter messages (default: run until SIGINT or
// SIGTERM). The bus is the one MDVR_BUS names (docs/bus.md). Exit status 0, 1
// when no bus answers, 2 for a usage error or an MDVR_BUS that names no bus.
#include "CommonParaAdapter.h"
#include "CommonUtils.h"
#include "MsgClientManage.h"
#include "ParaShow.h"
#include "ParaTypes.h"
#include "ToolArguments.h"
#include "ToolkitHost.h"

#include <json/writer.h>

#include <algorithm>
#include <climits>
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
            // The bus checked that the header's body length plus 16 is `length`.
            std::printf("recorder: a parameter message that is not JSON (%d bytes)\n",
                        length - static_cast<int>(sizeof(Common::SMessageHead)));
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
    CLI::App app{"An example recorder process on the message bus. It adapts every section of each parameter\n"
                 "message into its record, prints the records and answers with the sections it read.",
                 "mdvr-recorder"};
    app.set_version_flag("--version", std::string("mdvr-recorder (BSCommonLibrary) ") + BSCOMMON_VERSION);
    std::string name = "mdvr-recorder", eventText = "0x101", countText = "0";
    app.add_option("--name", name, "the name of its watchdog, 1 to 31 bytes (default mdvr-recorder)")
        ->type_name("NAME")
        ->check([](const std::string& n) { return n.empty() || n.size() > 31 ? "give a name of 1 to 31 bytes" : ""; });
    app.add_option("--event", eventText, "the message id of parameter messages, 1 to 0x7FFF (default 0x101)")
        ->type_name("ID");
    app.add_option("--count", countText, "stop after N parameter messages (default 0: run until SIGINT or SIGTERM)")
        ->type_name("N");
    app.footer("Exit status: 0 success, 1 no bus answered when the bus client was created, 2 a usage error\n"
               "(MDVR_BUS neither a port nor an endpoint included).");
    if (const int status = ParseArguments(app, argc, argv); status >= 0)
        return status;
    long long event = 0, count = 0;
    if (!ParseNumber(eventText, 1, 0x7FFF, event)) {
        std::fprintf(stderr, "mdvr-recorder: --event %s: give a message id from 1 to 0x7FFF\n", eventText.c_str());
        return 2;
    }
    if (!ParseNumber(countText, 0, INT_MAX, count)) {
        std::fprintf(stderr, "mdvr-recorder: --count %s: give a count from 0\n", countText.c_str());
        return 2;
    }
    std::string error;
    if (ToolkitHost::BusEndpoint("127.0.0.1", 0, error).empty()) { // the bus client would end the process
        std::fprintf(stderr, "mdvr-recorder: %s\n", error.c_str());
        return std::getenv(ToolkitHost::kBusEnvironment) ? 2 : 1;
    }
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);

    char dogName[32] = {}; // the watchdog record carries 32 bytes of name
    std::strncpy(dogName, name.c_str(), sizeof dogName - 1);
    CMsgClientManage bus(dogName, 0); // dogParam 0: the bus's default timeout
    Recorder recorder(bus);
    bus.MSGEventRegister(kModule, static_cast<int>(event), &recorder, &Recorder::OnParameters);
    std::printf("recorder: listening for parameter messages 0x%llx\n", event);
    std::fflush(stdout);

    while (!g_stop && (count == 0 || recorder.handled < count)) {
        bus.MSGWaitForEvent(1000);
        bus.MSGFeedWatchDog(GetSystemMilliSecond()); // sends at most once every ten seconds
    }
    return 0;
}
