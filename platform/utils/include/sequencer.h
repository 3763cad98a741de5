#ifndef TARVO_UTILS_SEQUENCER_H
#define TARVO_UTILS_SEQUENCER_H

// Runs the device's threads one at a time, in an order fixed by the program, so that in virtual
// time one scenario does the same things in the same order on every run, whatever the load.
//
// A thread may run device work only while it holds the baton. Work that becomes ready (a post to
// a process's pool, a due task of a runner) reserves a turn in one line at that moment; turns are
// served in line order, one at a time. Ready work is only ever made by the baton holder or by the
// one thread that drives the clock while the device is quiet, so the line, and with it the order
// of everything traced, is the same on every run.
//
// Contract:
//  - Disabled (the default, and in real time) every call is a no-op: Reserve() gives kNoTurn,
//    Take(kNoTurn) returns true at once, Holding() is false.
//  - Reserve() queues a turn at the back; ReserveFirst() at the front, for a hand-off (a
//    synchronous request and its reply run next, before anything that was waiting).
//  - Take(turn) blocks until the turn is first in line and nobody holds the baton, then holds it;
//    false if the turn was cancelled. Every reserved turn is taken or cancelled exactly once.
//  - Finish() gives the baton up; a thread that does not hold it is ignored.
//  - A holder must not block on another sequenced thread except through Yield (which gives the
//    baton up for the wait and takes a reserved turn back).
//  - Turns are numbered so that line order is number order. Once SharedTimePage is attached the
//    line and the baton are those of the whole device: a turn reserved in one process may be taken
//    in another. Each turn belongs to the process that reserved it (or adopted it); Forget(pid)
//    cancels a dead process's turns and releases the baton if it held it.

#include <cstdint>

namespace Tarvo {

class Sequencer {
public:
    using Turn = uint64_t;
    static constexpr Turn kNoTurn = 0;

    // Once, before any sequenced work; cannot be undone.
    static void Enable();
    static bool Enabled();

    static Turn Reserve();
    static Turn ReserveFirst();
    static bool Take(Turn turn);
    static void Cancel(Turn turn);
    static void Finish();
    static bool Holding();
    // True for a turn reserved with ReserveFirst().
    static bool IsHandOff(Turn turn);
    // Makes a turn reserved elsewhere this process's, so it goes with this one if it dies; false if
    // it is no longer in line.
    static bool Adopt(Turn turn);
    // A process is gone: its turns are cancelled and the baton released if it held it.
    static void Forget(int32_t pid);
    // Turns taken so far; a driver that sees it still for long knows the device is stuck.
    static uint64_t Progress();

    // Holds the baton for a scope, unless the thread already does.
    class Hold {
    public:
        Hold();
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        bool taken_;
    };

    // Gives the baton up for a blocking wait whose end no turn marks (a thread join); takes it back
    // first in line afterwards.
    class Yield {
    public:
        Yield();
        ~Yield();
        Yield(const Yield&) = delete;
        Yield& operator=(const Yield&) = delete;

    private:
        bool held_;
    };
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_SEQUENCER_H
