// Number formatting for the tool's tables.
#pragma once

#include <string>

namespace vx::app {

/// 1234567 as "1,234,567".
std::string grouped(long long n);

/// A fraction as "12.34 %", or "n/a" when it is not a number.
std::string percent(double fraction);

/// v with a fixed number of decimals.
std::string fixed(double v, int decimals);

} // namespace vx::app
