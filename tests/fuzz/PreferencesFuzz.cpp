// Fuzz target: the preferences file "QV.ini". Whatever was read writes and reads back the same.
#include "FuzzSupport.h"

#include "shell/Preferences.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder();
    std::filesystem::create_directories(folder / "a");
    std::filesystem::create_directories(folder / "b");
    fuzz::writeFile(folder / "a" / kPreferencesFileName, fuzz::asText(data, size));
    Preferences read;
    INI_PREF_SETUP(2, folder / "a", read);
    INI_PREF_SETUP(1, folder / "a", read);
    Preferences again;
    INI_PREF_SETUP(2, folder / "a", again);
    INI_PREF_SETUP(1, folder / "b", again);
    if (fuzz::folderContent(folder / "a") != fuzz::folderContent(folder / "b")) {
        fuzz::fail("preferences read back differently");
    }
    return 0;
}
