// What the tool shows a person: its own progress lines and tables, and where the library's
// message stream goes (the library writes every message to std::cout).
#pragma once

#include "Pipeline.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vx::app {

/// The destination of the library's messages: discarded (default), the terminal (-v), a log
/// file (--log), or both.
class LibraryOutput {
public:
    /// Throws std::runtime_error "cannot write log file 'PATH': REASON".
    LibraryOutput(bool verbose, const std::string& logPath);
    ~LibraryOutput();
    LibraryOutput(const LibraryOutput&) = delete;
    LibraryOutput& operator=(const LibraryOutput&) = delete;

    /// While a Redirect lives, std::cout writes to the destination.
    class Redirect {
    public:
        explicit Redirect(LibraryOutput& out);
        ~Redirect();
        Redirect(const Redirect&) = delete;
        Redirect& operator=(const Redirect&) = delete;

    private:
        LibraryOutput& out_;
        std::streambuf* saved_;
    };

    void flush();

private:
    friend class Redirect;
    std::ofstream log_;
    std::unique_ptr<std::streambuf> sink_;
    std::streambuf* target_ = nullptr;
};

/// Progress lines on standard error (unless quiet) as the steps finish.
class Reporter {
public:
    explicit Reporter(bool quiet) : quiet_(quiet) {}
    void step(const StepReport& r);
    /// A timed line of its own, e.g. "generate scene".
    void line(const std::string& name, double seconds, const std::string& detail);
    /// A plain line.
    void note(const std::string& text);
    bool quiet() const { return quiet_; }

private:
    bool quiet_;
};

/// The per-class table: class, name, points, share.
std::string classSummary(const std::vector<int>& classes, bool legacyNames = false);

} // namespace vx::app
