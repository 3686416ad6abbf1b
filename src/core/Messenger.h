// Every diagnostic line of the library: the text, one blank, the value, a line end, a flush,
// printed when its level is at most the threshold.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace vx {

class Messenger {
public:
    int threshold = 2;

    template <class V> void operator()(int level, const std::string& text, const V& value) const
    {
        if (level <= threshold)
            write(text, value);
    }
    void operator()(int level, const std::string& text) const { (*this)(level, text, std::string()); }

    /// Writes whatever the threshold.
    template <class V> static void write(const std::string& text, const V& value)
    {
        std::cout << text << ' ' << value << '\n' << std::flush;
    }
};

/// A value as the message writer prints it.
template <class V> std::string toText(const V& value)
{
    std::ostringstream s;
    s << value;
    return s.str();
}

/// The two timing lines of a step: whole seconds, then milliseconds.
template <class S, class M> void printTiming(const S& seconds, const M& milliseconds)
{
    std::cout << "Time: " << seconds << " s\n" << std::flush;
    std::cout << "Time: " << milliseconds << " ms\n" << std::flush;
}

/// Ticks of 100 nanoseconds of the clock in use: the system clock unless a tick source is set.
long long systemTicks();
/// Makes systemTicks read source instead of the system clock (nullptr: the system clock again),
/// so tests know the timing lines in advance.
void setTickSource(long long (*source)());

} // namespace vx
