// mdvr-bus: the command-line client of the development bus (docs/bus.md).
//
//   mdvr-bus send EVENT [BODY] [--file F] [--dest D] [--session S] [--module M] [--port N]
//   mdvr-bus call EVENT [BODY] [--file F] [--dest D] [--session S] [--module M] [--timeout MS] [--port N]
//   mdvr-bus listen EVENT... [--count N] [--timeout MS] [--json] [--port N]
//   mdvr-bus dogs [--json] [--port N]
//   mdvr-bus list [--json] [--port N]
//   mdvr-bus monitor [EVENT...] [--count N] [--timeout MS] [--json] [--port N]
//   mdvr-bus capture FILE [EVENT...] [--count N] [--timeout MS] [--port N]
//   mdvr-bus replay FILE [--speed X] [--port N]
//
// BODY "-" reads standard input. Numbers may be decimal or 0x-hexadecimal.
// Exit status: 0 success, 1 no response (call), nothing heard (listen,
// monitor or capture with a timeout) or a bus that cannot be reached or
// fails, 2 usage or input error; errors are one line on standard error.
#include "BusCapture.h"
#include "BusProtocol.h"
#include "ToolArguments.h"
#include "ToolText.h"
#include "ToolkitHost.h"

#include <json/reader.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const int kUsage = 2;   // exit status: usage or input error
const int kFailure = 1; // exit status: the bus failed, or nothing came

struct Failure : std::runtime_error {
    Failure(const std::string& text, int status) : std::runtime_error(text), status(status) {}
    int status;
};

volatile std::sig_atomic_t g_stop = 0;
void OnSignal(int) { g_stop = 1; }

long long Number(const std::string& text, long long low, long long high, const char* what)
{
    long long value = 0;
    if (!ParseNumber(text, low, high, value))
        throw Failure(std::string("bad ") + what + ": " + text, kUsage);
    return value;
}

