#include "ScrivlyKit/conversations/Transcript.h"

#include <gtest/gtest.h>

using namespace scrivly;

namespace {

using Case = ReactionKind::Case;

Message message(std::int64_t id, double date, std::optional<std::string> sender,
                std::string text = "hello") {
    Message result;
    result.id = id;
    result.guid = "G" + std::to_string(id);
    result.chatID = 1;
    result.date = Date{date};
    result.isFromMe = !sender;
    result.sender = std::move(sender);
    result.text = std::move(text);
    result.service = "iMessage";
    return result;
}

Message reaction(std::int64_t id, double date, std::optional<std::string> sender,
                 std::int64_t targetID, std::int64_t type,
                 std::optional<std::string> emoji = std::nullopt) {
    auto result = message(id, date, std::move(sender), "Liked “hello”");
    result.reactionTarget = "G" + std::to_string(targetID);
    result.reactionType = type;
    result.reactionEmoji = std::move(emoji);
    return result;
}

Attachment picture(std::int64_t rowID) {
    return Attachment{rowID, "/tmp/p.jpg", "p.jpg", "image/jpeg", "public.jpeg", 1234};
}

ShownReaction shown(std::string who, Case kind, bool isFromMe = false) {
    return ShownReaction{std::move(who), ReactionKind::fixed(kind), isFromMe};
}

ShownReaction shownEmoji(std::string who, std::string emoji) {
    return ShownReaction{std::move(who), ReactionKind::emojiReaction(std::move(emoji)), false};
}

Transcript build(const std::vector<Message>& messages, std::optional<Date> from = std::nullopt,
                 std::optional<Date> to = std::nullopt, const NameBook& names = NameBook()) {
    return Transcript::build("Ann", {"Ann"}, messages, from, to, "Me", names);
}

const std::string kAnn = "+15552013344";
const std::string kBob = "bob@example.com";
const std::string kSmile = "\xF0\x9F\x98\x80";
const std::string kParty = "\xF0\x9F\x8E\x89";

} // namespace

