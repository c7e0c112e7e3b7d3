// mdvr-bus: the command-line client of the development bus (docs/bus.md).
//
//   mdvr-bus [--port N] send EVENT [BODY] [--file F] [--dest D] [--session S] [--module M]
//   mdvr-bus [--port N] call EVENT [BODY] [--file F] [--dest D] [--session S] [--module M] [--timeout MS]
//   mdvr-bus [--port N] listen EVENT... [--count N] [--timeout MS]
//   mdvr-bus [--port N] dogs
//
// BODY "-" reads standard input. Numbers may be decimal or 0x-hexadecimal.
// Exit status: 0 success, 1 no response (call) or nothing heard (listen with
// a timeout), 2 error (one line on standard error).
#include "BusWire.h"
#include "ToolkitHost.h"

#include <CLI/CLI.hpp>
#include <json/reader.h>
#include <json/writer.h>

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

long long Number(const std::string& text, long long low, long long high, const char* what)
{
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || value < low || value > high)
        throw Failure(std::string("bad ") + what + ": " + text);
    return value;
}

std::string ReadBody(const std::string& argument, const std::string& file)
{
    if (!file.empty() && !argument.empty())
        throw Failure("give the body as an argument or with --file, not both");
    std::ostringstream text;
    if (argument == "-" || file == "-") {
        text << std::cin.rdbuf();
    } else if (!file.empty()) {
        std::ifstream in(file, std::ios::binary);
        if (!in)
            throw Failure("cannot read " + file + ": " + std::strerror(errno));
        text << in.rdbuf();
    } else {
        return argument;
    }
    return text.str();
}

// The body as a person reads it: JSON pretty-printed, text as it is, other
// bytes as a hex dump.
std::string Render(const char* body, size_t size)
{
    const std::string text(body, size);
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (size > 0 && reader->parse(body, body + size, &value, &errors) && (value.isObject() || value.isArray())) {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "  ";
        return Json::writeString(writer, value) + "\n";
    }
    bool printable = true;
    for (unsigned char c : text)
        printable = printable && (c >= 0x20 || c == '\n' || c == '\t' || c == '\r') && c != 0x7F;
    if (printable)
        return size && text.back() != '\n' ? text + "\n" : text;
    std::string out;
    char line[32];
    for (size_t row = 0; row < size; row += 16) {
        std::snprintf(line, sizeof line, "%06zx ", row);
        out += line;
        for (size_t i = row; i < row + 16 && i < size; ++i) {
            std::snprintf(line, sizeof line, " %02x", static_cast<unsigned char>(body[i]));
            out += line;
        }
        out += "\n";
    }
    return out;
}

void Print(const char* message, int length)
{
    const Common::SMessageHead head = BusWire::ReadHead(message);
    std::printf("event 0x%x%s  source %d  session %d  client %u  length %u\n", head.messageId,
                (head.messageId & BusWire::kResponseBit) ? " (response)" : "", head.sourceId, head.session,
                head.flags, head.length & BusWire::kBodyMax);
    std::fputs(Render(message + BusWire::kHeadSize, static_cast<size_t>(length) - BusWire::kHeadSize).c_str(),
               stdout);
    std::fflush(stdout);
}

// The client of the tool: error lines of the support library become the
// tool's one line of error.
class Bus {
public:
    explicit Bus(int port)
    {
        ToolkitHost::SetLogSink(&Bus::Keep, this);
        handle_ = Common::K7X_MSGCreateMessageClient(30u, "127.0.0.1", static_cast<short>(port));
        if (handle_ == nullptr)
            throw Failure(LastError("cannot reach the bus"));
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
            throw Failure(LastError("sending failed"));
    }
    // Waits until `done` says so, up to `timeout` ms (negative: without end).
    // False on timeout.
    template <class Done> bool WaitUntil(int timeout, Done done)
    {
        using namespace std::chrono;
        const auto deadline = steady_clock::now() + milliseconds(timeout);
        while (!done()) {
            int left = -1;
            if (timeout >= 0) {
                left = static_cast<int>(duration_cast<milliseconds>(deadline - steady_clock::now()).count());
                if (left <= 0)
                    return false;
            }
            if (Common::K7X_MSGWaitForEvent(handle_, left) < 0)
                throw Failure(LastError("waiting failed"));
        }
        return true;
    }
    std::string Dogs()
    {
        std::string text;
        if (!ToolkitHost::QueryDogs(handle_, 2000, text))
            throw Failure("the bus did not list its watchdogs");
        return text;
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

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"The command-line client of the development message bus."};
    app.require_subcommand(1);
    int port = 0;
    app.add_option("-p,--port", port, "bus port on 127.0.0.1 (default: $MDVR_BUS, else 7931)")->check(CLI::Range(0, 65535));

