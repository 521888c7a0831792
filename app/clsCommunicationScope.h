#pragma once

#include "app/clsApplication.h"

// Holds CommunicationIsRunning for its lifetime, so every way out of an
// exchange with the display, a thrown run-time error too, gives the link back.
class clsCommunicationScope
{
public:
    explicit clsCommunicationScope(clsApplication& rcApp)
        : mrApp(rcApp)
    {
        mrApp.SetCommunicationIsRunning(true);
    }
    ~clsCommunicationScope() { mrApp.SetCommunicationIsRunning(false); }
    clsCommunicationScope(const clsCommunicationScope&) = delete;
    clsCommunicationScope& operator=(const clsCommunicationScope&) = delete;

private:
    clsApplication& mrApp;
};
