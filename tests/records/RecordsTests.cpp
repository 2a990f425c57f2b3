#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/records/Attachment.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"
#include "ScrivlyKit/records/Reaction.h"

#include <gtest/gtest.h>

#include <limits>
#include <unordered_set>

using namespace scrivly;

TEST(AppleTime, SecondsUpToTheThresholdNanosecondsBeyond) {
    EXPECT_EQ(AppleTime::date(0).seconds, 0.0);
    EXPECT_EQ(AppleTime::date(100000000000).seconds, 100000000000.0);
    EXPECT_DOUBLE_EQ(AppleTime::date(100000000001).seconds, 100.000000001);
    EXPECT_EQ(AppleTime::date(-100000000000).seconds, -100000000000.0);
    EXPECT_DOUBLE_EQ(AppleTime::date(-5'000'000'000'000'000'000).seconds, -5'000'000'000.0);
    EXPECT_LT(AppleTime::date(std::numeric_limits<std::int64_t>::min()).seconds, 0.0);
    EXPECT_EQ(AppleTime::nanoseconds(Date{1.5}), 1'500'000'000);
}

TEST(Date, ConvertsToTheSystemClockAroundTheReferenceInstant) {
    const Date reference{0};
    EXPECT_EQ(std::chrono::system_clock::to_time_t(reference.toSystemClock()), 978307200);
    const Date later = Date::fromUnixSeconds(1709665629.25);
    EXPECT_DOUBLE_EQ(Date::fromSystemClock(later.toSystemClock()).seconds, later.seconds);
}

TEST(Message, ReactionTargetFromTheStoredAssociatedGUID) {
    EXPECT_EQ(Message::reactionTargetFrom("p:0/ABC"), "ABC");
    EXPECT_EQ(Message::reactionTargetFrom("bp:ABC"), "ABC");
    EXPECT_EQ(Message::reactionTargetFrom("ABC"), "ABC");
    EXPECT_EQ(Message::reactionTargetFrom("p:1/bp:ABC/x"), "bp:ABC/x");
    EXPECT_EQ(Message::reactionTargetFrom(""), std::nullopt);
    EXPECT_EQ(Message::reactionTargetFrom(std::nullopt), std::nullopt);
}

TEST(Message, ReactionTypesFrom2000To3999AreReactions) {
    Message message;
    for (const auto& [type, isReaction] : std::vector<std::pair<std::int64_t, bool>>{
             {0, false},
             {1999, false},
             {2000, true},
             {3999, true},
             {4000, false},
             {-1, false},
             {std::numeric_limits<std::int64_t>::min(), false}}) {
        message.reactionType = type;
        EXPECT_EQ(message.isReaction(), isReaction) << type;
    }
}

TEST(ReactionKind, FromTypeMapsTheCodeModulo1000) {
    using Case = ReactionKind::Case;
    EXPECT_EQ(ReactionKind::fromType(2000, {}), ReactionKind::fixed(Case::loved));
    EXPECT_EQ(ReactionKind::fromType(3001, {}), ReactionKind::fixed(Case::liked));
    EXPECT_EQ(ReactionKind::fromType(2005, {}), ReactionKind::fixed(Case::questioned));
    EXPECT_EQ(ReactionKind::fromType(2006, std::string("🎉")), ReactionKind::emojiReaction("🎉"));
    EXPECT_EQ(ReactionKind::fromType(2006, std::string()), std::nullopt);
    EXPECT_EQ(ReactionKind::fromType(2006, std::nullopt), std::nullopt);
    EXPECT_EQ(ReactionKind::fromType(2007, {}), std::nullopt);
}

TEST(Attachment, NameAndPath) {
    EXPECT_EQ(Attachment::displayName("photo.heic", "~/a/b.heic"), "photo.heic");
    EXPECT_EQ(Attachment::displayName("", "~/a/b.heic"), "b.heic");
    EXPECT_EQ(Attachment::displayName(std::nullopt, std::nullopt), "Attachment");
    EXPECT_EQ(Attachment::displayName("", ""), "Attachment");
    EXPECT_EQ(Attachment::expandedPath("~/Library/a.jpg", "/home/pat"), "/home/pat/Library/a.jpg");
    EXPECT_EQ(Attachment::expandedPath("/var/a.jpg", "/home/pat"), "/var/a.jpg");
    EXPECT_EQ(Attachment::expandedPath("~user/a.jpg", "/home/pat"), "~user/a.jpg");
    EXPECT_EQ(Attachment::expandedPath(std::nullopt, "/home/pat"), std::nullopt);
}

TEST(Records, EqualValuesHashAlike) {
    Chat a;
    a.id = 4;
    a.handles = {Handle{1, "+15550102233", "SMS"}};
    Chat b = a;
    EXPECT_EQ(a, b);
    EXPECT_EQ(std::hash<Chat>{}(a), std::hash<Chat>{}(b));
    b.handles[0].service = "iMessage";
    EXPECT_NE(a, b);
    std::unordered_set<Chat> set{a, b};
    EXPECT_EQ(set.size(), 2U);
}
