// The sentences that the assistant understands.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace Assistant {

inline constexpr char AddToCart[] = "Commerce Add To Cart";
inline constexpr char CheckOut[] = "Commerce Check Out";
inline constexpr char ShowCart[] = "Show Cart Success";
inline constexpr char SearchedItem[] = "Commerce Searched Item";

// A form of sentences and the action that they mean. Between blanks stands one word: "a|b" is either of them,
// "[a|b]" may be left out, "<nth>" is an ordinal and "<number>" a number, in letters up to ten or in digits.
struct Form {
    const char* words;
    const char* action;
};

inline constexpr std::array<Form, 11> Forms = {{
    {"add [it|this|that] to [my|the] cart", AddToCart},
    {"put it|this|that in|into my|the cart", AddToCart},
    {"check out", CheckOut},
    {"checkout", CheckOut},
    {"pay now", CheckOut},
    {"show|open [me] my|the cart", ShowCart},
    {"what's in my|the cart", ShowCart},
    {"what is in my|the cart", ShowCart},
    {"show|open|choose [me] the <nth> [one|product|item]", SearchedItem},
    {"show|open|choose [me] number|product|item <number>", SearchedItem},
    {"the <nth> one|product|item", SearchedItem},
}};

// What a sentence means.
struct Meaning {
    std::string action;
    std::string item;  // of SearchedItem: its place in the last search, counted from 1, in digits as spoken
};

// Nothing for a sentence that no form matches. Letter case, blanks, and ".", "!" or "?" at the end do not
// count. Any text, of any length.
std::optional<Meaning> understand(const std::string& sentence);

// The answer as the platform's response parser reads it.
std::string nluOf(const Meaning& meaning);

}  // namespace Assistant
