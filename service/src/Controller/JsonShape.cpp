#include "JsonShape.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <glib.h>

namespace Carvoy::JsonShape {

namespace {

constexpr size_t MAX_NESTING = 1024;
constexpr size_t LOST = std::string::npos;

/** What a byte outside of a text stands for. */
enum class Mark : unsigned char { NONE, OPENING, CLOSING, QUOTE, HIDING, ASSIGNMENT, SEMICOLON, END };

constexpr std::array<Mark, 256> marksOfBytes()
{
    std::array<Mark, 256> marks{};
    marks['['] = marks['{'] = Mark::OPENING;
    marks[']'] = marks['}'] = Mark::CLOSING;
    marks['"'] = Mark::QUOTE;
    marks['/'] = marks['\''] = Mark::HIDING;
    marks['='] = Mark::ASSIGNMENT;
    marks[';'] = Mark::SEMICOLON;
    marks['\0'] = Mark::END;
    return marks;
}

constexpr std::array<Mark, 256> MARKS = marksOfBytes();

Mark markOf(char c)
{
    return MARKS[static_cast<unsigned char>(c)];
}

/**
 * Reads the four digits of an escape, and of fewer also what stands behind them, which json-glib 1.6 takes
 * with them. False where that is the text's closing quote, or begins the next escape.
 */
bool readDigits(const std::string& text, size_t& position, unsigned& value)
{
    value = 0;
    for (int shift = 12; shift >= 0; shift -= 4) {
        const char c = text[position];
        if (c == '"' || c == '\\' || c == '\0')
            return false;
        ++position;
        if (!g_ascii_isxdigit(c))
            return true;
        value |= static_cast<unsigned>(g_ascii_xdigit_value(c)) << shift;
    }
    return true;
}

/**
 * The position behind the escape at `begin`; LOST for one in which json-glib loses its way. It takes what
 * stands behind half of a character with it, also the quote that closes the text, so that all that follows
 * would be something else to it than to us; and where a wrong half follows it refuses the text and never
 * releases it.
 */
size_t endOfEscape(const std::string& text, size_t begin)
{
    size_t end = begin + 2;
    if (end >= text.size() || text[begin + 1] != 'u' || !g_ascii_isxdigit(text[end]))
        return end;
    unsigned first = 0;
    unsigned second = 0;
    if (!readDigits(text, end, first))
        return LOST;
    if (first < 0xD800 || first > 0xDFFF)
        return end;
    if (text[end] != '\\')
        return text[end] == '"' ? LOST : end + 1;
    if (text[end + 1] != 'u')
        return end + 2;
    end += 2;
    const bool isPair =
        readDigits(text, end, second) && first < 0xDC00 && second >= 0xDC00 && second <= 0xDFFF;
    return isPair ? end : LOST;
}

/** The position of the double quote that closes the text which `begin` is the first byte of, at least the
 * text's size where nothing does; LOST as above. */
size_t endOfString(const std::string& text, size_t begin)
{
    while (begin < text.size() && text[begin] != '"')
        begin = text[begin] == '\\' ? endOfEscape(text, begin) : begin + 1;
    return begin;
}

/** The look at one text. */
class Look {
  public:
    explicit Look(const std::string& text) : text_(text) {}

    bool isFit()
    {
        for (size_t i = 0; i < text_.size(); ++i) {
            if (depth_ > 0)
                i = endOfRun(i);
            else if (!isFitOutside(i))
                return false;
            if (!take(i))
                return false;
        }
        return true;
    }

  private:
    /** The position of the next byte that stands for something, from `position` on; the text's end is one. */
    size_t endOfRun(size_t position) const
    {
        while (markOf(text_[position]) == Mark::NONE)
            ++position;
        return position;
    }

    /**
     * Looks at the byte at `position`, which is in no object or array. False for a second value that is an
     * object or array: json-glib 1.6 takes that, and never releases it. In front of the first there may be a
     * byte order mark, and "var name ="; false also for a name that cannot be one.
     */
    bool isFitOutside(size_t position)
    {
        const char c = text_[position];
        if (isName_) {
            isName_ = c != '=';
            return !strchr("\"'[]{};", c);
        }
        if (hasValue_)
            return markOf(c) != Mark::OPENING;
        if (text_.compare(position, 3, "var") == 0)
            isName_ = true;
        else
            hasValue_ = !strchr(" \t\r\n/\xEF\xBB\xBF", c);
        return true;
    }

    /**
     * Takes what begins at `position`, which is set to its last byte. Behind "var name =" json-glib overlooks
     * a mistake that a semicolon follows, and begins anew, whatever was open: false for a bracket too many,
     * and a semicolon between brackets.
     */
    bool take(size_t& position)
    {
        switch (markOf(text_[position])) {
            case Mark::OPENING:
                return ++depth_ + assignments_ <= MAX_NESTING;
            case Mark::CLOSING:
                return depth_-- > 0;
            case Mark::ASSIGNMENT:
                return depth_ + ++assignments_ <= MAX_NESTING;
            case Mark::SEMICOLON:
                return depth_ == 0;
            case Mark::QUOTE:
                position = endOfString(text_, position + 1);
                return position != LOST;
            case Mark::HIDING:
                position = endOfHidden(position);
                return position != LOST;
            case Mark::NONE:
            case Mark::END:
                break;
        }
        return true;
    }

    /**
     * The position of what closes the comment or the text that begins at `begin`; LOST if nothing does.
     * json-glib takes single quotes, in which nothing is escaped, and comments from one slash to the next.
     */
    size_t endOfHidden(size_t begin)
    {
        if (isPlain_ && !leavePlainJson(begin))
            return LOST;
        return text_.find(text_[begin], begin + 1);
    }

    /**
     * From `position` on all brackets count as opening ones, and "=" like them, wherever they stand, so that
     * nothing can be hidden from the count. False if they are too many. Once for a text: this goes through
     * the rest of it.
     */
    bool leavePlainJson(size_t position)
    {
        isPlain_ = false;
        const auto isLevel = [](char c) {
            return markOf(c) == Mark::OPENING || markOf(c) == Mark::ASSIGNMENT;
        };
        const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(position);
        const auto levels = static_cast<size_t>(std::count_if(begin, text_.end(), isLevel));
        return depth_ + assignments_ + levels <= MAX_NESTING;
    }

    const std::string& text_;
    size_t depth_ = 0;        // brackets that are open
    size_t assignments_ = 0;  // "var name =": json-glib follows it by recursion, and it is never closed
    bool isName_ = false;     // between "var" and "="
    bool hasValue_ = false;
    bool isPlain_ = true;  // no comment or single quote so far
};

}  // namespace

bool isFitForParser(const std::string& text)
{
    return Look(text).isFit();
}

}  // namespace Carvoy::JsonShape
