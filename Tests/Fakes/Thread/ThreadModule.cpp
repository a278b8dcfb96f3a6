// A library that is loaded, runs one worker of its own to its end, and is unloaded at once.

#include "LyThread.h"

namespace
{
class ModuleWorker : public LyThread
{
public:
    ~ModuleWorker() override { Stop(-1); }
    bool Thread() override { return true; }
};

// Stays in the library's code for a while after its owner was told of its end. The object is gone then.
class LingeringWorker : public ModuleWorker
{
public:
    void EndThread() override
    {
        Sleep(2);
        pthread_exit(nullptr);
    }
};

bool Run(LyThread&& worker)
{
    worker.SetWaitForStopLoopSleepMS(0); // no pause behind the end of the worker
    return worker.Start(0, false) && worker.Stop(-1);
}
} // namespace

// True if the worker ran. It is still on its last lines when this returns.
LY_EXPORT bool RunModuleWorker(bool bLinger) { return bLinger ? Run(LingeringWorker()) : Run(ModuleWorker()); }
