#include "zelctl_listen.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "zel_callback_stub.h"

namespace Tarvo::Zelctl {
namespace {
sigset_t StopSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

// 2024-05-01T12:00:00.123Z
std::string Now()
{
    auto now = std::chrono::system_clock::now();
    time_t seconds = std::chrono::system_clock::to_time_t(now);
    auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    tm utc{};
    gmtime_r(&seconds, &utc);
    char text[64];
    snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%03lldZ", utc.tm_year + 1900, utc.tm_mon + 1,
             utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, static_cast<long long>(millis));
    return text;
}

class Printer : public Vantel::ZelCallbackStub {
public:
    Printer(std::string bundle, std::string name) : bundle_(std::move(bundle)), name_(std::move(name)) {}

    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        printf("%s %s %s %u\n", Now().c_str(), bundle_.c_str(), name_.c_str(), targetFps);
        fflush(stdout);
        return 0;
    }

private:
    const std::string bundle_;
    const std::string name_;
};
}  // namespace

void BlockStopSignals()
{
    sigset_t set = StopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

int Listen(const Command& command, Vantel::ZelManagerProxy& proxy, DeviceLink& link)
{
    sptr<Vantel::IZelCallbackInterface> callback = new Printer(command.as, command.callbackName);
    uint32_t result = proxy.RegisterGameFpsListener(callback);
    if (result != 0) {
        printf("%u\n", result);
        return REFUSED;
    }
    fprintf(stderr, "zelctl: listening as %s (%s)\n", command.as.c_str(), command.callbackName.c_str());
    sigset_t set = StopSignals();
    int signal = 0;
    sigwait(&set, &signal);
    link.Leave();
    fprintf(stderr, "zelctl: stopped (%s)\n", signal == SIGINT ? "SIGINT" : "SIGTERM");
    fflush(stdout);
    // The transport's threads may be anywhere: the process ends without unwinding them.
    _exit(OK);
}

}  // namespace Tarvo::Zelctl