TEST(TranscriptReactions, AddReplaceAndRemove) {
    const NameBook names({{kAnn, "Ann"}, {kBob, "Bob"}});
    struct Row {
        const char* name;
        std::vector<Message> reactions; // all on message 1
        std::vector<ShownReaction> expected;
    };
    const std::vector<Row> rows = {
        {"like", {reaction(10, 5, kAnn, 1, 2001)}, {shown("Ann", Case::liked)}},
        {"like then take it back",
         {reaction(10, 5, kAnn, 1, 2001), reaction(11, 6, kAnn, 1, 3001)},
         {}},
        {"love replaces like",
         {reaction(10, 5, kAnn, 1, 2001), reaction(11, 6, kAnn, 1, 2000)},
         {shown("Ann", Case::loved)}},
        {"two people keep their own",
         {reaction(10, 5, kAnn, 1, 2001), reaction(11, 6, kBob, 1, 2000)},
         {shown("Ann", Case::liked), shown("Bob", Case::loved)}},
        {"removing a kind not held changes nothing",
         {reaction(10, 5, kAnn, 1, 2001), reaction(11, 6, kAnn, 1, 3000),
          reaction(12, 7, kBob, 1, 3001)},
         {shown("Ann", Case::liked)}},
        {"every fixed kind, the last one stays",
         {reaction(10, 5, kAnn, 1, 2002), reaction(11, 5, kAnn, 1, 2003),
          reaction(12, 5, kAnn, 1, 2004), reaction(13, 5, kAnn, 1, 2005)},
         {shown("Ann", Case::questioned)}},
        {"my reaction",
         {reaction(10, 5, std::nullopt, 1, 2003)},
         {shown("Me", Case::laughed, true)}},
        {"emoji accumulate",
         {reaction(10, 5, kAnn, 1, 2006, kSmile), reaction(11, 6, kAnn, 1, 2006, kParty)},
         {shownEmoji("Ann", kSmile), shownEmoji("Ann", kParty)}},
        {"taking back one emoji keeps the other",
         {reaction(10, 5, kAnn, 1, 2006, kSmile), reaction(11, 6, kAnn, 1, 2006, kParty),
          reaction(12, 7, kAnn, 1, 3006, kSmile)},
         {shownEmoji("Ann", kParty)}},
        {"a fixed kind does not replace an emoji",
         {reaction(10, 5, kAnn, 1, 2006, kSmile), reaction(11, 6, kAnn, 1, 2001),
          reaction(12, 7, kAnn, 1, 2000)},
         {shownEmoji("Ann", kSmile), shown("Ann", Case::loved)}},
        {"unusable reactions are dropped",
         {reaction(10, 5, kAnn, 1, 2006, ""), reaction(11, 5, kAnn, 1, 2006),
          reaction(12, 5, kAnn, 1, 2007), reaction(13, 5, kAnn, 1, 3999)},
         {}},
        {"people are matched by name, not by address",
         {reaction(10, 5, "+1 (555) 201-3344", 1, 2001), reaction(11, 6, "5552013344", 1, 3001)},
         {}},
        {"unknown target", {reaction(10, 5, kAnn, 99, 2001)}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Message> messages = {message(1, 1, kBob)};
        messages.insert(messages.end(), row.reactions.begin(), row.reactions.end());
        const auto transcript = Transcript::build("Ann", {"Ann"}, messages, {}, {}, "Me", names);
        ASSERT_EQ(transcript.entries.size(), 1U);
        EXPECT_EQ(transcript.entries.front().reactions, row.expected);
        EXPECT_EQ(transcript.totalInRange, 1);
    }
}

TEST(TranscriptReactions, WithoutTargetOrOnSkippedMessagesAreDropped) {
    auto noTarget = reaction(10, 5, kAnn, 1, 2001);
    noTarget.reactionTarget.reset();
    auto emptyTarget = reaction(11, 5, kAnn, 1, 2001);
    emptyTarget.reactionTarget = "";
    auto emptyGUID = message(2, 2, kAnn);
    emptyGUID.guid.clear();
    const auto transcript = build({message(1, 1, kAnn), emptyGUID, message(3, 3, kAnn, ""),
                                   noTarget, emptyTarget, reaction(12, 6, kAnn, 3, 2000)});
    ASSERT_EQ(transcript.entries.size(), 2U);
    for (const auto& entry : transcript.entries) {
        EXPECT_TRUE(entry.reactions.empty());
    }
}

TEST(TranscriptRange, BoundsAreInclusiveAndReactionsFollowTheirTargets) {
    const std::vector<Message> messages = {
        reaction(20, 5, kBob, 12, 2000),  // before the range, on a message inside it: kept
        message(10, 10, kAnn),            // before the range
        message(11, 20, kAnn),            // on the lower bound
        reaction(21, 25, kBob, 10, 2001), // inside the range, on a message before it: dropped
        message(12, 30, std::nullopt),    // on the upper bound
        message(13, 40, kAnn),            // after the range
        reaction(22, 50, kBob, 11, 2003), // after the range, on a message inside it: kept
    };
    const auto transcript = build(messages, Date{20}, Date{30});

    ASSERT_EQ(transcript.entries.size(), 2U);
    EXPECT_EQ(transcript.entries[0].id, 11);
    EXPECT_EQ(transcript.entries[0].reactions,
              (std::vector<ShownReaction>{shown("bob@example.com", Case::laughed)}));
    EXPECT_EQ(transcript.entries[1].id, 12);
    EXPECT_EQ(transcript.entries[1].sender, "Me");
    EXPECT_EQ(transcript.entries[1].reactions,
              (std::vector<ShownReaction>{shown("bob@example.com", Case::loved)}));
    EXPECT_EQ(transcript.totalInRange, 2);
    EXPECT_EQ(transcript.rangeFirstDate, Date{20});
    EXPECT_EQ(transcript.rangeLastDate, Date{30});
    EXPECT_EQ(transcript.firstDate(), Date{20});
    EXPECT_EQ(transcript.lastDate(), Date{30});
}

TEST(TranscriptRange, OpenBoundsShowEverythingAndAnEmptyRangeNothing) {
    auto bare = message(3, 30, kAnn, ""); // a delivery record: no text, no attachments
    auto photoOnly = message(4, 40, kAnn, "");
    photoOnly.attachments = {picture(1), picture(2)};
    auto withPhoto = message(5, 50, std::nullopt, "look");
    withPhoto.attachments = {picture(3)};
    const std::vector<Message> messages = {message(1, 10, kAnn), message(2, 20, std::nullopt), bare,
                                           photoOnly, withPhoto};

    const auto everything = build(messages);
    ASSERT_EQ(everything.entries.size(), 4U);
    EXPECT_EQ(everything.totalInRange, 4);
    EXPECT_EQ(everything.rangeFirstDate, Date{10});
    EXPECT_EQ(everything.rangeLastDate, Date{50});
    EXPECT_EQ(everything.attachmentCount(), 3U);
    EXPECT_EQ(everything.entries[2].attachments, photoOnly.attachments);

    const auto fromOnly = build(messages, Date{20});
    EXPECT_EQ(fromOnly.totalInRange, 3);
    const auto toOnly = build(messages, std::nullopt, Date{20});
    EXPECT_EQ(toOnly.totalInRange, 2);

    const auto empty = build(messages, Date{100}, Date{200});
    EXPECT_TRUE(empty.entries.empty());
    EXPECT_EQ(empty.totalInRange, 0);
    EXPECT_EQ(empty.rangeFirstDate, std::nullopt);
    EXPECT_EQ(empty.rangeLastDate, std::nullopt);
    EXPECT_EQ(empty.firstDate(), std::nullopt);
    EXPECT_EQ(empty.lastDate(), std::nullopt);
    EXPECT_EQ(empty.attachmentCount(), 0U);
}

TEST(TranscriptEntries, CarryTheMessageAndItsSenderName) {
    NameBook names;
    names.add("5552013344", "Ann Lee");
    auto unknown = message(3, 3, std::nullopt);
    unknown.isFromMe = false; // someone whose handle is unknown
    auto sms = message(4, 4, "bob@example.com");
    sms.service = "SMS";
    const auto transcript = build({message(1, 1, "+1 555 201 3344"), message(2, 2, std::nullopt),
                                   unknown, sms, message(5, 5, "5559870000")},
                                  std::nullopt, std::nullopt, names);

    ASSERT_EQ(transcript.entries.size(), 5U);
    const std::vector<std::string> senders = {"Ann Lee", "Me", "?", "bob@example.com",
                                              "+1 (555) 987-0000"};
    for (std::size_t index = 0; index < senders.size(); ++index) {
        SCOPED_TRACE(index);
        EXPECT_EQ(transcript.entries[index].sender, senders[index]);
    }
    EXPECT_EQ(transcript.entries[0],
              (TranscriptEntry{1, Date{1}, "Ann Lee", false, "hello", {}, {}, "iMessage"}));
    EXPECT_TRUE(transcript.entries[1].isFromMe);
    EXPECT_EQ(transcript.entries[3].service, "SMS");
}