    std::string event, body, file, destination = "0", session, module = "0";
    int timeout = 2000;
    std::vector<std::string> events;
    int count = 0;
    int listenTimeout = -1;

    auto addMessage = [&](CLI::App* command) {
        command->add_option("event", event, "message id (event), 0..0xFFFF")->required();
        command->add_option("body", body, "message body; - reads standard input");
        command->add_option("-f,--file", file, "read the body from a file");
        command->add_option("-d,--dest", destination, "destination client id, 0 for every subscriber");
        command->add_option("-s,--session", session, "session number (default: the process id)");
        command->add_option("-m,--module", module, "sending module id, the source id of the response");
    };
    CLI::App* send = app.add_subcommand("send", "send a message");
    addMessage(send);
    CLI::App* call = app.add_subcommand("call", "send a message and print its response");
    addMessage(call);
    call->add_option("-t,--timeout", timeout, "milliseconds to wait for the response")->check(CLI::NonNegativeNumber);
    CLI::App* listen = app.add_subcommand("listen", "print the messages of the given events");
    listen->add_option("events", events, "message ids (events)")->required();
    listen->add_option("-n,--count", count, "stop after this many messages")->check(CLI::NonNegativeNumber);
    listen->add_option("-t,--timeout", listenTimeout, "stop after this many milliseconds (exit status 1 if none came)");
    CLI::App* dogs = app.add_subcommand("dogs", "list the watchdogs");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "mdvr-bus: %s\n", e.what());
        return 2;
    }

    try {
        if (*send || *call) {
            const int id = static_cast<int>(Number(event, 0, 0xFFFF, "event"));
            const int to = static_cast<int>(Number(destination, 0, 0xFFFF, "destination"));
            const int from = static_cast<int>(Number(module, INT32_MIN, INT32_MAX, "module"));
            const int number = session.empty() ? static_cast<int>(getpid())
                                               : static_cast<int>(Number(session, INT32_MIN, INT32_MAX, "session"));
            const std::string text = ReadBody(body, file);
            if (text.size() > BusWire::kBodyMax)
                throw Failure("body of " + std::to_string(text.size()) + " bytes, more than the bus's " +
                              std::to_string(BusWire::kBodyMax));
            Bus bus(port);
            if (*call) {
                if (id & BusWire::kResponseBit)
                    throw Failure("event " + event + " is itself a response id");
                bus.Listen(id | static_cast<int>(BusWire::kResponseBit));
            }
            bus.Send(id, to, number, text, from);
            if (*call) {
                auto answered = [&] {
                    for (const std::string& m : bus.received)
                        if (BusWire::ReadHead(m.data()).session == number) {
                            Print(m.data(), static_cast<int>(m.size()));
                            return true;
                        }
                    bus.received.clear();
                    return false;
                };
                if (!bus.WaitUntil(timeout, answered)) {
                    std::fprintf(stderr, "mdvr-bus: no response to event %s within %d ms\n", event.c_str(), timeout);
                    return 1;
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
                        Print(m.data(), static_cast<int>(m.size()));
                        ++printed;
                    }
                bus.received.clear();
                return count > 0 && printed >= count;
            };
            if (!bus.WaitUntil(listenTimeout, enough))
                return printed > 0 ? 0 : 1;
        } else if (*dogs) {
            Bus bus(port);
            Json::Value list;
            std::istringstream(bus.Dogs()) >> list;
            std::printf("%-32s %8s %6s %10s %12s  %s\n", "NAME", "PID", "CLIENT", "TIMEOUT", "SINCE FEED", "STATE");
            for (const Json::Value& d : list)
                std::printf("%-32s %8d %6d %8d ms %9lld ms  %s\n", d["name"].asCString(), d["pid"].asInt(),
                            d["client"].asInt(), d["timeoutMs"].asInt(), static_cast<long long>(d["sinceFeedMs"].asInt64()),
                            d["lapsed"].asBool() ? "LAPSED" : "fed");
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-bus: %s\n", e.what());
        return 2;
    }
    return 0;
}
