// What a terminal is, and how text is coloured for it.
#pragma once

#include <string>

namespace Tool {

// How text is drawn; made from a descriptor, or by hand in tests.
struct Style {
    bool colour = false;
    int width = 0;  // columns; 0: nothing is cut

    std::string bold(const std::string& text) const;
    std::string dim(const std::string& text) const;
    std::string red(const std::string& text) const;
    std::string green(const std::string& text) const;
};

// Output is UTF-8 whatever the locale says; column widths need a locale that knows UTF-8.
void useUtf8();

bool isTerminal(int fd);

// A terminal's width and colours; plain and uncut for anything else. NO_COLOR and TERM=dumb: no colour.
Style styleOf(int fd);

}  // namespace Tool
