// A column of short texts, one per library entry, held back to back in one buffer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Texts indexed 0..size()-1, stored end to end with a table of their ends: a library of
/// 100,000 entries keeps a description field in a few MB instead of one string object (and
/// often one allocation) per entry, which is what kept a search's memory growing with the
/// library.
class TextColumn {
public:
    std::size_t size() const { return ends_.size(); }
    bool empty() const { return ends_.empty(); }

    /// Appends `text` as the last element. Throws std::length_error past 4 GiB of text.
    void push_back(std::string_view text);
    /// Element `k` as a view, valid until the column is changed.
    std::string_view view(std::size_t k) const;
    /// Element `k` as a string, for the callers that keep or convert it.
    std::string operator[](std::size_t k) const { return std::string(view(k)); }
    /// Makes room for `elements` more elements of `bytes` text in all, when they are known.
    void reserve(std::size_t elements, std::size_t bytes);
    /// Returns the room kept for further elements.
    void shrink_to_fit();

private:
    std::string text_;
    std::vector<std::uint32_t> ends_;
};

} // namespace quarvex
