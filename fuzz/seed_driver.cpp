// Runs a fuzz target over its seeds, without libFuzzer: each file as it is; a short one also cut off at every length
// and with every byte changed. Whatever does not hold ends the process, so its exit status is the result.

#include "Require.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

constexpr std::size_t kShort = 256;

void run(const std::string& input) {
    // A buffer of exactly that size, so that AddressSanitizer sees a read past it.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::size_t runAround(std::string input) {
    if (input.size() > kShort) return 0;
    for (std::size_t length = 0; length < input.size(); ++length) run(input.substr(0, length));
    for (char& byte : input) {
        const char before = byte;
        byte = static_cast<char>(byte ^ 0x15);
        run(input);
        byte = before;
    }
    return 2 * input.size();
}

} // namespace

int main(int count, char** arguments) {
    std::size_t inputs = 0;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < count; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(stream), {}};
        std::fprintf(stderr, "%s (%zu bytes)\n", file.string().c_str(), input.size());
        Fuzz::Require(stream.good() || stream.eof(), "a seed can be read");
        Fuzz::thorough = true;
        run(input);
        Fuzz::thorough = false;
        inputs += 1 + runAround(input);
    }
    Fuzz::Require(!files.empty(), "there are seeds");
    std::printf("%zu seeds, %zu inputs\n", files.size(), inputs);
    return 0;
}
