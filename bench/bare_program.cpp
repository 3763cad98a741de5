// A program linked with every platform library that does nothing: the floor for an idle emulated
// process's resident memory. It says "ready" once loaded and waits for a signal.

#include <unistd.h>

#include <cstdio>

#include "iservice_registry.h"

int main()
{
    // Refers to the platform so that it is loaded however the linker treats unused libraries.
    volatile auto* client = &Tarvo::SystemAbilityManagerClient::GetInstance();
    (void)client;
    std::puts("ready");
    std::fflush(stdout);
    pause();
    return 0;
}
