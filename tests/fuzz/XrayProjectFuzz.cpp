// Fuzz target: X-ray projects. The input holds the main file, the pattern and the four files of
// phase 1 (kPartSeparator between them). A project that reads must survive a round trip: saved,
// read and saved again, it gives the same files.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "xray/XrayProjNew.h"
#include "xray/XrayProjRead.h"
#include "xray/XrayProjSave.h"

namespace {

using namespace quarvex;

// The project saved as a new project folder in `folder`; the folder's files.
std::vector<std::pair<std::string, std::string>> saved(const XrayProject& project,
                                                       const std::filesystem::path& folder) {
    const auto mainFile = XRAYPROJNEW(folder / "p", project);
    XRAYPROJSAVE(mainFile, project);
    return fuzz::folderContent(folder);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto folder = fuzz::freshFolder();
    const auto parts = fuzz::splitParts(fuzz::asText(data, size), 6);
    std::filesystem::create_directories(folder / "in" / "Phase1");
    const auto mainFile = fuzz::writeFile(folder / "in" / "in.xproj", parts[0]);
    fuzz::writeFile(patternFilePath(mainFile), parts[1]);
    const PhaseFile kinds[] = {PhaseFile::Info, PhaseFile::Peak, PhaseFile::Ref, PhaseFile::Input};
    for (std::size_t k = 0; k < 4; ++k) {
        if (!parts[2 + k].empty()) {
            fuzz::writeFile(phaseFilePath(mainFile, 1, kinds[k]), parts[2 + k]);
        }
    }
    XrayProject project;
    try {
        project = readXrayProject(mainFile);
    } catch (const QuarvexError&) {
        return 0;
    }
    std::filesystem::create_directories(folder / "first");
    std::filesystem::create_directories(folder / "second");
    try {
        const auto first = saved(project, folder / "first");
        const auto second =
            saved(readXrayProject(folder / "first" / "p" / "p.xproj"), folder / "second");
        if (first != second) {
            fuzz::fail("a saved project reads back differently");
        }
    } catch (const QuarvexError& error) {
        fuzz::fail(error.text()); // a project that was read must save and read back
    }
    return 0;
}
