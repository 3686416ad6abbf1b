// Walking through a subcommand's arguments: options with values ("-o FILE", "--out=DIR"),
// flags and positional arguments.
#pragma once

#include <string>
#include <vector>

namespace vx::app {

class ArgList {
public:
    /// `command` names the subcommand in messages ("classify").
    ArgList(std::vector<std::string> args, std::string command);

    /// True when every token is used; throws UsageError when the option just read was given an
    /// "=value" that it does not take.
    bool done();
    /// The next token; "--name=value" comes back as "--name" with the value kept for value().
    std::string next();
    /// The value of the option just returned by next(); throws UsageError when there is none.
    std::string value(const std::string& option);
    /// value() as a whole number within [least, most].
    long long integer(const std::string& option, long long least, long long most);

    /// A UsageError for an option the command does not know.
    [[noreturn]] void unknownOption(const std::string& option) const;
    /// A UsageError for a positional argument too many.
    [[noreturn]] void unexpected(const std::string& argument) const;

    const std::string& command() const { return command_; }

private:
    std::vector<std::string> args_;
    std::string command_;
    std::size_t pos_ = 0;
    bool hasInline_ = false;
    std::string inline_;
};

/// True for "-x" and "--xyz" (but not "-" alone, which names standard input in many tools).
bool isOption(const std::string& token);

} // namespace vx::app
