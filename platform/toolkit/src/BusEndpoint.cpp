// Where the development bus is: the same answer for its clients, its daemon
// and the tools (docs/bus.md).
#include "ToolkitHost.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace ToolkitHost {

namespace {

std::string Reason(const std::string& what) { return what + ": " + std::strerror(errno); }

} // namespace

bool PrivateDirectory(const std::string& path, bool create, std::string& error)
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) {
        if (errno != ENOENT || !create) {
            error = Reason("cannot use " + path);
            return false;
        }
        // Made 0700 whatever the umask; one made by someone else meanwhile is checked below.
        if (mkdir(path.c_str(), 0700) == 0)
            chmod(path.c_str(), 0700);
        else if (errno != EEXIST) {
            error = Reason("cannot make " + path);
            return false;
        }
        if (lstat(path.c_str(), &st) != 0) {
            error = Reason("cannot use " + path);
            return false;
        }
    }
    char detail[96];
    if (!S_ISDIR(st.st_mode)) {
        error = path + " is not a directory";
    } else if (st.st_uid != geteuid()) {
        std::snprintf(detail, sizeof detail, " belongs to uid %u, not to uid %u", static_cast<unsigned>(st.st_uid),
                      static_cast<unsigned>(geteuid()));
        error = path + detail;
    } else if ((st.st_mode & 0777) != 0700) {
        std::snprintf(detail, sizeof detail, " has mode %04o; only 0700 keeps the bus to its user",
                      static_cast<unsigned>(st.st_mode & 07777));
        error = path + detail;
    } else {
        return true;
    }
    return false;
}

namespace {

// A TCP port, 1..65535 in decimal digits only; 0 for anything else.
unsigned int Port(const char* text)
{
    if (*text < '0' || *text > '9')
        return 0;
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 10);
    return *end == '\0' && value <= 65535 ? static_cast<unsigned int>(value) : 0;
}

} // namespace

std::string DefaultBusEndpoint(std::string& error)
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime != '\0')
        return PrivateDirectory(runtime, false, error) ? "ipc://" + std::string(runtime) + "/mdvr-bus" : "";
    const std::string directory = "/tmp/mdvr-bus-" + std::to_string(geteuid());
    return PrivateDirectory(directory, true, error) ? "ipc://" + directory + "/bus" : "";
}

std::string BusEndpoint(const char* address, short port, std::string& error)
{
    unsigned int number = static_cast<unsigned short>(port);
    const char* environment = std::getenv(kBusEnvironment);
    if (number == 0 && environment != nullptr && *environment != '\0') {
        const std::string text = environment;
        if (text.compare(0, 6, "ipc://") == 0 && text.size() > 6)
            return text; // a path
        const size_t colon = text.rfind(':');
        if (text.compare(0, 6, "tcp://") == 0 && colon > 6 && Port(text.c_str() + colon + 1) != 0)
            return text; // a host and a port
        const unsigned int value = Port(environment);
        if (value == 0) {
            error = std::string(kBusEnvironment) + "=\"" + text + "\" is neither a port nor an endpoint";
            return std::string();
        }
        number = value;
    }
    if (number == 0)
        return DefaultBusEndpoint(error);
    const std::string host = (address != nullptr && *address != '\0') ? address : "127.0.0.1";
    return "tcp://" + host + ":" + std::to_string(number);
}

} // namespace ToolkitHost
