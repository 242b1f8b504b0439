#include "SourceText.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

namespace {

// What of a text is not code. Comments become blanks, and so do quoted texts unless they are to stay.
class Stripper {
  public:
    explicit Stripper(bool keepQuoted) : keepsQuoted_(keepQuoted) {}

    std::string strip(std::string text)
    {
        for (size_t i = 0; i < text.size();) {
            const size_t end = endOfPiece(text, i);
            const bool isQuoted = text[i] == '"' || text[i] == '\'';
            if (end > i + 1 && !(isQuoted && keepsQuoted_))
                blank(text, i, end);
            i = end;
        }
        return text;
    }

  private:
    // Behind the comment or quoted text that starts there, or behind the one byte of code.
    static size_t endOfPiece(const std::string& text, size_t start)
    {
        if (text.compare(start, 2, "//") == 0)
            return std::min(text.find('\n', start), text.size());
        if (text.compare(start, 2, "/*") == 0)
            return std::min(text.find("*/", start + 2), text.size() - 2) + 2;
        if (text[start] == '"' || text[start] == '\'')
            return endOfQuoted(text, start);
        return start + 1;
    }

    static size_t endOfQuoted(const std::string& text, size_t start)
    {
        size_t end = start + 1;
        while (end < text.size() && text[end] != text[start])
            end += text[end] == '\\' ? 2 : 1;
        return std::min(end + 1, text.size());
    }

    static void blank(std::string& text, size_t start, size_t end)
    {
        std::replace_if(
            text.begin() + static_cast<ptrdiff_t>(start), text.begin() + static_cast<ptrdiff_t>(end),
            [](char byte) { return byte != '\n'; }, ' ');
    }

    bool keepsQuoted_;
};

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// What opens a block: the name of a function, "operator()" for a lambda, empty for everything else.
std::string opened(const std::string& head)
{
    static const std::regex lambda(R"(\[[^\[\]]*\]\s*(\([^()]*\))?\s*(mutable\s*)?(->\s*[\w:*&]+\s*)?$)");
    static const std::regex function(
        R"((\w+)\s*\([^{]*\)\s*(const|noexcept|override|final|try|\s)*(:[^:{][^{]*)?$)");
    static const std::regex block(R"(^\s*(\}\s*)?(else\s+)?(if|for|while|switch|catch)\b)");
    std::smatch found;
    if (std::regex_search(head, lambda))
        return "operator()";
    if (std::regex_search(head, block) || !std::regex_search(head, found, function))
        return "";
    return found[1];
}

bool isHandler(const std::string& head)
{
    static const std::regex handler(R"(^\s*catch\b)");
    return std::regex_search(head, handler);
}

// Walks the braces of a text and knows the function around each of its places.
class Braces {
  public:
    // The function around the place behind the byte.
    const std::string& step(char byte)
    {
        if (byte == '{')
            open();
        else if (byte == '}')
            close();
        else if (byte == ';')
            head_.clear();
        else
            head_ += byte;
        return current_;
    }

  private:
    void open()
    {
        const std::string name = opened(head_);
        outer_.push_back(current_);
        if (!name.empty())
            current_ = name;
        else if (isHandler(head_))
            current_ = closed_;  // of a function whose whole body is tried, too
        head_.clear();
    }

    void close()
    {
        if (!outer_.empty()) {
            closed_ = current_;
            current_ = outer_.back();
            outer_.pop_back();
        }
        head_.clear();
    }

    std::string head_;  // since the last brace or semicolon
    std::string current_;
    std::string closed_;  // around the end of the block that was closed last
    std::vector<std::string> outer_;
};

std::vector<std::string> functionsOf(const std::string& code)
{
    std::vector<std::string> functions;
    Braces braces;
    for (const std::string& line : linesOf(code)) {
        // The last to be entered counts: it is the innermost of those that the line has a piece of.
        std::string before = braces.step('\n');
        std::string function = before;
        for (const char byte : line) {
            const std::string& now = braces.step(byte);
            if (byte == '{' && !now.empty())
                function = now;
        }
        functions.push_back(function);
    }
    return functions;
}

}  // namespace

SourceText::SourceText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    read(text.str());
}

SourceText SourceText::fromText(const std::string& text)
{
    SourceText source;
    source.read(text);
    return source;
}

void SourceText::read(const std::string& text)
{
    lines_ = linesOf(text);
    code_ = linesOf(Stripper(true).strip(text));
    functions_ = functionsOf(Stripper(false).strip(text));
}

const std::string& SourceText::line(size_t number) const
{
    static const std::string none;
    return number >= 1 && number <= lines_.size() ? lines_[number - 1] : none;
}

std::vector<size_t> SourceText::linesWith(const std::string& text) const
{
    std::vector<size_t> numbers;
    for (size_t i = 0; i < code_.size(); ++i)
        if (code_[i].find(text) != std::string::npos)
            numbers.push_back(i + 1);
    return numbers;
}

std::string SourceText::functionAt(size_t line) const
{
    return line >= 1 && line <= functions_.size() ? functions_[line - 1] : "";
}
