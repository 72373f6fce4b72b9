#include "files/TarvoDspTime.h"

#include <chrono>
#include <thread>

namespace ondo
{
double Time::getMillisecondCounterHiRes()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

void Time::sleep(int milliseconds)
{
    // POSIX sleeps already resolve well below a millisecond, so short and long pauses share
    // one path.
    if (milliseconds > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
} // namespace ondo
