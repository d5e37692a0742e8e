// Gives a fuzz target the inputs of files and folders, and then random ones, without a fuzzer:
//
//     TARGET [--random COUNT] [FILE OR FOLDER...]
//
// So every compiler and every test run sees the inputs that once told something.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Give(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

int GiveAll(const std::filesystem::path& place) {
    if (!std::filesystem::is_directory(place)) {
        Give(place);
        return 1;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        Give(file);
    }
    return static_cast<int>(files.size());
}

void GiveRandom(int count) {
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i) {
        std::vector<std::uint8_t> input(random() % 2000);
        for (std::uint8_t& byte : input) {
            byte = static_cast<std::uint8_t>(random());
        }
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
}

}  // namespace

int main(int argc, char** argv) {
    int given = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--random" && i + 1 < argc) {
            const int count = std::atoi(argv[++i]);
            GiveRandom(count);
            given += count;
        } else {
            given += GiveAll(argument);
        }
    }
    std::printf("%d inputs\n", given);
    return given > 0 ? 0 : 1;
}
