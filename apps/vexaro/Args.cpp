#include "Args.h"

#include "ParameterTable.h"

#include <cerrno>
#include <cstdlib>

namespace vx::app {

ArgList::ArgList(std::vector<std::string> args, std::string command)
    : args_(std::move(args)), command_(std::move(command))
{
}

bool isOption(const std::string& token)
{
    return token.size() > 1 && token[0] == '-';
}

bool ArgList::done()
{
    if (hasInline_)
        throw UsageError("option '" + args_[pos_ - 1].substr(0, args_[pos_ - 1].find('=')) +
                         "' takes no value");
    return pos_ >= args_.size();
}

std::string ArgList::next()
{
    std::string token = args_[pos_++];
    if (token.rfind("--", 0) == 0) {
        const auto eq = token.find('=');
        if (eq != std::string::npos) {
            hasInline_ = true;
            inline_ = token.substr(eq + 1);
            token.erase(eq);
        }
    }
    return token;
}

std::string ArgList::value(const std::string& option)
{
    if (hasInline_) {
        hasInline_ = false;
        return inline_;
    }
    if (done())
        throw UsageError("option '" + option + "' needs a value");
    return args_[pos_++];
}

long long ArgList::integer(const std::string& option, long long least, long long most)
{
    const std::string text = value(option);
    char* end = nullptr;
    errno = 0;
    const long long v = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || v < least || v > most)
        throw UsageError("option '" + option + "' takes a whole number from " + std::to_string(least) +
                         " to " + std::to_string(most) + ", not '" + text + "'");
    return v;
}

void ArgList::unknownOption(const std::string& option) const
{
    throw UsageError("unknown option '" + option + "' (see 'vexaro " + command_ + " --help')");
}

void ArgList::unexpected(const std::string& argument) const
{
    throw UsageError("unexpected argument '" + argument + "' (see 'vexaro " + command_ + " --help')");
}

} // namespace vx::app
