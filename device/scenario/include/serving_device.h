#ifndef ZEL_DEVICE_SERVING_DEVICE_H
#define ZEL_DEVICE_SERVING_DEVICE_H

// A booted device that keeps running on the real clock and answers its control socket
// (ControlChannel): `send` plays scenario lines at the current time, `trace` gives the trace.
//
// Contract:
//  - Sent lines have no TIME; they are checked as a scenario would be (all of them first: one
//    error and nothing is played, exit 2), then played one at a time, each waiting for the device
//    to become quiet. Each gets the next line number of the device's life, which its requests'
//    ipc.done and ipc.unsent events carry; those events are printed. A refused command stops the
//    rest (exit 1); a failed expect is reported and the rest goes on (exit 3).
//  - Requests from several clients are played one at a time; trace readers are served meanwhile.
//  - `adopt CALLER` gives the connecting process (its real pid, from the kernel) an identity in
//    the device's registry and answers its emulated pid.
//  - `trace -f` keeps sending new events until the client goes or the device stops.
//  - Stop() may be called from any thread: Serve() then returns once every client is answered.

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "command_executor.h"
#include "control_channel.h"
#include "device_control.h"
#include "expect_checker.h"
#include "scenario.h"

namespace Tarvo::Emu {

class ServingDevice {
public:
    ServingDevice(DeviceControl& device, std::chrono::milliseconds quietLimit);
    ~ServingDevice();
    ServingDevice(const ServingDevice&) = delete;
    ServingDevice& operator=(const ServingDevice&) = delete;

    // Listens at `socketPath`; false with the reason if it cannot.
    bool Listen(const std::string& socketPath, std::string* error);
    // Answers until Stop(), then removes the socket.
    void Serve();
    void Stop();

private:
    void Answer(int fd);
    int AnswerSend(ControlChannel& channel);
    // `adopt CALLER`: the connecting process acts as CALLER (system, native, shell or a bundle).
    int AnswerAdopt(int fd, const std::string& caller, ControlChannel& channel);
    void AnswerTrace(ControlChannel& channel, bool follow);
    // The sent lines as a scenario; false after writing every error.
    bool Parse(const std::vector<std::string>& lines, Scenario* parsed, ControlChannel& channel);
    int Play(const Scenario& scenario, ControlChannel& channel);
    bool CheckExpect(const Cmd::Expect& expect, ControlChannel& channel);
    void RememberPackages(const ScenarioLine& line);
    void ReapClients(bool all);

    DeviceControl& device_;
    const std::chrono::milliseconds quietLimit_;
    CommandExecutor executor_;
    std::atomic<bool> stopping_{false};
    int wake_[2] = {-1, -1};
    int listener_ = -1;
    std::string socketPath_;

    std::mutex playMutex_;  // one client's lines at a time
    ExpectChecker checker_;
    int nextLine_ = 1;
    // The install line of each package a sent line installed: later lines are checked against them.
    std::map<std::string, std::string> installed_;

    std::mutex clientsMutex_;
    struct Client {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };
    std::vector<Client> clients_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVING_DEVICE_H
