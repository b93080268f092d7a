#include "shell/ReferenceFile.h"

#include "common/AtomicFile.h"

namespace quarvex {

void SET_UP_REF_FILE(int mode, const std::filesystem::path& home, const FileDisplay& display) {
    const std::filesystem::path path = home / kReferenceFileName;
    if (mode == 1) {
        AtomicFile file(path);
        for (const std::string_view line : kReferenceLines) {
            file.stream() << line << '\n';
        }
        file.commit(); // a failure to write the reference file is not reported
    } else if (mode == 2 && display) {
        display(path);
    }
}

} // namespace quarvex
