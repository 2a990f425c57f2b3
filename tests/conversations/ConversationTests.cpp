#include "ScrivlyKit/conversations/Conversation.h"

#include <gtest/gtest.h>

using namespace scrivly;

namespace {

Handle handle(std::string address, std::string service = "iMessage") {
    return Handle{1, std::move(address), std::move(service)};
}

// A one-to-one chat with one handle, one message and a date (seconds after the reference).
Chat direct(std::int64_t id, std::string address, std::string service, double date = 100) {
    Chat chat;
    chat.id = id;
    chat.guid = service + ";-;" + address;
    chat.identifier = address;
    chat.service = service;
    chat.handles = {handle(std::move(address), service)};
    chat.messageCount = 1;
    chat.lastDate = Date{date};
    return chat;
}

Chat groupChat(std::int64_t id, std::vector<std::string> addresses, double date = 100) {
    Chat chat;
    chat.id = id;
    chat.guid = "iMessage;+;chat" + std::to_string(id);
    chat.identifier = "chat" + std::to_string(id);
    chat.service = "iMessage";
    chat.isGroup = true;
    for (auto& address : addresses) {
        chat.handles.push_back(handle(std::move(address)));
    }
    chat.messageCount = 3;
    chat.lastDate = Date{date};
    return chat;
}

std::vector<std::string> ids(const std::vector<Conversation>& conversations) {
    std::vector<std::string> result;
    for (const auto& conversation : conversations) {
        result.push_back(conversation.id);
    }
    return result;
}

} // namespace

TEST(ConversationGrouping, MergesOneNumberAcrossServicesWithoutAddressBook) {
    auto sms = direct(7, "(555) 201-3344", "SMS", 50);
    sms.messageCount = 4;
    auto imessage = direct(3, "+1 555 201 3344", "iMessage", 80);
    imessage.messageCount = 6;
    const auto conversations = Conversations::group({sms, imessage}, NameBook());

    ASSERT_EQ(conversations.size(), 1U);
    const auto& merged = conversations.front();
    EXPECT_EQ(merged.id, "c:p:5552013344");
    EXPECT_EQ(merged.chatIDs, (std::vector<std::int64_t>{3, 7}));
    EXPECT_EQ(merged.services, (std::vector<std::string>{"SMS", "iMessage"}));
    EXPECT_EQ(merged.addresses, (std::vector<std::string>{"(555) 201-3344", "+1 555 201 3344"}));
    EXPECT_EQ(merged.participants, (std::vector<std::string>{"+1 (555) 201-3344"}));
    EXPECT_EQ(merged.messageCount, 10);
    EXPECT_EQ(merged.lastDate, Date{80});
}

TEST(ConversationGrouping, KeysByKindOfChat) {
    NameBook names;
    names.add("+15552013344", "Ann Lee", "card-ann");
    names.add("bob@example.com", "Bob", std::nullopt); // a name without a card

    auto noHandles = direct(4, "lost", "SMS");
    noHandles.handles.clear();
    auto unnamedGroup = groupChat(5, {"a@example.com", "b@example.com"});
    unnamedGroup.guid.clear();
    auto blankAddress = direct(6, "  ", "SMS");

    const std::vector<std::pair<Chat, std::string>> cases = {
        {groupChat(1, {"a@example.com"}), "g:iMessage;+;chat1"},
        {unnamedGroup, "g:5"},
        {noHandles, "x:4"},
        {direct(2, "ann@example.org", "iMessage"), "c:e:ann@example.org"},
        {direct(3, "(555) 201-3344", "SMS"), "k:card-ann"},
        {direct(8, "Bob@Example.com", "iMessage"), "c:e:bob@example.com"},
        {direct(9, "Short Code", "SMS"), "c:o:short code"},
        {blankAddress, "c:  "},
    };
    for (const auto& [chat, key] : cases) {
        SCOPED_TRACE(key);
        const auto conversations = Conversations::group({chat}, names);
        ASSERT_EQ(conversations.size(), 1U);
        EXPECT_EQ(conversations.front().id, key);
    }
}