std::string ReadBody(const std::string& argument, const std::string& file)
{
    if (!file.empty() && !argument.empty())
        throw Failure("give the body as an argument or with --file, not both", kUsage);
    if (file.empty() && argument != "-")
        return argument;
    std::ostringstream text;
    struct stat st;
    if (file.empty() || file == "-") {
        if (fstat(0, &st) == 0 && S_ISDIR(st.st_mode))
            throw Failure("cannot read standard input: it is a directory", kUsage);
        text << std::cin.rdbuf();
        if (std::cin.bad())
            throw Failure(std::string("cannot read standard input: ") + std::strerror(errno), kUsage);
        return text.str();
    }
    if (stat(file.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        throw Failure("cannot read " + file + ": it is a directory", kUsage);
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw Failure("cannot read " + file + ": " + std::strerror(errno), kUsage);
    text << in.rdbuf();
    if (in.bad())
        throw Failure("cannot read " + file + ": " + std::strerror(errno), kUsage);
    return text.str();
}

bool ParseJson(const char* body, size_t size, Json::Value& value)
{
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    return size > 0 && reader->parse(body, body + size, &value, &errors) && (value.isObject() || value.isArray());
}

bool Printable(const std::string& text)
{
    for (unsigned char c : text)
        if ((c < 0x20 && c != '\n' && c != '\t' && c != '\r') || c == 0x7F)
            return false;
    return true;
}

// The body as a person reads it: JSON pretty-printed, text as it is, other
// bytes as a hex dump.
std::string Render(const std::string& body)
{
    Json::Value value;
    if (ParseJson(body.data(), body.size(), value))
        return JsonText(value, "  ") + "\n";
    if (Printable(body))
        return !body.empty() && body.back() != '\n' ? body + "\n" : body;
    return HexDump(body);
}

using BusProtocol::Routing;

// A message as one JSON object: the header's fields, how it was routed (for
// monitor), and the body as "json" (an object or array), "text", or "hex".
std::string MessageJson(const std::string& message, const Routing* routing)
{
    const Common::SMessageHead head = BusWire::ReadHead(message.data());
    const std::string body = message.substr(BusWire::kHeadSize);
    Json::Value out;
    out["event"] = head.messageId;
    out["response"] = BusProtocol::IsResponse(head);
    out["source"] = head.sourceId;
    out["session"] = head.session;
    out["client"] = head.flags;
    out["length"] = head.length & BusWire::kBodyMax;
    if (routing) {
        out["timeUs"] = Json::Int64(routing->timeUs);
        out["asked"] = routing->asked;
        out["to"] = Json::Value(Json::arrayValue);
        for (unsigned short id : routing->targets)
            out["to"].append(id);
        out["missed"] = routing->missed;
    }
    Json::Value value;
    if (ParseJson(body.data(), body.size(), value)) {
        out["json"] = value;
    } else if (Printable(body)) {
        out["text"] = body;
    } else {
        out["hex"] = HexText(body.data(), body.size(), true);
    }
    return JsonText(out);
}

// Local time of day to the microsecond.
std::string TimeOfDay(long long timeUs)
{
    const time_t seconds = static_cast<time_t>(timeUs / 1000000);
    struct tm local;
    char text[32] = "";
    if (localtime_r(&seconds, &local))
        std::snprintf(text, sizeof text, "%02d:%02d:%02d.%06lld", local.tm_hour, local.tm_min, local.tm_sec,
                      timeUs % 1000000);
    return text;
}

void Print(const std::string& message, bool json, const Routing* routing = nullptr)
{
    if (routing && routing->missed)
        std::printf(json ? "{\"missed\":%u}\n" : "(%u messages not shown: this monitor fell behind)\n",
                    routing->missed);
    if (json) {
        std::printf("%s\n", MessageJson(message, routing).c_str());
    } else {
        const Common::SMessageHead head = BusWire::ReadHead(message.data());
        std::string client = std::to_string(head.flags);
        if (routing) {
            std::string to;
            for (unsigned short id : routing->targets)
                to += (to.empty() ? "" : ",") + std::to_string(id);
            client += " -> " + (to.empty() ? std::string("nobody") : to);
            if (routing->asked)
                client += " (asked " + std::to_string(routing->asked) + ")";
            std::printf("%s  ", TimeOfDay(routing->timeUs).c_str());
        }
        std::printf("event 0x%x%s  source %d  session %d  client %s  length %u\n", head.messageId,
                    BusProtocol::IsResponse(head) ? " (response)" : "", head.sourceId, head.session, client.c_str(),
                    head.length & BusWire::kBodyMax);
        std::fputs(Render(message.substr(BusWire::kHeadSize)).c_str(), stdout);
    }
    std::fflush(stdout);
}

// The client of the tool: error lines of the support library become the
// tool's one line of error.
class Bus {
public:
    explicit Bus(int port)
    {
        std::string error;
        if (ToolkitHost::BusEndpoint("127.0.0.1", static_cast<short>(port), error).empty())
            throw Failure(error, std::getenv(ToolkitHost::kBusEnvironment) ? kUsage : kFailure);
        ToolkitHost::SetLogSink(&Bus::Keep, this);
        handle_ = Common::K7X_MSGCreateMessageClient(BusWire::kClientType, "127.0.0.1", static_cast<short>(port));
        if (handle_ == nullptr)
            throw Failure(LastError("cannot reach the bus"), kFailure);
    }
    ~Bus()
    {
        if (handle_)
            Common::K7X_MSGDestroyMessageClient(handle_);
        ToolkitHost::SetLogSink(nullptr, nullptr);
    }

    void Listen(int event)
    {
        Common::K7X_MSGEventRegister(handle_, event, Common::K7X_Bind(this, &Bus::OnMessage));
    }
    void Monitor(const std::vector<int>& events)
    {
        if (!ToolkitHost::MonitorBus(handle_, events, &Bus::OnRouted, this))
            throw Failure(LastError("cannot monitor the bus"), kFailure);
    }
    void Send(int event, int destination, int session, const std::string& body, int module)
    {
        if (Common::K7X_MSGSendMessage(handle_, destination, event, session, body.data(),
                                       static_cast<int>(body.size()), module) != 0)
            throw Failure(LastError("sending failed"), kFailure);
    }
    // Waits until `done` says so, up to `timeout` ms (negative: without end)
    // or a signal. False on timeout or signal.
    template <class Done> bool WaitUntil(int timeout, Done done)
    {
        const long long deadline = BusProtocol::Now() + timeout;
        while (!done()) {
            int left = 200; // a signal is seen at least this often
            if (timeout >= 0 && (left = static_cast<int>(std::min(200LL, deadline - BusProtocol::Now()))) <= 0)
                return false;
            if (g_stop)
                return false;
            if (Common::K7X_MSGWaitForEvent(handle_, left) < 0)
                throw Failure(LastError("waiting failed"), kFailure);
        }
        return true;
    }
    Json::Value Query(ToolkitHost::BusList what)
    {
        std::string text;
        if (!ToolkitHost::QueryBus(handle_, what, 2000, text))
            throw Failure(what == ToolkitHost::BusList::kDogs ? "the bus did not list its watchdogs"
                                                              : "the bus did not list its clients",
                          kFailure);
        Json::Value list;
        std::istringstream(text) >> list;
        return list;
    }

    std::vector<std::string> received; // whole messages, header included
    std::vector<Routing> routings;     // of each message received as a monitor

private:
    void OnMessage(const char* message, int length) { received.emplace_back(message, length); }
    static void OnRouted(const char* record, size_t size, const char* message, size_t length, void* self)
    {
        Routing routing;
        if (!BusProtocol::ParseRoutedRecord(record, size, routing) || length < BusWire::kHeadSize)
            return;
        Bus* bus = static_cast<Bus*>(self);
        bus->received.emplace_back(message, length);
        bus->routings.push_back(std::move(routing));
    }
    static void Keep(const ToolkitHost::LogLine& line, void* self)
    {
        if (line.level == 0)
            static_cast<Bus*>(self)->error_ = line.message;
    }
    std::string LastError(const std::string& otherwise) const
    {
        std::string text = error_.empty() ? otherwise : error_;
        if (text.compare(0, 5, "bus: ") == 0)
            text.erase(0, 5);
        while (!text.empty() && text.back() == '\n')
            text.pop_back();
        return text;
    }

    Common::K7X_MSG_HANDLE handle_ = nullptr;
    std::string error_;
};

const char* const kExitStatus = "Exit status:\n"
                                "  0  success\n"
                                "  1  no response (call), nothing heard (listen, monitor or capture with\n"
                                "     --timeout), or the bus cannot be reached or fails\n"
                                "  2  usage or input error, MDVR_BUS neither a port nor an endpoint included\n"
                                "     (one line on standard error)";

std::vector<int> Events(const std::vector<std::string>& texts)
{
    std::vector<int> ids;
    for (const std::string& e : texts)
        ids.push_back(static_cast<int>(Number(e, 0, 0xFFFF, "event")));
    return ids;
}

// Takes what the bus delivers until `count` messages (0: without end), the
// timeout (negative: without end) or a signal; hands each to `take`. The
// exit status: 1 when a timeout passed and nothing came.
template <class Take> int Collect(Bus& bus, int count, int timeout, Take take)
{
    int taken = 0;
    auto enough = [&] {
        for (size_t i = 0; i < bus.received.size(); ++i)
            if (count == 0 || taken < count) {
                take(i);
                ++taken;
            }
        bus.received.clear();
        bus.routings.clear();
        return count > 0 && taken >= count;
    };
    if (!bus.WaitUntil(timeout, enough) && taken == 0 && !g_stop) {
        std::fprintf(stderr, "mdvr-bus: nothing came within %d ms\n", timeout);
        return kFailure;
    }
    return 0;
}

void Table(const Json::Value& list, bool json, const char* heading,
           const std::function<void(const Json::Value&)>& row)
{
    if (!json)
        std::printf("%s\n", heading);
    for (const Json::Value& item : list) {
        if (json)
            std::printf("%s\n", JsonText(item).c_str());
        else
            row(item);
    }
}

std::string Joined(const Json::Value& array, bool hex)
{
    std::string text;
    char cell[16];
    for (const Json::Value& item : array) {
        if (hex)
            std::snprintf(cell, sizeof cell, "0x%x", item.asUInt());
        text += (text.empty() ? "" : ",") + (hex ? std::string(cell) : item.asString());
    }
    return text.empty() ? "-" : text;
}

// Sends a capture again with its own pace, `speed` times as fast: requests
// and notifications to the destination they asked for; responses are
// skipped, since they answer requests of the captured session.
int Replay(Bus& bus, const std::vector<buscapture::Routed>& messages, double speed)
{
    const long long start = BusProtocol::Now();
    size_t sent = 0, responses = 0;
    for (const buscapture::Routed& m : messages) {
        const Common::SMessageHead head = BusWire::ReadHead(m.message.data());
        if (BusProtocol::IsResponse(head)) {
            ++responses;
            continue;
        }
        const long long due = start + static_cast<long long>((m.timeUs - messages.front().timeUs) / 1000 / speed);
        bus.WaitUntil(static_cast<int>(std::max(0LL, due - BusProtocol::Now())), [] { return false; });
        if (g_stop)
            break;
        bus.Send(head.messageId, m.asked, head.session, m.message.substr(BusWire::kHeadSize), head.sourceId);
        ++sent;
    }
    std::printf("replayed %zu of %zu messages", sent, messages.size());
    if (responses)
        std::printf(" (%zu responses skipped: they answer requests of the captured session)", responses);
    std::printf("\n");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"The command-line client of the development message bus: sends messages, calls for a\n"
                 "response, listens to events, lists the clients and the watchdogs, monitors, captures\n"
                 "and replays what the bus routes. It finds the bus as every client does:\n"
                 "--port, else $MDVR_BUS (a port or an endpoint such as ipc:///tmp/b), else the user's own\n"
                 "bus ($XDG_RUNTIME_DIR/mdvr-bus, else /tmp/mdvr-bus-UID/bus). Numbers are decimal or\n"
                 "0x-hexadecimal.",
                 "mdvr-bus"};
    app.set_version_flag("--version", std::string("mdvr-bus (BSCommonLibrary) ") + BSCOMMON_VERSION);
    app.require_subcommand(0, 1); // an unknown word is named as such, not taken for a missing subcommand
    app.footer(kExitStatus);
    int port = 0;
    // Before the subcommand or after it.
    auto addPort = [&](CLI::App* command) {
        command->add_option("-p,--port", port, "the bus on TCP 127.0.0.1:N")
            ->type_name("N")
            ->check(CLI::Range(0, 65535).description(""));
        if (command != &app)
            command->footer(kExitStatus);
    };
    addPort(&app);

    std::string event, body, file, destination = "0", session, module = "0", captureFile;
    int timeout = 2000;
    std::vector<std::string> events;
    int count = 0;
    int waitTimeout = -1;
    bool json = false;
    double speed = 1;

    auto addMessage = [&](CLI::App* command) {
        command->add_option("event", event, "message id (event), 0..0x7FFF")->type_name("EVENT")->required();
        command->add_option("body", body, "message body; - reads standard input")->type_name("BODY");
        command->add_option("-f,--file", file, "read the body from a file")->type_name("FILE");
        command->add_option("-d,--dest", destination, "destination client id, 0 for every subscriber (default 0)")
            ->type_name("CLIENT");
        command->add_option("-s,--session", session, "session number (default: the process id)")->type_name("N");
        command->add_option("-m,--module", module, "sending module id, the source id of the response (default 0)")
            ->type_name("ID");
        addPort(command);
    };
    // listen, monitor and capture: how long they take messages.
    auto addUntil = [&](CLI::App* command) {
        command->add_option("-n,--count", count, "stop after this many messages (default: without end)")
            ->type_name("N")
            ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
        command->add_option("-t,--timeout", waitTimeout,
                            "stop after this many milliseconds (default: without end; exit status 1 if none came)")
            ->type_name("MS")
            ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
        addPort(command);
    };
    CLI::App* send = app.add_subcommand("send", "send a message");
    addMessage(send);
    CLI::App* call = app.add_subcommand("call", "send a message and print its response");
    addMessage(call);
    call->add_option("-t,--timeout", timeout, "milliseconds to wait for the response (default 2000)")
        ->type_name("MS")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
    CLI::App* listen = app.add_subcommand("listen", "print the messages of the given events");
    listen->add_option("events", events, "message ids (events), 0..0xFFFF")->type_name("EVENT...")->required();
    listen->add_flag("--json", json, "one JSON object per message and line");
    addUntil(listen);
    CLI::App* dogs = app.add_subcommand("dogs", "list the watchdogs");
    dogs->add_flag("--json", json, "one JSON object per watchdog and line");
    addPort(dogs);
    CLI::App* list = app.add_subcommand("list", "list the clients of the bus");
    list->add_flag("--json", json, "one JSON object per client and line");
    addPort(list);
    CLI::App* monitor = app.add_subcommand(
        "monitor", "print every message the bus routes (of the given events, else all), with its receivers");
    monitor->add_option("events", events, "message ids (events), 0..0xFFFF")->type_name("EVENT...");
    monitor->add_flag("--json", json, "one JSON object per message and line");
    addUntil(monitor);
    CLI::App* capture = app.add_subcommand(
        "capture", "write every message the bus routes (of the given events, else all) to a pcapng file");
    capture->add_option("file", captureFile, "the capture file, - for standard output")->type_name("FILE")->required();
    capture->add_option("events", events, "message ids (events), 0..0xFFFF")->type_name("EVENT...");
    addUntil(capture);
    CLI::App* replay = app.add_subcommand("replay", "send the messages of a capture file again, at their pace");
    replay->add_option("file", captureFile, "the capture file (pcapng, from mdvr-bus capture)")
        ->type_name("FILE")
        ->required();
    replay->add_option("--speed", speed, "this many times as fast (default 1)")
        ->type_name("X")
        ->check(CLI::PositiveNumber);
    addPort(replay);

    if (const int status = ParseArguments(app, argc, argv); status >= 0)
        return status;
    if (app.get_subcommands().empty()) {
        std::fprintf(stderr, "mdvr-bus: a subcommand is required: send, call, listen, dogs, list, monitor, capture or "
                             "replay (--help)\n");
        return kUsage;
    }

    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    namespace K = BusProtocol::Keys;
    try {
        if (*send || *call) {
            const int id = static_cast<int>(Number(event, 0, 0xFFFF, "event"));
            if (id & BusWire::kResponseBit)
                throw Failure("event " + event + " is a response id", kUsage);
            const int to = static_cast<int>(Number(destination, 0, 0xFFFF, "destination"));
            const int from = static_cast<int>(Number(module, INT32_MIN, INT32_MAX, "module"));
            const int number = session.empty() ? static_cast<int>(getpid())
                                               : static_cast<int>(Number(session, INT32_MIN, INT32_MAX, "session"));
            const std::string text = ReadBody(body, file);
            if (text.size() > BusWire::kBodyMax)
                throw Failure("body of " + std::to_string(text.size()) + " bytes, more than the bus's " +
                                  std::to_string(BusWire::kBodyMax), kUsage);
            Bus bus(port);
            if (*call)
                bus.Listen(id | static_cast<int>(BusWire::kResponseBit));
            bus.Send(id, to, number, text, from);
            if (*call) {
                auto answered = [&] {
                    for (const std::string& m : bus.received)
                        if (BusWire::ReadHead(m.data()).session == number) {
                            Print(m, false);
                            return true;
                        }
                    bus.received.clear();
                    return false;
                };
                if (!bus.WaitUntil(timeout, answered)) {
                    std::fprintf(stderr, "mdvr-bus: no response to event %s within %d ms\n", event.c_str(), timeout);
                    return kFailure;
                }
            }
        } else if (*listen) {
            const std::vector<int> ids = Events(events);
            Bus bus(port);
            for (int id : ids)
                bus.Listen(id);
            return Collect(bus, count, waitTimeout, [&](size_t i) { Print(bus.received[i], json); });
        } else if (*monitor) {
            const std::vector<int> ids = Events(events);
            Bus bus(port);
            bus.Monitor(ids);
            return Collect(bus, count, waitTimeout,
                           [&](size_t i) { Print(bus.received[i], json, &bus.routings[i]); });
        } else if (*capture) {
            const std::vector<int> ids = Events(events);
            std::FILE* out = captureFile == "-" ? stdout : std::fopen(captureFile.c_str(), "wb");
            if (out == nullptr)
                throw Failure("cannot write " + captureFile + ": " + std::strerror(errno), kUsage);
            std::unique_ptr<std::FILE, int (*)(std::FILE*)> closing(out == stdout ? nullptr : out, &std::fclose);
            buscapture::Writer writer(out);
            Bus bus(port);
            bus.Monitor(ids);
            if (!writer.Start() || std::fflush(out) != 0)
                throw Failure("cannot write " + captureFile + ": " + std::strerror(errno), kFailure);
            size_t written = 0, missed = 0;
            const int status = Collect(bus, count, waitTimeout, [&](size_t i) {
                buscapture::Routed routed;
                static_cast<Routing&>(routed) = bus.routings[i];
                routed.message = bus.received[i];
                missed += routed.missed;
                if (!writer.Write(routed) || std::fflush(out) != 0) // a capture ended any time is whole
                    throw Failure("cannot write " + captureFile + ": " + std::strerror(errno), kFailure);
                ++written;
            });
            std::fprintf(stderr, "mdvr-bus: %zu messages captured", written);
            if (missed)
                std::fprintf(stderr, ", %zu not (this capture fell behind)", missed);
            std::fprintf(stderr, "\n");
            return status;
        } else if (*replay) {
            std::FILE* in = std::fopen(captureFile.c_str(), "rb");
            if (in == nullptr)
                throw Failure("cannot read " + captureFile + ": " + std::strerror(errno), kUsage);
            std::vector<buscapture::Routed> messages;
            std::string error;
            const bool read = buscapture::Read(in, messages, error);
            std::fclose(in);
            if (!read)
                throw Failure(captureFile + ": " + error, kUsage);
            Bus bus(port);
            return Replay(bus, messages, speed);
        } else if (*dogs) {
            Bus bus(port);
            char heading[128];
            std::snprintf(heading, sizeof heading, "%-32s %8s %6s %10s %12s  %s", "NAME", "PID", "CLIENT", "TIMEOUT",
                          "SINCE FEED", "STATE");
            Table(bus.Query(ToolkitHost::BusList::kDogs), json, heading, [](const Json::Value& d) {
                std::printf("%-32s %8d %6d %8d ms %9lld ms  %s\n", d[K::kName].asCString(), d[K::kPid].asInt(),
                            d[K::kClient].asInt(), d[K::kTimeoutMs].asInt(),
                            static_cast<long long>(d[K::kSinceFeedMs].asInt64()),
                            d[K::kLapsed].asBool() ? "LAPSED" : "fed");
            });
        } else if (*list) {
            Bus bus(port);
            char heading[128];
            std::snprintf(heading, sizeof heading, "%6s %8s %-16s %8s %10s  %-10s %s", "CLIENT", "PID", "NAME",
                          "QUEUED", "BYTES", "STATE", "EVENTS / WATCHDOGS");
            Table(bus.Query(ToolkitHost::BusList::kClients), json, heading, [](const Json::Value& c) {
                std::string state = c[K::kCongested].asBool() ? "congested" : c[K::kMonitor].asBool() ? "monitor" : "ok";
                std::printf("%6u %8d %-16s %8u %10llu  %-10s %s / %s", c[K::kId].asUInt(), c[K::kPid].asInt(),
                            c[K::kName].asCString(), c[K::kQueuedMessages].asUInt(),
                            static_cast<unsigned long long>(c[K::kQueuedBytes].asUInt64()), state.c_str(),
                            Joined(c[K::kEvents], true).c_str(), Joined(c[K::kDogs], false).c_str());
                if (c[K::kDropped].asUInt64())
                    std::printf("  (%llu dropped)", static_cast<unsigned long long>(c[K::kDropped].asUInt64()));
                std::printf("\n");
            });
        }
    } catch (const Failure& e) {
        std::fprintf(stderr, "mdvr-bus: %s\n", e.what());
        return e.status;
    }
    return 0;
}
