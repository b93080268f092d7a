#include "common/StagedFiles.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"

#include <charconv>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

namespace quarvex {

namespace {

// The journal holds one rename per pair of entries, temporary file then destination, each path
// relative to the journal's folder and written as "<length> <path>\n" (names may hold blanks).
void writeEntry(std::ostream& out, const std::filesystem::path& path,
                const std::filesystem::path& base) {
    const std::string text = path.lexically_relative(base).generic_string();
    out << text.size() << ' ' << text << '\n';
}

// A path that stays below the journal's folder; nullopt for anything else.
std::optional<std::filesystem::path> readEntry(std::string_view& text) {
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const auto used = static_cast<std::size_t>(end - text.data());
    if (error != std::errc{} || used + 2 + length > text.size() || text[used] != ' ' ||
        text[used + 1 + length] != '\n') {
        return std::nullopt;
    }
    const std::filesystem::path path(std::string(text.substr(used + 1, length)));
    text.remove_prefix(used + 2 + length);
    if (path.empty() || path.is_absolute()) {
        return std::nullopt;
    }
    for (const auto& part : path) {
        if (part == "..") {
            return std::nullopt;
        }
    }
    return path;
}

std::filesystem::path folderOf(const std::filesystem::path& path) {
    return path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
}

// Renames, then forces every folder touched to disk.
bool renameAll(const std::vector<std::pair<std::filesystem::path, std::filesystem::path>>& moves) {
    std::set<std::filesystem::path> folders;
    for (const auto& [from, to] : moves) {
        std::error_code error;
        if (std::filesystem::exists(from, error)) {
            std::filesystem::rename(from, to, error);
            if (error) {
                return false;
            }
        }
        folders.insert(folderOf(to));
    }
    for (const auto& folder : folders) {
        syncToDisk(folder);
    }
    return true;
}

} // namespace

StagedFiles::StagedFiles(std::filesystem::path journal, std::string errorTitle,
                         CommitStepHook beforeStep)
    : journal_(std::move(journal)), errorTitle_(std::move(errorTitle)),
      beforeStep_(std::move(beforeStep)) {}

StagedFiles::~StagedFiles() = default;

void StagedFiles::step(int number) const {
    if (beforeStep_) {
        beforeStep_(number);
    }
}

void StagedFiles::fail(const std::string& text) const {
    throw QuarvexError(text, errorTitle_);
}

std::ostream& StagedFiles::add(const std::filesystem::path& destination) {
    // A folder in the file's place would make its rename fail after others were renamed.
    std::error_code error;
    auto file = std::make_unique<AtomicFile>(destination);
    if (!file->isOpen() || std::filesystem::is_directory(destination, error)) {
        fail("Could not create " + destination.string() + ".");
    }
    files_.push_back(std::move(file));
    return files_.back()->stream();
}

void StagedFiles::commitAll() {
    const int count = static_cast<int>(files_.size());
    for (int k = 0; k < count; ++k) {
        step(k);
        if (!files_[static_cast<std::size_t>(k)]->writeOut()) {
            fail("Could not write " + files_[static_cast<std::size_t>(k)]->destination().string() +
                 "; nothing was changed.");
        }
    }
    step(count);
    const std::filesystem::path base = folderOf(journal_);
    std::vector<std::pair<std::filesystem::path, std::filesystem::path>> moves;
    {
        AtomicFile journal(journal_);
        for (const auto& file : files_) {
            writeEntry(journal.stream(), file->temporary(), base);
            writeEntry(journal.stream(), file->destination(), base);
            moves.emplace_back(file->temporary(), file->destination());
        }
        if (!journal.commit()) {
            fail("Could not write " + journal_.string() + "; nothing was changed.");
        }
    }
    // From here on the new set is the written one: its temporary files belong to the journal.
    for (const auto& file : files_) {
        file->keepTemporary();
    }
    files_.clear();
    for (int k = 0; k < count; ++k) {
        step(count + 1 + k);
        if (!renameAll({moves[static_cast<std::size_t>(k)]})) {
            fail("Could not write " + moves[static_cast<std::size_t>(k)].second.string() + ".");
        }
    }
    step(2 * count + 1);
    std::error_code ignored;
    std::filesystem::remove(journal_, ignored);
    syncToDisk(base);
}

void finishInterruptedCommit(const std::filesystem::path& journal, const std::string& errorTitle) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(journal, error)) {
        return;
    }
    std::ifstream in(journal, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    const std::string text = content.str();
    std::string_view rest = text;
    const std::filesystem::path base = folderOf(journal);
    std::vector<std::pair<std::filesystem::path, std::filesystem::path>> moves;
    while (!rest.empty()) {
        const auto from = readEntry(rest);
        const auto to = from ? readEntry(rest) : std::nullopt;
        if (!to || from->filename().string().find(kTemporaryMarker) == std::string::npos) {
            throw QuarvexError("The record of an interrupted save, " + journal.string() +
                                   ", is damaged: the files it names may be from different saves.",
                               errorTitle);
        }
        moves.emplace_back(base / *from, base / *to);
    }
    if (!in || !renameAll(moves)) {
        throw QuarvexError("An interrupted save could not be completed: " + journal.string() +
                               " names files that cannot be put in place.",
                           errorTitle);
    }
    std::filesystem::remove(journal, error);
    syncToDisk(base);
}

} // namespace quarvex
