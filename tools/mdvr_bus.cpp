// mdvr-bus: the command-line client of the development bus (docs/bus.md).
//
//   mdvr-bus send EVENT [BODY] [--file F] [--dest D] [--session S] [--module M] [--port N]
//   mdvr-bus call EVENT [BODY] [--file F] [--dest D] [--session S] [--module M] [--timeout MS] [--port N]
//   mdvr-bus listen EVENT... [--count N] [--timeout MS] [--json] [--port N]
//   mdvr-bus dogs [--json] [--port N]
//
// BODY "-" reads standard input. Numbers may be decimal or 0x-hexadecimal.
// Exit status: 0 success, 1 no response (call), nothing heard (listen with a
// timeout) or a bus that cannot be reached or fails, 2 usage or input error;
// errors are one line on standard error.
#include "BusWire.h"
#include "ToolArguments.h"
#include "ToolkitHost.h"

#include <json/reader.h>
#include <json/writer.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
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

long long Number(const std::string& text, long long low, long long high, const char* what)
{
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || value < low || value > high)
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
    if (file.empty() || file == "-") {
        text << std::cin.rdbuf();
        return text.str();
    }
    struct stat st;
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

// Sixteen bytes a row: offset, the bytes in hexadecimal, then as characters
// ('.' for those that do not print).
std::string HexDump(const std::string& bytes)
{
    std::string out;
    char cell[32];
    for (size_t row = 0; row < bytes.size(); row += 16) {
        std::snprintf(cell, sizeof cell, "%06zx ", row);
        out += cell;
        std::string shown;
        for (size_t i = row; i < row + 16; ++i) {
            if (i < bytes.size()) {
                const unsigned char c = static_cast<unsigned char>(bytes[i]);
                std::snprintf(cell, sizeof cell, " %02x", c);
                out += cell;
                shown += (c >= 0x20 && c < 0x7F) ? static_cast<char>(c) : '.';
            } else {
                out += "   ";
            }
        }
        out += "  |" + shown + "|\n";
    }
    return out;
}

// The body as a person reads it: JSON pretty-printed, text as it is, other
// bytes as a hex dump.
std::string Render(const std::string& body)
{
    Json::Value value;
    if (ParseJson(body.data(), body.size(), value)) {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "  ";
        return Json::writeString(writer, value) + "\n";
    }
    if (Printable(body))
        return !body.empty() && body.back() != '\n' ? body + "\n" : body;
    return HexDump(body);
}

std::string OneLine(const Json::Value& value)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, value);
}

// A message as one JSON object: the header's fields, and the body as "json"
// (an object or array), "text", or "hex".
std::string MessageJson(const std::string& message)
{
    const Common::SMessageHead head = BusWire::ReadHead(message.data());
    const std::string body = message.substr(BusWire::kHeadSize);
    Json::Value out;
    out["event"] = head.messageId;
    out["response"] = (head.messageId & BusWire::kResponseBit) != 0;
    out["source"] = head.sourceId;
    out["session"] = head.session;
    out["client"] = head.flags;
    out["length"] = head.length & BusWire::kBodyMax;
    Json::Value value;
    if (ParseJson(body.data(), body.size(), value)) {
        out["json"] = value;
    } else if (Printable(body)) {
        out["text"] = body;
    } else {
        std::string hex;
        char cell[3];
        for (unsigned char c : body) {
            std::snprintf(cell, sizeof cell, "%02x", c);
            hex += cell;
        }
        out["hex"] = hex;
    }
    return OneLine(out);
}

