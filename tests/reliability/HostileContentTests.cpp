#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/pdf/PDFExport.h"
#include "tests/database/TestDatabase.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <ostream>
#include <limits>
#include <sstream>

namespace scrivly {
namespace {

using testing::TestDatabase;
using Value = SQLiteConnection::Value;

const std::string kFFFD = "\xEF\xBF\xBD";
// Right-to-left override, zero-width space and joiner, left-to-right mark: a name that reads
// differently from how it is stored.
const std::string kTrickyName = "Ann\u202Egnp.exe\u200B\u200D\u200E Lee";

// Splits CSV text (CR LF rows, quoted cells with doubled quotes) into rows of cells.
std::vector<std::vector<std::string>> parseCSV(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
    }
    std::vector<std::vector<std::string>> rows(1);
    std::string cell;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                cell += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                cell += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            rows.back().push_back(std::move(cell));
            cell.clear();
        } else if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            rows.back().push_back(std::move(cell));
            cell.clear();
            rows.emplace_back();
            ++i;
        } else {
            cell += c;
        }
    }
    rows.pop_back(); // after the last CR LF
    return rows;
}

std::string withoutWhiteSpace(std::string text) {
    std::erase_if(text, [](unsigned char c) {
        return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f';
    });
    return text;
}

// What pdftotext can give back of a text: it extracts in visual order, so text after a bidi
// override comes out reordered and is left out of the comparison (the CSV checks it exactly).
std::string findablePart(const std::string& text) {
    std::size_t cut = text.size();
    for (const char* control :
         {"\u202A", "\u202B", "\u202D", "\u202E", "\u2066", "\u2067", "\u2068"}) {
        cut = std::min(cut, text.find(control));
    }
    return withoutWhiteSpace(text.substr(0, cut));
}

// The text between the running header and the page numbers of Letter pages, which would
// otherwise interrupt a message that goes on over pages.
std::string pdfText(const std::vector<std::uint8_t>& pdf, const std::string& path) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(pdf.data()), static_cast<std::streamsize>(pdf.size()));
    std::string text;
    if (FILE* pipe = ::popen(
            ("pdftotext -enc UTF-8 -x 0 -y 70 -W 612 -H 650 '" + path + "' - 2>&1").c_str(), "r")) {
        char buffer[65536];
        for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
            text.append(buffer, got);
        }
        ::pclose(pipe);
    }
    return text;
}

// One hostile input: what it puts in the database of chat 1 (whose member is handle 1, named
// kTrickyName), and the texts the exports must then show, in order.
struct HostileCase {
    const char* name;
    std::function<std::vector<std::string>(TestDatabase&)> fill;
};

// Test listings name the case, not the bytes of its function object.
void PrintTo(const HostileCase& hostile, std::ostream* out) { *out << hostile.name; }

std::vector<std::string> brokenText(TestDatabase& db) {
    // Ill-formed UTF-8 and NUL bytes, stored as text; the NUL must not end the text.
    const std::string broken = std::string("before \xFF\xFE mid") + '\0' + "dle \xC3 after";
    const auto id = db.message(1, 100, Value::null(), 1);
    db.connection().run(
        "UPDATE message SET text = CAST(? AS TEXT) WHERE ROWID = ?",
        {Value::blob(std::vector<std::uint8_t>(broken.begin(), broken.end())), Value::integer(id)});
    return {"before " + kFFFD + kFFFD + " mid" + kFFFD + "dle " + kFFFD + " after"};
}

std::vector<std::string> longMessage(TestDatabase& db) {
    // 200 KB of words in one paragraph, each word different so that a lost one shows.
    std::string text;
    for (int i = 0; text.size() < 200000; ++i) {
        char word[16];
        std::snprintf(word, sizeof word, "w%06d ", i);
        text += word;
    }
    text.pop_back();
    db.message(1, 200, Value::text(text), 1);
    return {text};
}

std::vector<std::string> longWord(TestDatabase& db) {
    std::string word;
    for (int i = 0; word.size() < 100000; ++i) {
        word += static_cast<char>('a' + i % 26);
    }
    db.message(1, 300, Value::text(word));
    return {word};
}

std::vector<std::string> manyReactions(TestDatabase& db) {
    const auto target = db.message(1, 400, Value::text("react to me " + kTrickyName));
    db.connection().execute("BEGIN");
    for (int i = 0; i < 2000; ++i) {
        const auto who = db.handle("+1555100" + std::to_string(1000 + i));
        db.message(1, 401 + i, Value::text("Loved a message"), who,
                   {{"associated_message_guid", Value::text("p:0/guid-" + std::to_string(target))},
                    {"associated_message_type", Value::integer(2000 + i % 6)}});
    }
    db.connection().execute("COMMIT");
    return {"react to me " + kTrickyName};
}

