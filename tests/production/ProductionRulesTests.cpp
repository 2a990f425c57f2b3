// The small rules of a production: sizes as people write them and file names that only labels
// and harmless names make.

#include "ScrivlyKit/production/ProductionRules.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace scrivly::testing {
namespace {

TEST(ProductionRules, ParsesSizes) {
    struct Row {
        const char* text;
        std::optional<std::uint64_t> bytes;
    };
    const Row rows[] = {
        {"35MB", 35'000'000},     {"500KB", 500'000},      {"500kb", 500'000},
        {"1.5GB", 1'500'000'000}, {"2M", 2'000'000},       {"20000", 20'000},
        {"20000B", 20'000},       {"0.5KB", 500},          {"", std::nullopt},
        {"MB", std::nullopt},     {"0", std::nullopt},     {"-5MB", std::nullopt},
        {"35 MB", std::nullopt},  {"35MiB", std::nullopt}, {"1.2.3MB", std::nullopt},
        {".5MB", std::nullopt},   {"5.MB", std::nullopt},  {"99999999999TB", std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ProductionRules::parseByteSize(row.text), row.bytes);
    }
}

TEST(ProductionRules, AcceptsOnlyPrefixesThatCanNameFiles) {
    struct Row {
        std::string prefix;
        bool usable;
    };
    const Row rows[] = {
        {"SMITH-", true},  {"ABC", true},   {"Case 24 ", true},
        {"Müller_", true}, {"", false},     {"   ", false},
        {"SMITH/", false}, {"../X", false}, {std::string("A\0B", 3), false},
        {"A\nB", false},   {"A\tB", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.prefix);
        EXPECT_EQ(!ProductionRules::prefixProblem(row.prefix).has_value(), row.usable);
    }
}

TEST(ProductionRules, MakesHarmlessNames) {
    const std::string longStem(300, 'a');
    // 150 two-byte letters: a cut at 200 bytes may not split one.
    std::string umlauts;
    for (int count = 0; count < 150; ++count) {
        umlauts += "\u00FC";
    }
    struct Row {
        const char* name;
        std::string given;
        std::string expected;
    };
    const Row rows[] = {
        {"plain", "IMG_4021.HEIC", "IMG_4021.HEIC"},
        {"slash", "a/b/../c.png", "a_b_.._c.png"},
        {"controls", "a\nb\x7F.txt", "a_b_.txt"},
        {"nul", std::string("a\0b", 3), "a_b"},
        {"dots", "..", "attachment"},
        {"dot", ".", "attachment"},
        {"empty", "", "attachment"},
        {"blank", "   ", "attachment"},
        {"broken UTF-8", "caf\xC3.jpg", "caf\xEF\xBF\xBD.jpg"},
        {"long, extension kept", longStem + ".jpeg", std::string(195, 'a') + ".jpeg"},
        {"long, extension too long", longStem + "." + std::string(40, 'x'), std::string(200, 'a')},
        {"long UTF-8 cut between characters", umlauts + ".jpeg", umlauts.substr(0, 194) + ".jpeg"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string safe = ProductionRules::safeName(row.given);
        EXPECT_EQ(safe, row.expected);
        EXPECT_LE(safe.size(), 200U);
    }
}

TEST(ProductionRules, NamesNativesByLabelAndCounter) {
    EXPECT_EQ(ProductionRules::nativeFileName("SMITH-000017", 1, "IMG_4021.HEIC"),
              "SMITH-000017-01 IMG_4021.HEIC");
    EXPECT_EQ(ProductionRules::nativeFileName("X9", 12, "a/b"), "X9-12 a_b");
    EXPECT_EQ(ProductionRules::nativeFileName("X9", 123, "c"), "X9-123 c");
    EXPECT_EQ(ProductionRules::batesRange("A1", "A1"), "A1");
    EXPECT_EQ(ProductionRules::batesRange("A1", "A3"), "A1 \u2013 A3");
}

} // namespace
} // namespace scrivly::testing
