// Built by check-sysroot.sh: the headers that the library, the tools and the
// tests include, a thread and a child process.
#include <CLI/CLI.hpp>
#include <gtest/gtest.h>
#include <json/json.h>
#include <zmq.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <thread>

int main()
{
    int major = 0, minor = 0, patch = 0;
    zmq_version(&major, &minor, &patch);
    Json::Value value;
    value["zmq"] = major;
    bool ran = false;
    std::thread thread([&ran] { ran = std::sqrt(4.0) == 2.0; });
    thread.join();
    const pid_t child = fork();
    if (child == 0)
        _exit(3);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) || !ran || value["zmq"].asInt() != ZMQ_VERSION_MAJOR)
        return 1;
    std::printf("probe: thread ran, child exited %d\n", WEXITSTATUS(status));
    return 0;
}
