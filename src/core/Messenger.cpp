#include "core/Messenger.h"

#include <chrono>

namespace vx {

long long systemTicks()
{
    using namespace std::chrono;
    return duration_cast<duration<long long, std::ratio<1, 10000000>>>(system_clock::now().time_since_epoch())
        .count();
}

} // namespace vx
