// Runs a fuzz target over saved inputs: every file of the directories (or the
// files) given, in name order. Used by the normal test suite to replay the seed
// corpora and the inputs of past crashes on every build, armhf included.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        if (fs::is_directory(argv[i], error)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
        } else if (fs::is_regular_file(argv[i], error)) {
            files.push_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "no inputs found\n");
        return 1;
    }
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // A distinct allocation of exactly the input's size, as the fuzzer passes it.
        std::vector<uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
    }
    std::printf("%zu inputs replayed\n", files.size());
    return 0;
}
