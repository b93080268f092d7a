// One project file read line by line, each failure naming the file and the line: what the
// readers of the project's files share.
#pragma once

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/XrayMessages.h"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace quarvex {

/// Project lines hold paths and names: far more than the 256 characters of a data line.
inline constexpr std::size_t kProjectLineLength = 4096;

/// A project file open for reading; every failure throws QuarvexError (title "X-ray Project")
/// naming the file and the line.
class ProjectLines {
public:
    explicit ProjectLines(const std::filesystem::path& path)
        : path_(path), reader_(path, kProjectLineLength) {
        if (!reader_.isOpen()) {
            throw QuarvexError("The project file " + path.string() + " is missing.",
                               std::string(kXrayProjectTitle));
        }
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw QuarvexError(path_.string() + ": line " + std::to_string(reader_.lineNumber()) +
                               ": " + what,
                           std::string(kXrayProjectTitle));
    }

    /// The next line into `line`; false at the end of the file.
    bool more(std::string_view& line) {
        const bool read = reader_.next(line);
        if (reader_.notText()) {
            fail("not a text file");
        }
        return read;
    }

    /// The next line; `what` names it when the file has ended.
    std::string_view next(std::string_view what) {
        std::string_view line;
        if (!more(line)) {
            throw QuarvexError(path_.string() + " ends before " + std::string(what) +
                                   " (a count above the lines that follow?)",
                               std::string(kXrayProjectTitle));
        }
        return line;
    }

    /// The next line, which must begin with `tag`: the text after it.
    std::string_view tagged(std::string_view tag) {
        const std::string_view line = next(tag);
        if (!startsWithKey(line, tag)) {
            fail("expected a line beginning with \"" + std::string(tag) + "\"");
        }
        return line.substr(tag.size());
    }

    int count(std::string_view tag) {
        int value = 0;
        if (!readAll(tagged(tag), value) || value < 0) {
            fail("expected a count after \"" + std::string(tag) + "\"");
        }
        return value;
    }

    bool switchValue(std::string_view tag) {
        const std::string_view value = trimmed(tagged(tag));
        if (value != "0" && value != "1") {
            fail("expected 0 or 1 after \"" + std::string(tag) + "\"");
        }
        return value == "1";
    }

    /// Reads every value of the next line (`what` names it in messages).
    template <class... T> void values(std::string_view what, T&... out) {
        if (!readAll(next(what), out...)) {
            fail("expected " + std::string(what));
        }
    }

    template <std::size_t N> void floats(std::string_view what, std::array<float, N>& out) {
        const std::string_view line = next(what);
        ListReader reader(line);
        for (float& value : out) {
            if (reader.read(value) != FieldStatus::Assigned) {
                fail("expected " + std::string(what));
            }
        }
    }

    /// Only blank lines may follow.
    void end() {
        std::string_view line;
        while (more(line)) {
            if (!trimmed(line).empty()) {
                fail("more lines than its count announces");
            }
        }
    }

private:
    std::filesystem::path path_;
    LineReader reader_;
};

} // namespace quarvex
