// All-or-nothing writing of several files through AtomicFile.
#include "xray/StagedFiles.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"

namespace quarvex {

StagedFiles::StagedFiles(std::string errorTitle) : errorTitle_(std::move(errorTitle)) {}

StagedFiles::~StagedFiles() = default;

std::ostream& StagedFiles::add(const std::filesystem::path& destination) {
    // A folder in the file's place would make its rename fail after others were renamed.
    std::error_code error;
    auto file = std::make_unique<AtomicFile>(destination);
    if (!file->isOpen() || std::filesystem::is_directory(destination, error)) {
        throw QuarvexError("Could not create " + destination.string() + ".", errorTitle_);
    }
    files_.push_back(std::move(file));
    return files_.back()->stream();
}

void StagedFiles::commitAll() {
    for (const auto& file : files_) {
        if (!file->stream().flush()) {
            throw QuarvexError("Could not write " + file->destination().string() +
                                   "; nothing was changed.",
                               errorTitle_);
        }
    }
    for (const auto& file : files_) {
        if (!file->commit()) {
            throw QuarvexError("Could not write " + file->destination().string() + ".",
                               errorTitle_);
        }
    }
    files_.clear();
}

} // namespace quarvex
