// Free-format (list-directed) reading of values from one text record: the one number and text
// reader behind every file reader of the program.
#pragma once

#include <string>
#include <string_view>

namespace quarvex {

/// What one read did to its variable.
enum class FieldStatus {
    Assigned, ///< a value was read into the variable
    Kept,     ///< a null value, or the record was ended by a slash: the variable keeps its value
    Failed    ///< the value does not parse, or the record ran out of values
};

/// Reads values from one record in list-directed form:
/// - values are separated by blanks (or tabs), by a comma, or by a comma with blanks around it;
/// - two commas in a row, or a comma before the first value, give a null value (variable kept);
/// - a slash ends the record: every later read keeps its variable;
/// - `r*value` repeats a value r times, `r*` gives r null values;
/// - an unquoted text value ends at the first blank, comma or slash; text in quotes or
///   apostrophes keeps its blanks, a doubled quote inside stands for one quote;
/// - reals accept the exponent letters e, E, d, D (`1.5d3`), integers only digits and a sign,
///   logicals `T`, `F`, `.TRUE.`, `.false.` and anything else that starts with [.]t or [.]f.
/// Numbers are converted with std::from_chars, so the locale never matters.
class ListReader {
public:
    explicit ListReader(std::string_view record) : rest_(record) {}

    FieldStatus read(float& value);
    FieldStatus read(double& value);
    FieldStatus read(int& value);
    FieldStatus read(bool& value);
    FieldStatus read(std::string& value);

private:
    enum class ItemKind { Value, Null, End };
    struct Item {
        ItemKind kind = ItemKind::End;
        std::string_view token;
        bool quoted = false;
    };

    Item nextItem();
    Item scanValue();
    std::string_view scanQuoted();
    void skipSeparatorAfterValue();
    template <class Parse> FieldStatus readWith(Parse parse);

    std::string_view rest_;
    Item repeated_;
    int repeatsLeft_ = 0;
    bool slashSeen_ = false;
    std::string unquoteBuffer_;
};

/// Parsers of single tokens, shared with readers that split records themselves.
bool parseReal(std::string_view token, float& value);
bool parseReal(std::string_view token, double& value);
bool parseInteger(std::string_view token, int& value);
bool parseLogical(std::string_view token, bool& value);

/// Reads every value in order, with list-directed semantics: true when no value failed
/// (null values and a closing slash keep the variables as they were).
template <class... T> bool readList(std::string_view record, T&... values) {
    ListReader reader(record);
    return ((reader.read(values) != FieldStatus::Failed) && ...);
}

/// Reads every value in order: true only when every one of them was assigned.
template <class... T> bool readAll(std::string_view record, T&... values) {
    ListReader reader(record);
    return ((reader.read(values) == FieldStatus::Assigned) && ...);
}

/// The same as `readAll(record, first, second)` for two reals, with a fast path for the plain
/// lines that fill spectrum files ("100.5, 7.25"): numbers go straight through std::from_chars.
bool readRealPair(std::string_view record, float& first, float& second);

} // namespace quarvex
