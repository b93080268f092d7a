// Fuzz target: the view settings file "quarvex-view.ini". What the reader takes, written back,
// reads back the same; what it refuses reads as the defaults.
#include "FuzzSupport.h"

#include "shell/ViewSettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const std::string_view text = fuzz::asText(data, size);
    const auto home = fuzz::freshFolder();
    fuzz::writeFile(home / kViewSettingsFileName, text);
    const std::optional<ViewSettings> parsed = parseViewSettings(text);
    const ViewSettings read = readViewSettings(home);
    if (read.intensityNumbers != (parsed && parsed->intensityNumbers)) {
        fuzz::fail("the file read differs from its text parsed");
    }
    if (!writeViewSettings(home, read)) {
        fuzz::fail("the settings could not be written");
    }
    const std::optional<ViewSettings> again = parseViewSettings(viewSettingsText(read));
    if (!again || again->intensityNumbers != read.intensityNumbers ||
        readViewSettings(home).intensityNumbers != read.intensityNumbers) {
        fuzz::fail("the settings written read back differently");
    }
    return 0;
}
