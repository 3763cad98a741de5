#ifndef ZEL_DEVICE_INTERRUPT_CLEANUP_H
#define ZEL_DEVICE_INTERRUPT_CLEANUP_H

// An interrupted zel_device (SIGINT, SIGTERM) removes its temporary data folder, as a normal exit
// does.
//
// Contract:
//  - HandleInterrupts() blocks SIGINT and SIGTERM in the calling thread and starts a thread that
//    waits for them. Call it first in main, before any other thread exists, so that every thread
//    inherits the mask and the signals reach that thread only. Calling it again does nothing.
//  - On a signal that thread removes every registered folder, says so on stderr and ends the process
//    with status 128 + the signal's number (130 for SIGINT, 143 for SIGTERM), without running
//    destructors: the device's threads may be anywhere. Being an ordinary thread, it is free of
//    the limits of a signal handler.
//  - RemoveOnInterrupt / KeepOnInterrupt register and forget a folder; thread-safe.
//  - A process that stops in order (a serving device) sets OnInterrupt: the first signal then only
//    calls it, on that thread; a second one ends the process as above. Replacing the function
//    waits until a call of the old one has returned.

#include <functional>
#include <string>

namespace Tarvo::Emu {

void HandleInterrupts();
void RemoveOnInterrupt(const std::string& dir);
void KeepOnInterrupt(const std::string& dir);
// An empty function restores the default.
void OnInterrupt(std::function<void(int signal)> stop);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_INTERRUPT_CLEANUP_H
