#include "MemoryBudget.h"

#include "Format.h"
#include "ParameterTable.h"

#include <cctype>
#include <cmath>
#include <unistd.h>

namespace vx::app {

uint64_t parseMemorySize(const std::string& text, const std::string& option)
{
    const auto bad = [&] {
        return UsageError(option + " takes a size such as 2G, 1.5G or 512M (at least 8M), not '" + text +
                          "'");
    };
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        throw bad();
    }
    std::string unit = text.substr(used);
    for (auto& c : unit)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (unit == "B")
        unit.clear();
    if (!unit.empty() && unit.back() == 'B')
        unit.pop_back();
    if (!unit.empty() && unit.back() == 'I')
        unit.pop_back();
    double factor = 1;
    if (unit == "K")
        factor = 1024.0;
    else if (unit == "M")
        factor = 1024.0 * 1024;
    else if (unit == "G")
        factor = 1024.0 * 1024 * 1024;
    else if (unit == "T")
        factor = 1024.0 * 1024 * 1024 * 1024;
    else if (!unit.empty())
        throw bad();
    const double bytes = value * factor;
    if (!std::isfinite(bytes) || bytes < 8.0 * 1024 * 1024 || bytes > 1e18)
        throw bad();
    return static_cast<uint64_t>(bytes);
}

uint64_t defaultMemoryBudget()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES), pageSize = ::sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return uint64_t{1} << 30;
    return static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageSize) / 2;
}

std::string formatBytes(uint64_t bytes)
{
    const double b = static_cast<double>(bytes);
    if (b >= 1024.0 * 1024 * 1024)
        return fixed(b / (1024.0 * 1024 * 1024), 1) + " GB";
    return fixed(b / (1024.0 * 1024), 0) + " MB";
}

} // namespace vx::app
