// The decoders of a backup's parts (keybag, archived file records, Manifest.mbdb) and the
// cryptography checked against published vectors and values computed independently.
#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/backup/FileRecord.h"
#include "ScrivlyKit/backup/Keybag.h"
#include "ScrivlyKit/backup/ManifestMbdb.h"
#include "ScrivlyKit/backup/PropertyList.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace scrivly {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes fromHex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

Bytes sequence(std::uint8_t from, std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(from + i);
    }
    return bytes;
}

std::string hex(std::span<const std::uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const auto byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

// What a failed parse said, or "" when it succeeded.
std::string damage(const std::function<void()>& action) {
    try {
        action();
    } catch (const BackupError& error) {
        EXPECT_EQ(error.kind(), BackupError::Kind::damaged) << error.what();
        return error.what();
    }
    return "";
}

TEST(BackupCrypto, KeyWrapMatchesRFC3394AndRefusesOtherKeys) {
    // RFC 3394, 4.6: 256 bits of key data wrapped with a 256-bit key.
    const Crypto::SecretKey kek(sequence(0, 32));
    const Crypto::SecretKey key(
        fromHex("00112233445566778899aabbccddeeff000102030405060708090a0b0c0d0e0f"));
    const auto wrapped = Crypto::wrapKey(kek, key);
    EXPECT_EQ(hex(wrapped),
              "28c9f404c4b810f4cbccb35cfb87f8263f5786e2d80ed326cbc7f0e71a99f43bfb988b9b7a02dd21");
    const auto unwrapped = Crypto::unwrapKey(kek, wrapped);
    ASSERT_TRUE(unwrapped);
    EXPECT_EQ(hex(unwrapped->bytes()), hex(key.bytes()));

    EXPECT_FALSE(Crypto::unwrapKey(Crypto::SecretKey(sequence(1, 32)), wrapped));
    auto flipped = wrapped;
    flipped[20] ^= 1;
    EXPECT_FALSE(Crypto::unwrapKey(kek, flipped));
    EXPECT_FALSE(Crypto::unwrapKey(kek, std::span(wrapped).first(32)));
}

TEST(BackupCrypto, KeyEncryptionKeyChainsBothDerivations) {
    // Expected keys computed with Python's hashlib.pbkdf2_hmac.
    Keybag keybag;
    keybag.salt = sequence(20, 20);
    keybag.iterations = 10;
    const std::string password = "p\xC3\xA4ssword";
    EXPECT_EQ(hex(keybag.keyEncryptionKey(password, {}).bytes()),
              "22c3e148a9cd67cf785f7292ede117b98f224fe48f6950f9bf1e54708256bc3b");
    keybag.passwordIterations = 100;
    keybag.passwordSalt = sequence(0, 20);
    EXPECT_EQ(hex(keybag.keyEncryptionKey(password, {}).bytes()),
              "a711e6504d1fd58b084aa9807b5e4f37139cc92bb84ec637a4bb7b766ffd41c0");

    std::stop_source stop;
    stop.request_stop();
    try {
        (void)keybag.keyEncryptionKey(password, stop.get_token());
        ADD_FAILURE() << "a requested stop was ignored";
    } catch (const BackupError& error) {
        EXPECT_EQ(error.kind(), BackupError::Kind::cancelled);
    }
}

TEST(BackupCrypto, CBCRoundTripsPieceByPieceAndPadsToWholeBlocks) {
    const auto key = Crypto::SecretKey::random();
    for (const std::size_t length : {0u, 1u, 15u, 16u, 17u, 100'000u}) {
        SCOPED_TRACE(length);
        const auto plain = Crypto::randomBytes(length);
        Bytes encrypted;
        Crypto::CBCCipher encrypt(key, Crypto::CBCCipher::Direction::encrypt);
        encrypt.update(plain, encrypted);
        encrypt.finish(encrypted);
        EXPECT_EQ(encrypted.size(), (length / 16 + 1) * 16);

        // Fed in uneven pieces, as reads from a file come.
        Bytes decrypted;
        Crypto::CBCCipher decrypt(key, Crypto::CBCCipher::Direction::decrypt);
        for (std::size_t at = 0; at < encrypted.size(); at += 7000) {
            decrypt.update(std::span(encrypted).subspan(
                               at, std::min<std::size_t>(7000, encrypted.size() - at)),
                           decrypted);
        }
        decrypt.finish(decrypted);
        ASSERT_EQ(decrypted.size(), encrypted.size());
        decrypted.resize(length);
        EXPECT_EQ(decrypted, plain);
    }
}

// A keybag as a phone writes it: header, then three classes, two of them password-wrapped.
Keybag sampleKeybag() {
    Keybag keybag;
    keybag.version = 3;
    keybag.type = 1;
    keybag.uuid = sequence(1, 16);
    keybag.hmck = sequence(2, 40);
    keybag.salt = sequence(3, 20);
    keybag.iterations = 10'000;
    keybag.passwordWrapType = 1;
    keybag.passwordIterations = 10'000'000;
    keybag.passwordSalt = sequence(4, 20);
    keybag.classes = {{sequence(5, 16), 1, 3, 0, sequence(6, 40)},
                      {sequence(7, 16), 2, 1, 1, {}},
                      {sequence(8, 16), 3, 2, 0, sequence(9, 40)}};
    return keybag;
}

// The offsets at which the keybag's records start, and its end.
std::set<std::size_t> recordBoundaries(const Bytes& bytes) {
    std::set<std::size_t> boundaries;
    for (std::size_t at = 0; at + 8 <= bytes.size();) {
        boundaries.insert(at);
        at += 8 + ((std::size_t{bytes[at + 4]} << 24) | (std::size_t{bytes[at + 5]} << 16) |
                   (std::size_t{bytes[at + 6]} << 8) | bytes[at + 7]);
    }
    boundaries.insert(bytes.size());
    return boundaries;
}

// Removes the first record with the tag (after skipping `skip` of them).
Bytes withoutRecord(const Bytes& bytes, std::string_view tag, int skip = 0) {
    const auto boundaries = recordBoundaries(bytes);
    for (auto it = boundaries.begin(); std::next(it) != boundaries.end(); ++it) {
        if (std::string_view(reinterpret_cast<const char*>(bytes.data() + *it), 4) == tag &&
            skip-- == 0) {
            Bytes out(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(*it));
            out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(*std::next(it)),
                       bytes.end());
            return out;
        }
    }
    ADD_FAILURE() << "no record " << tag;
    return bytes;
}

TEST(KeybagParse, ReadsWhatItWrites) {
    const auto keybag = sampleKeybag();
    EXPECT_EQ(Keybag::parse(keybag.encode()), keybag);
}

TEST(KeybagParse, DamagedKeybagsSayWhatIsWrong) {
    const auto valid = sampleKeybag().encode();
    const auto changed = [](const std::function<void(Keybag&)>& change) {
        auto keybag = sampleKeybag();
        change(keybag);
        return keybag.encode();
    };
    auto misaligned = valid;
    misaligned[7] += 1; // VERS now takes a byte of the next record
    auto pastEnd = valid;
    pastEnd[*std::prev(recordBoundaries(valid).end(), 2) + 7] += 1;

    const struct {
        const char* name;
        Bytes bytes;
        const char* expected;
    } cases[] = {
        {"cut inside a value", Bytes(valid.begin(), valid.end() - 3), "cut short"},
        {"cut inside a header", Bytes(valid.begin(), valid.begin() + 5), "cut short"},
        {"length past the end", pastEnd, "cut short"},
        {"length one too long", misaligned, "VERS of the wrong length"},
        {"no SALT", withoutRecord(valid, "SALT"), "has no SALT"},
        {"no ITER", withoutRecord(valid, "ITER"), "has no ITER"},
        {"no WPKY", withoutRecord(valid, "WPKY"), "has no WPKY for class 1"},
        {"DPIC without DPSL", withoutRecord(valid, "DPSL"), "only one of DPIC and DPSL"},
        {"short SALT", changed([](Keybag& k) { k.salt.pop_back(); }), "SALT of the wrong length"},
        {"short WPKY", changed([](Keybag& k) { k.classes[0].wrappedKey.resize(32); }),
         "WPKY of the wrong length"},
        {"absurd DPIC", changed([](Keybag& k) { k.passwordIterations = 0xFFFFFFFF; }), "absurd"},
        {"absurd ITER", changed([](Keybag& k) { k.iterations = Keybag::kMaxIterations + 1; }),
         "absurd"},
        {"zero ITER", changed([](Keybag& k) { k.iterations = 0; }), "zero rounds"},
        {"no password class", changed([](Keybag& k) { k.classes[0].wrap = k.classes[2].wrap = 1; }),
         "no class key that a password opens"},
        {"no classes", changed([](Keybag& k) { k.classes.clear(); }),
         "no class key that a password opens"},
        {"CLAS before any class", withoutRecord(valid, "UUID", 1), "CLAS outside a class entry"},
        {"empty", Bytes(), "has no SALT"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        EXPECT_NE(damage([&] { (void)Keybag::parse(entry.bytes); }).find(entry.expected),
                  std::string::npos);
    }
}

TEST(KeybagParse, EveryTruncationIsRefusedOrParsesAtARecordEnd) {
    const auto valid = sampleKeybag().encode();
    const auto boundaries = recordBoundaries(valid);
    for (std::size_t length = 0; length < valid.size(); ++length) {
        SCOPED_TRACE(length);
        const auto error = damage([&] { (void)Keybag::parse(std::span(valid).first(length)); });
        if (!boundaries.contains(length)) {
            EXPECT_NE(error.find("cut short"), std::string::npos);
        }
    }
}

TEST(KeybagUnlock, OpensPasswordClassesOnlyAndTellsAWrongPassword) {
    auto keybag = sampleKeybag();
    keybag.iterations = 1;
    keybag.passwordIterations = 1;
    const auto kek = keybag.keyEncryptionKey("secret", {});
    const auto classKey = Crypto::SecretKey::random();
    keybag.classes[2].wrappedKey = Crypto::wrapKey(kek, classKey);

    // Class 1's key is damaged and class 2 is not password-wrapped: only class 3 opens.
    const auto keys = keybag.unlock("secret", {});
    ASSERT_EQ(keys.size(), 1U);
    EXPECT_EQ(hex(keys.at(3).bytes()), hex(classKey.bytes()));

    try {
        (void)keybag.unlock("Secret", {});
        ADD_FAILURE() << "a wrong password opened the keybag";
    } catch (const BackupError& error) {
        EXPECT_EQ(error.kind(), BackupError::Kind::wrongPassword);
        EXPECT_NE(std::string(error.what()).find("cannot be recovered"), std::string::npos);
    }
}

FileRecord sampleRecord(bool encrypted) {
    FileRecord record;
    record.relativePath = "Library/SMS/sms.db";
    record.size = 5'000'000'000;
    record.mode = 0100644;
    record.protectionClass = 3;
    if (encrypted) {
        record.encryptionKey = sequence(3, 44);
    }
    return record;
}

// An archive with the MBFile's members replaced as change says.
Bytes archive(const std::function<void(PropertyList& file, PropertyList& objects)>& change) {
    auto file = PropertyList::dictionary();
    file.set("Size", PropertyList::integer(12));
    file.set("Mode", PropertyList::integer(0100644));
    file.set("RelativePath", PropertyList::uid(2));
    file.set("EncryptionKey", PropertyList::uid(3));
    auto key = PropertyList::dictionary();
    key.set("NS.data", PropertyList::data(sequence(0, 44)));
    auto objects = PropertyList::array();
    change(file, key);
    objects.append(PropertyList::string("$null"));
    objects.append(std::move(file));
    objects.append(PropertyList::string("Library/x"));
    objects.append(std::move(key));
    auto top = PropertyList::dictionary();
    top.set("root", PropertyList::uid(1));
    auto root = PropertyList::dictionary();
    root.set("$top", std::move(top));
    root.set("$objects", std::move(objects));
    return root.binary();
}

TEST(FileRecordDecode, ReadsWhatItWritesAndInlineValues) {
    for (const bool encrypted : {false, true}) {
        const auto record = sampleRecord(encrypted);
        EXPECT_EQ(FileRecord::decode(record.encode()), record);
    }
    const auto inline_ = FileRecord::decode(archive([](PropertyList& file, PropertyList&) {
        file.set("RelativePath", PropertyList::string("Library/inline"));
        file.set("EncryptionKey", PropertyList::data(sequence(1, 44)));
    }));
    ASSERT_TRUE(inline_);
    EXPECT_EQ(inline_->relativePath, "Library/inline");
    EXPECT_EQ(inline_->encryptionKey, sequence(1, 44));
    EXPECT_EQ(inline_->kind(), FileRecord::Kind::file);
}

TEST(FileRecordDecode, RecordsThatDontHoldTogetherGiveNothing) {
    using Change = std::function<void(PropertyList&, PropertyList&)>;
    const struct {
        const char* name;
        Change change;
    } cases[] = {
        {"no Size", [](PropertyList& f, PropertyList&) { f = PropertyList::dictionary(); }},
        {"Size as text",
         [](PropertyList& f, PropertyList&) { f.set("Size", PropertyList::string("12")); }},
        {"Mode as data",
         [](PropertyList& f, PropertyList&) { f.set("Mode", PropertyList::data(sequence(0, 2))); }},
        {"Mode too large",
         [](PropertyList& f, PropertyList&) { f.set("Mode", PropertyList::integer(1ULL << 40)); }},
        {"path out of range",
         [](PropertyList& f, PropertyList&) { f.set("RelativePath", PropertyList::uid(99)); }},
        {"path to the key",
         [](PropertyList& f, PropertyList&) { f.set("RelativePath", PropertyList::uid(3)); }},
        {"key to a text",
         [](PropertyList& f, PropertyList&) { f.set("EncryptionKey", PropertyList::uid(2)); }},
        {"key without NS.data",
         [](PropertyList&, PropertyList& k) { k = PropertyList::dictionary(); }},
        {"key NS.data as text",
         [](PropertyList&, PropertyList& k) { k.set("NS.data", PropertyList::string("x")); }},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        EXPECT_FALSE(FileRecord::decode(archive(entry.change)));
    }

    const auto rootless = [](const std::function<void(PropertyList&)>& change) {
        auto root = PropertyList::dictionary();
        auto objects = PropertyList::array();
        objects.append(PropertyList::string("$null"));
        root.set("$objects", std::move(objects));
        change(root);
        return root.binary();
    };
    EXPECT_FALSE(FileRecord::decode(rootless([](PropertyList&) {})));
    EXPECT_FALSE(FileRecord::decode(rootless([](PropertyList& root) {
        auto top = PropertyList::dictionary();
        top.set("root", PropertyList::uid(0)); // "$null", not a dictionary
        root.set("$top", std::move(top));
    })));
    EXPECT_FALSE(FileRecord::decode(PropertyList::array().binary()));
    const auto valid = sampleRecord(true).encode();
    for (std::size_t length = 0; length < valid.size(); ++length) {
        EXPECT_FALSE(FileRecord::decode(std::span(valid).first(length))) << length;
    }
}

std::vector<ManifestMbdb::Record> sampleMbdb() {
    ManifestMbdb::Record sms;
    sms.domain = "HomeDomain";
    sms.path = "Library/SMS/sms.db";
    sms.digest = sequence(1, 20);
    sms.encryptionKey = sequence(2, 44);
    sms.mode = 0100644;
    sms.inode = 1ULL << 40;
    sms.userID = sms.groupID = 501;
    sms.modified = 1'700'000'000;
    sms.size = 5'000'000'000;
    sms.protectionClass = 3;
    sms.properties = {{"com.apple.assetsd.UUID", "ABC"}, {"empty", ""}};
    ManifestMbdb::Record link;
    link.domain = "MediaDomain";
    link.path = "Media/link";
    link.linkTarget = "/var/mobile/elsewhere";
    link.mode = 0120755;
    return {sms, link};
}

TEST(ManifestMbdbParse, ReadsWhatItWritesAndNamesFilesBySHA1) {
    const auto records = sampleMbdb();
    EXPECT_EQ(ManifestMbdb::parse(ManifestMbdb::encode(records)), records);
    EXPECT_EQ(records[0].fileID(), "3d0d7e5fb2ce288813306e4d4636395e047a3d28");
}

TEST(ManifestMbdbParse, WrongSignatureAndEveryCutAreRefused) {
    auto bytes = ManifestMbdb::encode(sampleMbdb());
    const auto firstRecordEnd = ManifestMbdb::encode({sampleMbdb()[0]}).size();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        SCOPED_TRACE(length);
        const auto error =
            damage([&] { (void)ManifestMbdb::parse(std::span(bytes).first(length)); });
        if (length < 6) {
            EXPECT_NE(error.find("signature"), std::string::npos);
        } else if (length != 6 && length != firstRecordEnd) {
            EXPECT_NE(error.find("cut short"), std::string::npos);
        }
    }
    bytes[4] = 4;
    EXPECT_NE(damage([&] { (void)ManifestMbdb::parse(bytes); }).find("signature"),
              std::string::npos);
}

} // namespace
} // namespace scrivly
