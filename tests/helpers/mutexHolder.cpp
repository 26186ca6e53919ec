// Takes the system mutex named by its argument and holds it until it is killed.
#include "platform/windows.h"
#include "xoSystem/xoMutex.h"

int main(int, char** arguments) XO_NO_THREAD_SAFETY_ANALYSIS {
    xo::xoMutexSystem mutex(arguments[1]);
    mutex.lock();
    ::Sleep(60000);
    return 0;
}
