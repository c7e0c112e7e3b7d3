// A small recorder process on the development bus: it registers a handler
// for parameter messages, feeds its watchdog, and for every parameter message
// adapts each section present into its record and prints the record as
// `mdvr-param show` does. It answers each message with the list of sections
// it adapted.
//
//   mdvr-recorder [--name NAME] [--event ID] [--count N] [--help] [--version]
//
// --event: the parameter message id (default 0x101); --count: stop after N
// parameter messages (default: run until SIGINT or SIGTERM). The bus is the
// one MDVR_BUS names (docs/bus.md). Exit status 0, 1 when no bus answers, 2
// for a usage error.
#include "CommonParaAdapter.h"
#include "CommonUtils.h"
#include "MsgClientManage.h"
#include "ParaShow.h"
#include "ParaTypes.h"

#include <json/writer.h>

#include <algorithm>
#include <cerrno>
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

const char kUsage[] = "Usage: mdvr-recorder [--name NAME] [--event ID] [--count N]\n";

const char kHelp[] =
    "mdvr-recorder: an example recorder process on the message bus. It adapts every section of each\n"
    "parameter message into its record, prints the records and answers with the sections it read.\n"
    "\n"
    "Options:\n"
    "  --name NAME   the name of its watchdog (at most 31 bytes; default mdvr-recorder)\n"
    "  --event ID    the message id of parameter messages, 1 to 0x7FFF (default 0x101)\n"
    "  --count N     stop after N parameter messages (default 0: run until SIGINT or SIGTERM)\n"
    "  --help        print this help and exit\n"
    "  --version     print the version and exit\n"
    "\n"
    "Exit status: 0 success, 1 no bus answered when the bus client was created, 2 a usage error.\n";

// A number of C syntax (0x101, 257) that is all of `text`.
bool Number(const char* text, long& value)
{
    char* end = nullptr;
    errno = 0;
    value = std::strtol(text, &end, 0);
    return *text != '\0' && *end == '\0' && errno == 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string name = "mdvr-recorder";
    long event = 0x101, count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--help") {
            std::printf("%s%s", kUsage, kHelp);
            return 0;
        }
        if (option == "--version") {
            std::printf("mdvr-recorder %s\n", BSCOMMON_VERSION);
            return 0;
        }
        const bool known = option == "--name" || option == "--event" || option == "--count";
        if (!known || i + 1 == argc) {
            std::fprintf(stderr, "mdvr-recorder: %s %s\n%s", known ? "a value is missing after" : "unknown option",
                         option.c_str(), kUsage);
            return 2;
        }
        const char* value = argv[++i];
        const bool ok = option == "--name"    ? (name = value, !name.empty() && name.size() < 32)
                        : option == "--event" ? Number(value, event) && event > 0 && event <= 0x7FFF
                                              : Number(value, count) && count >= 0 && count <= INT_MAX;
        if (!ok) {
            const char* want = option == "--name"    ? "a name of 1 to 31 bytes"
                               : option == "--event" ? "a message id from 1 to 0x7FFF"
                                                     : "a count from 0";
            std::fprintf(stderr, "mdvr-recorder: %s %s: give %s\n%s", option.c_str(), value, want, kUsage);
            return 2;
        }
    }
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);

    char dogName[32] = {}; // the watchdog record carries 32 bytes of name
    std::strncpy(dogName, name.c_str(), sizeof dogName - 1);
    CMsgClientManage bus(dogName, 0); // dogParam 0: the bus's default timeout
    Recorder recorder(bus);
    bus.MSGEventRegister(kModule, static_cast<int>(event), &recorder, &Recorder::OnParameters);
    std::printf("recorder: listening for parameter messages 0x%lx\n", event);
    std::fflush(stdout);

    while (!g_stop && (count == 0 || recorder.handled < count)) {
        bus.MSGWaitForEvent(1000);
        bus.MSGFeedWatchDog(GetSystemMilliSecond()); // sends at most once every ten seconds
    }
    return 0;
}
