// The one error type of the program: a message for the user with the title of its box.
#pragma once

#include <stdexcept>
#include <string>

namespace quarvex {

/// Raised by operations that end with a message to the user. The GUI shows `text()` in a message
/// box titled `title()`; the CLI prints "title: text" to stderr and exits non-zero.
class QuarvexError : public std::runtime_error {
public:
    QuarvexError(std::string text, std::string title);

    const std::string& text() const noexcept { return text_; }
    const std::string& title() const noexcept { return title_; }

private:
    std::string text_;
    std::string title_;
};

} // namespace quarvex