TEST(ConversationGrouping, MergesEveryAddressOfOneCard) {
    NameBook names;
    names.add("+1 555 201 3344", "Ann Lee", "card-ann");
    names.add("ann@example.com", "Ann Lee", "card-ann");
    const auto conversations = Conversations::group({direct(1, "5552013344", "SMS", 10),
                                                     direct(2, "Ann@Example.com", "iMessage", 20),
                                                     direct(3, "bob@example.com", "iMessage", 15)},
                                                    names);

    ASSERT_EQ(conversations.size(), 2U);
    EXPECT_EQ(conversations[0].id, "k:card-ann");
    EXPECT_EQ(conversations[0].chatIDs, (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(conversations[0].addresses,
              (std::vector<std::string>{"5552013344", "Ann@Example.com"}));
    EXPECT_EQ(conversations[0].title, "Ann Lee");
    EXPECT_EQ(conversations[1].id, "c:e:bob@example.com");
}

TEST(ConversationGrouping, NeverMergesGroupsAndSkipsEmptyChats) {
    auto empty = direct(9, "5552013344", "SMS");
    empty.messageCount = 0;
    const auto conversations =
        Conversations::group({groupChat(1, {"a@example.com", "b@example.com"}, 10),
                              groupChat(2, {"a@example.com", "b@example.com"}, 20), empty},
                             NameBook());
    EXPECT_EQ(ids(conversations),
              (std::vector<std::string>{"g:iMessage;+;chat2", "g:iMessage;+;chat1"}));
    EXPECT_TRUE(conversations.front().isGroup);
}

TEST(ConversationGrouping, TitlesFollowTheFallbackOrder) {
    NameBook names({{"a@example.com", "Ann"},
                    {"b@example.com", "Bob"},
                    {"c@example.com", "Cy"},
                    {"d@example.com", "Dee"},
                    {"e@example.com", "Eve"}});
    const auto fivePeople = groupChat(
        1, {"a@example.com", "b@example.com", "c@example.com", "d@example.com", "e@example.com"});
    const auto fourPeople =
        groupChat(1, {"a@example.com", "b@example.com", "c@example.com", "5552013344"});
    auto named = fivePeople;
    named.displayName = "Book Club";
    auto emptyName = fivePeople;
    emptyName.displayName = "";
    auto emptyGroup = groupChat(1, {});
    emptyGroup.identifier = "chat123456";
    auto noHandles = direct(1, "5552013344", "SMS");
    noHandles.handles.clear();
    auto namedDirect = direct(1, "5552013344", "SMS");
    namedDirect.displayName = "  Work phone";

    const std::vector<std::tuple<const char*, Chat, std::string>> cases = {
        {"five people", fivePeople, "Ann, Bob, Cy + 2 others"},
        {"four people, one unnamed", fourPeople, "Ann, Bob, Cy + 1 other"},
        {"three people", groupChat(1, {"a@example.com", "b@example.com", "c@example.com"}),
         "Ann, Bob, Cy"},
        {"display name", named, "Book Club"},
        {"display name kept as stored", namedDirect, "  Work phone"},
        {"empty display name falls to the identifier", emptyName, "chat1"},
        {"group without handles", emptyGroup, "chat123456"},
        {"one-to-one named", direct(1, "b@example.com", "iMessage"), "Bob"},
        {"one-to-one unnamed", direct(1, "15552013344", "SMS"), "+1 (555) 201-3344"},
        {"no handles: tidied identifier", noHandles, "+1 (555) 201-3344"},
    };
    for (const auto& [name, chat, title] : cases) {
        SCOPED_TRACE(name);
        const auto conversations = Conversations::group({chat}, names);
        ASSERT_EQ(conversations.size(), 1U);
        EXPECT_EQ(conversations.front().title, title);
    }

    const auto localised = Conversations::group(
        {fivePeople}, names, [](std::int64_t count) { return "+" + std::to_string(count); });
    EXPECT_EQ(localised.front().title, "Ann, Bob, Cy + +2");
}

TEST(ConversationGrouping, LookAlikeTitlesGetTheirAddresses) {
    NameBook names;
    names.add("5552013344", "Sam Park", "card-1");
    names.add("sam@example.com", "Sam Park", "card-1");
    names.add("5559870000", "sam park", "card-2");
    names.add("5551112222", "Dana", "card-3");
    auto sameNameGroup = groupChat(10, {"5552013344", "5559870000"}, 5);
    sameNameGroup.displayName = "Sam Park";

    const auto conversations = Conversations::group(
        {direct(1, "5552013344", "SMS", 30), direct(2, "sam@example.com", "iMessage", 30),
         direct(3, "+1 555 987 0000", "SMS", 20), direct(4, "5551112222", "SMS", 10),
         sameNameGroup},
        names);

    ASSERT_EQ(conversations.size(), 4U);
    EXPECT_EQ(conversations[0].detail, "+1 (555) 201-3344, sam@example.com");
    EXPECT_EQ(conversations[1].detail, "+1 (555) 987-0000");
    EXPECT_EQ(conversations[2].title, "Dana");
    EXPECT_EQ(conversations[2].detail, std::nullopt);
    EXPECT_EQ(conversations[3].title, "Sam Park");
    EXPECT_TRUE(conversations[3].isGroup);
    EXPECT_EQ(conversations[3].detail, std::nullopt);

    // A group sharing the title of one person does not make that title a look-alike.
    const auto withGroupOnly =
        Conversations::group({direct(1, "5552013344", "SMS"), sameNameGroup}, names);
    for (const auto& conversation : withGroupOnly) {
        EXPECT_EQ(conversation.detail, std::nullopt);
    }
}

TEST(ConversationGrouping, SortsNewestFirstStablyWithUndatedLast) {
    auto undatedA = direct(1, "a@example.com", "iMessage");
    undatedA.lastDate.reset();
    auto undatedB = direct(2, "b@example.com", "iMessage");
    undatedB.lastDate.reset();
    const auto conversations = Conversations::group(
        {undatedA, direct(3, "c@example.com", "iMessage", -50),
         direct(4, "d@example.com", "iMessage", 200), undatedB,
         direct(5, "e@example.com", "iMessage", 200), direct(6, "f@example.com", "iMessage", 7)},
        NameBook());
    EXPECT_EQ(
        ids(conversations),
        (std::vector<std::string>{"c:e:d@example.com", "c:e:e@example.com", "c:e:f@example.com",
                                  "c:e:c@example.com", "c:e:a@example.com", "c:e:b@example.com"}));

    // A conversation is dated by the newest of its chats.
    auto older = direct(7, "g@example.com", "SMS", 1);
    auto newer = direct(8, "g@example.com", "iMessage", 500);
    auto undated = direct(9, "g@example.com", "iMessage");
    undated.lastDate.reset();
    const auto merged = Conversations::group({older, undated, newer}, NameBook());
    EXPECT_EQ(merged.front().lastDate, Date{500});
}

TEST(ConversationSearch, MatchesByTextAndByDigits) {
    Conversation person;
    person.title = "Ann Lee";
    person.participants = {"Ann Lee", "Dr. Zo\xC3\xAB"};
    person.addresses = {"+1 (555) 201-3344", "ann.lee@example.com"};
    person.detail = "Notes 20";
    // Separate words may be found in different addresses, but digits never run across two.
    Conversation group;
    group.title = "Group";
    group.addresses = {"+1 555 201 3344", "555-777-1234"};

    const std::vector<std::tuple<const Conversation*, std::string, bool>> cases = {
        {&person, "", true},
        {&person, "  \n ", true},
        {&person, "ann", true},
        {&person, "  LEE \n", true},
        {&person, "ZO\xC3\x8B", true}, // Unicode lower case
        {&person, "example.com", true},
        {&person, "555 2013", true}, // the whole query is phone-like: digits 5552013
        {&person, "201 3", true},
        {&person, "1 555", true},
        {&person, "+1 555.201.3344", true},
        {&person, "2013344", true},
        {&person, "20", true},        // too few digits, but "20" is in the detail
        {&person, "13", false},       // in the address digits, but too few to search by
        {&person, "ann 13344", true}, // one word by text, one by digits
        {&person, "ann bob", false},  // both words must match
        {&person, "lee   ann", true},
        {&person, "555 9999", false},
        {&person, "x555", false}, // not phone-like, not in the text
        {&group, "3344 7771", true},
        {&group, "3344555", false},
        {&group, "group 777", true},
        {&group, "13 group", false},
    };
    for (const auto& [conversation, query, expected] : cases) {
        SCOPED_TRACE(query);
        EXPECT_EQ(Conversations::matches(*conversation, query), expected);
    }
}
