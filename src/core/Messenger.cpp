#include "core/Messenger.h"

#include <atomic>
#include <chrono>

namespace vx {

namespace {
std::atomic<long long (*)()> tickSource{nullptr};
}

void setTickSource(long long (*source)())
{
    tickSource = source;
}

long long systemTicks()
{
    if (const auto source = tickSource.load())
        return source();
    using namespace std::chrono;
    return duration_cast<duration<long long, std::ratio<1, 10000000>>>(system_clock::now().time_since_epoch())
        .count();
}

} // namespace vx
