// A C++ source as text: its lines, where something stands in it, and which function a line belongs to.
#pragma once

#include <string>
#include <vector>

/** Lines are counted from 1. What stands in comments is not code; texts in quotes are. */
class SourceText {
  public:
    /** A file that cannot be read is an empty text. */
    explicit SourceText(const std::string& path);
    static SourceText fromText(const std::string& text);

    /** Empty where there is no such line. */
    const std::string& line(size_t number) const;

    /** The lines whose code holds @p text. */
    std::vector<size_t> linesWith(const std::string& text) const;

    /**
     * The bare name of the innermost function that has a piece of the line in its body, "operator()" for a
     * lambda, empty outside of all.
     */
    std::string functionAt(size_t line) const;

  private:
    SourceText() = default;
    void read(const std::string& text);

    std::vector<std::string> lines_;
    std::vector<std::string> code_;       // the same without comments
    std::vector<std::string> functions_;  // of each line
};
