#include "Console.h"

#include "ClassNames.h"
#include "Format.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>

namespace vx::app {

namespace {

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return c == traits_type::eof() ? traits_type::not_eof(c) : c; }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

/// Writes everything to two buffers.
class TeeBuffer : public std::streambuf {
public:
    TeeBuffer(std::streambuf* a, std::streambuf* b) : a_(a), b_(b) {}

protected:
    int overflow(int c) override
    {
        if (c == traits_type::eof())
            return traits_type::not_eof(c);
        a_->sputc(static_cast<char>(c));
        b_->sputc(static_cast<char>(c));
        return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override
    {
        a_->sputn(s, n);
        b_->sputn(s, n);
        return n;
    }
    int sync() override { return (a_->pubsync() == 0 && b_->pubsync() == 0) ? 0 : -1; }

private:
    std::streambuf *a_, *b_;
};

std::string padLeft(const std::string& s, std::size_t width)
{
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

} // namespace

LibraryOutput::LibraryOutput(bool verbose, const std::string& logPath)
{
    if (!logPath.empty()) {
        log_.open(logPath, std::ios::out | std::ios::trunc);
        if (!log_)
            throw std::runtime_error("cannot write log file '" + logPath + "': " + std::strerror(errno));
    }
    std::streambuf* terminal = std::cout.rdbuf();
    if (verbose && log_.is_open()) {
        sink_ = std::make_unique<TeeBuffer>(terminal, log_.rdbuf());
        target_ = sink_.get();
    } else if (verbose) {
        target_ = terminal;
    } else if (log_.is_open()) {
        target_ = log_.rdbuf();
    } else {
        sink_ = std::make_unique<NullBuffer>();
        target_ = sink_.get();
    }
}

LibraryOutput::~LibraryOutput()
{
    flush();
}

void LibraryOutput::flush()
{
    if (log_.is_open())
        log_.flush();
    std::cout.flush();
}

LibraryOutput::Redirect::Redirect(LibraryOutput& out) : out_(out), saved_(std::cout.rdbuf(out.target_)) {}

LibraryOutput::Redirect::~Redirect()
{
    std::cout.flush();
    std::cout.rdbuf(saved_);
    out_.flush();
}

void Reporter::step(const StepReport& r)
{
    if (quiet_)
        return;
    std::ostringstream detail;
    detail << grouped(r.points) << " points";
    if (!r.classLabel.empty())
        detail << ", " << r.classLabel << ' ' << grouped(r.classPoints);
    char counter[32];
    std::snprintf(counter, sizeof counter, "[%2d/%d] ", r.index, r.steps);
    line(counter + r.name, r.seconds, detail.str());
}

void Reporter::line(const std::string& name, double seconds, const std::string& detail)
{
    if (quiet_)
        return;
    char text[64];
    std::snprintf(text, sizeof text, "%8.2f s", seconds);
    std::string label = name;
    if (label.size() < 30)
        label.resize(30, ' ');
    std::cerr << label << text << "   " << detail << std::endl;
}

void Reporter::note(const std::string& text)
{
    if (!quiet_)
        std::cerr << text << std::endl;
}

std::string classSummary(const std::vector<int>& classes, bool legacyNames)
{
    std::map<int, std::size_t> counts;
    for (int c : classes)
        ++counts[c];
    std::ostringstream out;
    out << padLeft("class", 7) << "  " << std::string("name").append(22, ' ') << padLeft("points", 12) << "  "
        << padLeft("share", 9) << '\n';
    const double total = static_cast<double>(classes.empty() ? 1 : classes.size());
    for (const auto& [cls, n] : counts) {
        std::string name = className(cls, legacyNames);
        if (name.size() < 26)
            name.resize(26, ' ');
        char share[32];
        std::snprintf(share, sizeof share, "%7.2f %%", 100.0 * static_cast<double>(n) / total);
        out << padLeft(std::to_string(cls), 7) << "  " << name
            << padLeft(grouped(static_cast<long long>(n)), 12) << "  " << share << '\n';
    }
    out << std::string(9, ' ') << std::string("total").append(21, ' ')
        << padLeft(grouped(static_cast<long long>(classes.size())), 12) << '\n';
    return out.str();
}

} // namespace vx::app
