// How much memory a classification may take, and how many points fit in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vx::app {

/// Peak bytes a point costs while the pipeline classifies it on the host (the library's copies,
/// the file's bytes and the tool's own: about 110 at a million points), with room to spare for
/// uneven tiles; what tiles are sized by.
constexpr double kBytesPerPoint = 160.0;

/// "2G", "1.5G", "512M", "800K" or a plain number of bytes (binary multiples, case ignored);
/// throws UsageError for anything else or a value under 8 MB.
uint64_t parseMemorySize(const std::string& text, const std::string& option);

/// Half of the machine's physical memory (1 GB when it cannot be read).
uint64_t defaultMemoryBudget();

/// "1.5 GB", "512 MB".
std::string formatBytes(uint64_t bytes);

/// Points that one run of the pipeline may hold within the budget.
inline std::size_t pointsWithin(uint64_t budget)
{
    return static_cast<std::size_t>(static_cast<double>(budget) / kBytesPerPoint);
}

} // namespace vx::app
