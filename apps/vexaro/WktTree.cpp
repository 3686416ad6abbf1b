#include "WktTree.h"

#include <cctype>

namespace vx::app {

namespace {

constexpr int kDeepest = 64;

class Parser {
public:
    explicit Parser(const std::string& text) : s_(text) {}

    bool node(WktNode& out, int depth)
    {
        if (depth > kDeepest)
            return false;
        skipBlanks();
        out.keyword = word();
        if (out.keyword.empty())
            return false;
        skipBlanks();
        if (pos_ >= s_.size() || (s_[pos_] != '[' && s_[pos_] != '('))
            return false;
        const char close = s_[pos_] == '[' ? ']' : ')';
        ++pos_;
        for (;;) {
            skipBlanks();
            if (pos_ >= s_.size())
                return false;
            if (s_[pos_] == '"') {
                std::string text;
                if (!quoted(text))
                    return false;
                out.values.push_back(std::move(text));
            } else {
                const std::size_t start = pos_;
                const std::string w = word();
                if (w.empty())
                    return false;
                skipBlanks();
                if (pos_ < s_.size() && (s_[pos_] == '[' || s_[pos_] == '(')) {
                    pos_ = start;
                    out.children.emplace_back();
                    if (!node(out.children.back(), depth + 1))
                        return false;
                } else {
                    out.values.push_back(w);
                }
            }
            skipBlanks();
            if (pos_ >= s_.size())
                return false;
            if (s_[pos_] == close) {
                ++pos_;
                return true;
            }
            if (s_[pos_] != ',')
                return false;
            ++pos_;
        }
    }

    /// Only blanks and NULs after the root.
    bool atEnd()
    {
        while (pos_ < s_.size() && (s_[pos_] == '\0' || std::isspace(static_cast<unsigned char>(s_[pos_]))))
            ++pos_;
        return pos_ == s_.size();
    }

private:
    void skipBlanks()
    {
        while (pos_ < s_.size() && std::isspace(static_cast<unsigned char>(s_[pos_])))
            ++pos_;
    }

    /// A keyword, number or bare word: letters, digits and _ . + -
    std::string word()
    {
        const std::size_t start = pos_;
        while (pos_ < s_.size()) {
            const char c = s_[pos_];
            if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '.' && c != '+' && c != '-')
                break;
            ++pos_;
        }
        return s_.substr(start, pos_ - start);
    }

    /// "text" with "" standing for one quote.
    bool quoted(std::string& out)
    {
        ++pos_;
        while (pos_ < s_.size()) {
            if (s_[pos_] == '"') {
                if (pos_ + 1 < s_.size() && s_[pos_ + 1] == '"') {
                    out += '"';
                    pos_ += 2;
                    continue;
                }
                ++pos_;
                return true;
            }
            out += s_[pos_++];
        }
        return false;
    }

    const std::string& s_;
    std::size_t pos_ = 0;
};

} // namespace

bool parseWkt(const std::string& text, WktNode& root)
{
    Parser p(text);
    root = WktNode{};
    return p.node(root, 0) && p.atEnd();
}

} // namespace vx::app
