#include "TestSupport.h"

#include <atomic>
#include <fstream>
#include <random>
#include <sstream>

namespace quarvex::test {

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    const auto unique = std::to_string(std::random_device{}()) + "-" + std::to_string(counter++);
    path_ = std::filesystem::temp_directory_path() / ("quarvex-test-" + unique);
    std::filesystem::create_directories(path_);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempFolder::write(std::string_view name, std::string_view content) const {
    const std::filesystem::path file = path_ / name;
    std::ofstream out(file, std::ios::binary);
    out << content;
    return file;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::filesystem::path sourcePath(std::string_view relative) {
    return std::filesystem::path(QUARVEX_SOURCE_DIR) / relative;
}

} // namespace quarvex::test
