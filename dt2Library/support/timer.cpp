#include "freeFunctions.h"
#include "support/messages.h"

#include <chrono>
#include <iomanip>
#include <iostream>
#include <map>
#include <mutex>
#include <string>

namespace ORBI_LUMO25D
{

double timer(const char* name)
{
    using Clock = std::chrono::steady_clock; // monotonic: a corrected system time must not give negative durations
    static std::map<std::string, Clock::time_point> mNameToStart;
    static std::mutex mtx; // of the map

    if (name == nullptr) {
        msgWarning("timer()", "The name is NULL");
        return -1.0;
    }
    const std::string key(name);
    const bool bQuiet = key.compare(0, 7, "[quiet]") == 0;

    const std::lock_guard<std::mutex> lock(mtx);
    const auto it = mNameToStart.find(key);
    if (it == mNameToStart.end()) {
        if (!bQuiet) printLine("...Timer [" + key + "] start");
        mNameToStart[key] = Clock::now();
        return -1.0;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - it->second).count();
    mNameToStart.erase(it);
    if (!bQuiet) {
        std::cout << "...Timer [" << key << "] stop, elapsed time: " << std::fixed << std::setprecision(3) << seconds
                  << " s" << std::setprecision(6) << std::endl;
    }
    return seconds;
}

} // namespace ORBI_LUMO25D
