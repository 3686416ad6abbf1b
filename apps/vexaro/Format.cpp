#include "Format.h"

#include <cmath>
#include <cstdio>

namespace vx::app {

std::string grouped(long long n)
{
    std::string digits = std::to_string(n < 0 ? -n : n);
    for (int pos = static_cast<int>(digits.size()) - 3; pos > 0; pos -= 3)
        digits.insert(static_cast<std::size_t>(pos), ",");
    return n < 0 ? "-" + digits : digits;
}

std::string percent(double fraction)
{
    if (std::isnan(fraction))
        return "n/a";
    return fixed(fraction * 100.0, 2) + " %";
}

std::string fixed(double v, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, v);
    return text;
}

} // namespace vx::app