void Print(const std::string& message, bool json)
{
    if (json) {
        std::printf("%s\n", MessageJson(message).c_str());
    } else {
        const Common::SMessageHead head = BusWire::ReadHead(message.data());
        std::printf("event 0x%x%s  source %d  session %d  client %u  length %u\n", head.messageId,
                    (head.messageId & BusWire::kResponseBit) ? " (response)" : "", head.sourceId, head.session,
                    head.flags, head.length & BusWire::kBodyMax);
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
    void Send(int event, int destination, int session, const std::string& body, int module)
    {
        if (Common::K7X_MSGSendMessage(handle_, destination, event, session, body.data(),
                                       static_cast<int>(body.size()), module) != 0)
            throw Failure(LastError("sending failed"), kFailure);
    }
    // Waits until `done` says so, up to `timeout` ms (negative: without end).
    // False on timeout.
    template <class Done> bool WaitUntil(int timeout, Done done)
    {
        const long long deadline = BusWire::Now() + timeout;
        while (!done()) {
            int left = -1;
            if (timeout >= 0 && (left = static_cast<int>(deadline - BusWire::Now())) <= 0)
                return false;
            if (Common::K7X_MSGWaitForEvent(handle_, left) < 0)
                throw Failure(LastError("waiting failed"), kFailure);
        }
        return true;
    }
    Json::Value Dogs()
    {
        std::string text;
        if (!ToolkitHost::QueryDogs(handle_, 2000, text))
            throw Failure("the bus did not list its watchdogs", kFailure);
        Json::Value list;
        std::istringstream(text) >> list;
        return list;
    }

    std::vector<std::string> received; // whole messages, header included

private:
    void OnMessage(const char* message, int length) { received.emplace_back(message, length); }
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
                                "  1  no response (call), nothing heard (listen with --timeout), or the bus\n"
                                "     cannot be reached or fails\n"
                                "  2  usage or input error, MDVR_BUS neither a port nor an endpoint included\n"
                                "     (one line on standard error)";

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"The command-line client of the development message bus: sends messages, calls for a\n"
                 "response, listens to events and lists the watchdogs. It finds the bus as every client does:\n"
                 "--port, else $MDVR_BUS (a port or an endpoint such as ipc:///tmp/b), else the user's own\n"
                 "bus ($XDG_RUNTIME_DIR/mdvr-bus, else /tmp/mdvr-bus-UID/bus). Numbers are decimal or\n"
                 "0x-hexadecimal.",
                 "mdvr-bus"};
    app.set_version_flag("--version", std::string("mdvr-bus (BSCommonLibrary) ") + BSCOMMON_VERSION);
    app.require_subcommand(1);
    app.footer(kExitStatus);
    int port = 0;
    // Before the subcommand or after it.
    auto addPort = [&](CLI::App* command) {
        command->add_option("-p,--port", port, "the bus on TCP 127.0.0.1:N")
            ->type_name("N")
            ->check(CLI::Range(0, 65535).description(""));
    };
    addPort(&app);

    std::string event, body, file, destination = "0", session, module = "0";
    int timeout = 2000;
    std::vector<std::string> events;
    int count = 0;
    int listenTimeout = -1;
    bool json = false;

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
        command->footer(kExitStatus);
    };
    CLI::App* send = app.add_subcommand("send", "send a message");
    addMessage(send);
    CLI::App* call = app.add_subcommand("call", "send a message and print its response");
    addMessage(call);
    call->add_option("-t,--timeout", timeout, "milliseconds to wait for the response (default 2000)")
        ->type_name("MS")
        ->check(CLI::NonNegativeNumber);
    CLI::App* listen = app.add_subcommand("listen", "print the messages of the given events");
    listen->add_option("events", events, "message ids (events), 0..0xFFFF")->type_name("EVENT...")->required();
    listen->add_option("-n,--count", count, "stop after this many messages (default: without end)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    listen->add_option("-t,--timeout", listenTimeout,
                       "stop after this many milliseconds (default: without end; exit status 1 if none came)")
        ->type_name("MS");
    listen->add_flag("--json", json, "one JSON object per message and line");
    addPort(listen);
    listen->footer(kExitStatus);
    CLI::App* dogs = app.add_subcommand("dogs", "list the watchdogs");
    dogs->add_flag("--json", json, "one JSON object per watchdog and line");
    addPort(dogs);
    dogs->footer(kExitStatus);

    if (const int status = ParseArguments(app, argc, argv); status >= 0)
        return status;

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
            std::vector<int> ids;
            for (const std::string& e : events)
                ids.push_back(static_cast<int>(Number(e, 0, 0xFFFF, "event")));
            Bus bus(port);
            for (int id : ids)
                bus.Listen(id);
            int printed = 0;
            auto enough = [&] {
                for (const std::string& m : bus.received)
                    if (count == 0 || printed < count) {
                        Print(m, json);
                        ++printed;
                    }
                bus.received.clear();
                return count > 0 && printed >= count;
            };
            if (!bus.WaitUntil(listenTimeout, enough))
                return printed > 0 ? 0 : kFailure;
        } else if (*dogs) {
            Bus bus(port);
            const Json::Value list = bus.Dogs();
            if (!json)
                std::printf("%-32s %8s %6s %10s %12s  %s\n", "NAME", "PID", "CLIENT", "TIMEOUT", "SINCE FEED",
                            "STATE");
            for (const Json::Value& d : list) {
                if (json)
                    std::printf("%s\n", OneLine(d).c_str());
                else
                    std::printf("%-32s %8d %6d %8d ms %9lld ms  %s\n", d["name"].asCString(), d["pid"].asInt(),
                                d["client"].asInt(), d["timeoutMs"].asInt(),
                                static_cast<long long>(d["sinceFeedMs"].asInt64()),
                                d["lapsed"].asBool() ? "LAPSED" : "fed");
            }
        }
    } catch (const Failure& e) {
        std::fprintf(stderr, "mdvr-bus: %s\n", e.what());
        return e.status;
    }
    return 0;
}