std::vector<std::string> manyAttachments(TestDatabase& db) {
    // Ten thousand attachments on one message, none of them on disk.
    const auto carrier = db.message(1, 5000, Value::text("many files"), 1);
    db.connection().execute("BEGIN");
    for (int i = 0; i < 10000; ++i) {
        const auto attachment =
            db.insert("INSERT INTO attachment (filename, mime_type, transfer_name, total_bytes) "
                      "VALUES (?, 'image/jpeg', ?, 1000)",
                      {Value::text("~/Library/Messages/Attachments/f" + std::to_string(i) + ".jpg"),
                       Value::text("f" + std::to_string(i) + ".jpg")});
        db.connection().run("INSERT INTO message_attachment_join VALUES (?, ?)",
                            {Value::integer(carrier), Value::integer(attachment)});
    }
    db.connection().execute("COMMIT");
    return {"many files"};
}

std::vector<std::string> extremeDates(TestDatabase& db) {
    // The earliest and latest instants the stored format holds: year 1 in seconds, and the
    // extremes of nanoseconds. Year 9999 is past them; it is added to the transcript instead.
    db.message(1, -63113904000 + 43200, Value::text("year one"), 1);
    db.message(1, std::numeric_limits<std::int64_t>::min(), Value::text("min"), 1);
    db.message(1, std::numeric_limits<std::int64_t>::max(), Value::text("max"), 1);
    return {"min", "year one", "max"};
}

class HostileContent : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileContent, ExportsKeepEveryMessageWhole) {
    testing::TempDir dir;
    const auto source = dir.file("chat.db");
    std::vector<std::string> expected;
    {
        TestDatabase db(source);
        db.member(db.chat("+15550001"), db.handle("+15550001"));
        expected = GetParam().fill(db);
    }
    const auto reader =
        MessagesReader::ofDatabase(source, dir.path().string(), dir.file("snapshots"));
    const NameBook names({{"+15550001", kTrickyName}});
    auto transcript = Transcript::build(kTrickyName, {kTrickyName}, reader.messages({1}),
                                        std::nullopt, std::nullopt, "Me", names);
    if (std::string(GetParam().name) == "extremeDates") {
        TranscriptEntry last = transcript.entries.back();
        last.id += 1;
        last.date = Date::fromUnixSeconds(253402300799.0); // 9999-12-31 23:59:59 UTC
        last.text = "year 9999";
        transcript.entries.push_back(last);
        expected.push_back("year 9999");
    }
    ASSERT_EQ(transcript.entries.size(), expected.size());
    ExportOptions options;
    options.timeZone = "UTC";
    options.locale = "en_US";
    options.documentTitle = kTrickyName;
    const ExportStrings strings;

    // CSV: every text cell reads back exactly, and nothing else is lost.
    const auto rows = parseCSV(CSVExport::render(transcript, options, strings));
    ASSERT_EQ(rows.size(), transcript.entries.size() + 1);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(rows[i + 1].size(), 8U);
        EXPECT_TRUE(rows[i + 1][5] == expected[i]) << "row " << i + 1;
        EXPECT_EQ(rows[i + 1][3], transcript.entries[i].sender);
        EXPECT_EQ(
            std::count(rows[i + 1][6].begin(), rows[i + 1][6].end(), ';'),
            std::max<std::ptrdiff_t>(
                0, static_cast<std::ptrdiff_t>(transcript.entries[i].attachments.size()) - 1));
        EXPECT_EQ(std::count(rows[i + 1][7].begin(), rows[i + 1][7].end(), ':'),
                  static_cast<std::ptrdiff_t>(transcript.entries[i].reactions.size()));
    }

    // PDF: the text of every message can be found, and every attachment's name.
    const auto pdf = PDFExport::render(transcript, options, strings);
    const auto text = withoutWhiteSpace(pdfText(pdf.data, dir.file("out.pdf")));
    for (const auto& entry : transcript.entries) {
        SCOPED_TRACE(entry.text.substr(0, 40));
        EXPECT_NE(text.find(findablePart(entry.text)), std::string::npos);
        for (const auto& attachment : entry.attachments) {
            ASSERT_NE(text.find(withoutWhiteSpace(attachment.name)), std::string::npos);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Inputs, HostileContent,
                         ::testing::Values(HostileCase{"brokenText", brokenText},
                                           HostileCase{"longMessage", longMessage},
                                           HostileCase{"longWord", longWord},
                                           HostileCase{"manyReactions", manyReactions},
                                           HostileCase{"manyAttachments", manyAttachments},
                                           HostileCase{"extremeDates", extremeDates}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace scrivly
