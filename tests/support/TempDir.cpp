#include "tests/support/TempDir.h"

#include <random>
#include <system_error>

namespace scrivly::testing {

TempDir::TempDir() {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        auto candidate = std::filesystem::temp_directory_path() /
                         ("scrivly-test-" + std::to_string(random()) + std::to_string(random()));
        if (std::filesystem::create_directory(candidate)) {
            m_path = std::move(candidate);
            return;
        }
    }
    throw std::runtime_error("could not create a temporary test folder");
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace scrivly::testing
