// Runs a fuzz target over saved inputs without libFuzzer, so that an ordinary build replays the
// corpora (and every input that once found a fault) as a plain test. Arguments are files or
// folders; a crash or abort fails the test.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                          std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
                if (entry.is_regular_file()) {
                    replay(entry.path());
                    ++count;
                }
            }
        } else {
            replay(path);
            ++count;
        }
    }
    std::cout << "replayed " << count << " inputs\n";
    return count > 0 ? 0 : 1;
}
