#include "cli/JsonOutput.h"

#include "common/ListReader.h"
#include "common/TextUtils.h"

namespace quarvex::cli {

double jsonNumber(float value) {
    double widened = value;
    parseReal(shortestText(value), widened);
    return widened;
}

} // namespace quarvex::cli
