// Micro-benchmarks of the pure functions that run once per message or per chat, on made-up data
// shaped like a large history.

#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/text/TypedStream.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace scrivly::bench {
namespace {

std::string address(std::size_t index) {
    char text[32];
    if (index % 7 == 0) {
        std::snprintf(text, sizeof text, "Friend%04zu@Example.com", index);
    } else {
        std::snprintf(text, sizeof text, "+1 (555) %03zu-%04zu", index / 10000 % 1000,
                      index % 10000);
    }
    return text;
}

std::string messageText(std::size_t index) {
    static const std::vector<std::string> kTexts = {
        "ok", "Running late, see you at 7 😅",
        "Can you pick up milk, bread and coffee on the way home?\nAnd the dry cleaning.",
        "=SUM(A1) is what the spreadsheet says, \"apparently\"", std::string(280, 'x') + " 🎉"};
    return kTexts[index % kTexts.size()];
}

void typedStreamDecoding(benchmark::State& state) {
    std::vector<std::vector<std::uint8_t>> archives;
    for (std::size_t index = 0; index < 64; ++index) {
        archives.push_back(TypedStream::archive(messageText(index)));
    }
    std::size_t index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(TypedStream::plainText(archives[index++ % archives.size()]));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(typedStreamDecoding);

void nameKeys(benchmark::State& state) {
    std::vector<std::string> addresses;
    for (std::size_t index = 0; index < 256; ++index) {
        addresses.push_back(address(index));
    }
    std::size_t index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(NameBook::key(addresses[index++ % addresses.size()]));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(nameKeys);

void groupingChats(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<Chat> chats;
    NameBook names;
    for (std::size_t index = 0; index < count; ++index) {
        Chat chat;
        chat.id = static_cast<std::int64_t>(index + 1);
        chat.identifier = address(index / 2); // two chats per person: iMessage and SMS
        chat.guid = (index % 2 ? "SMS;-;" : "iMessage;-;") + chat.identifier;
        chat.service = index % 2 ? "SMS" : "iMessage";
        chat.handles.push_back(Handle{chat.id, chat.identifier, chat.service});
        if (index % 50 == 0) {
            chat.isGroup = true;
            chat.handles.push_back(Handle{chat.id, address(index + 1), chat.service});
        }
        chat.messageCount = static_cast<std::int64_t>(index % 13);
        chat.lastDate = Date{static_cast<double>(index * 7919 % 100000)};
        chats.push_back(std::move(chat));
        if (index % 3 == 0) {
            names.add(address(index / 2), "Person " + std::to_string(index % 500));
        }
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Conversations::group(chats, names));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(groupingChats)->Arg(10000)->Unit(benchmark::kMillisecond);

std::vector<Message> conversationMessages(std::size_t count) {
    std::vector<Message> messages;
    messages.reserve(count);
    std::mt19937 random(1);
    for (std::size_t index = 0; index < count; ++index) {
        Message message;
        message.id = static_cast<std::int64_t>(index + 1);
        message.guid = "GUID-" + std::to_string(index);
        message.date = Date{static_cast<double>(index * 60)};
        message.isFromMe = index % 2 == 0;
        if (!message.isFromMe) {
            message.sender = "+15550102233";
        }
        message.service = "iMessage";
        if (index % 50 == 49) {
            message.reactionType = 2000 + static_cast<std::int64_t>(random() % 6);
            message.reactionTarget = "GUID-" + std::to_string(index - 1 - random() % 20);
        } else {
            message.text = messageText(index);
        }
        messages.push_back(std::move(message));
    }
    return messages;
}

void transcriptBuilding(benchmark::State& state) {
    const auto messages = conversationMessages(static_cast<std::size_t>(state.range(0)));
    const NameBook names(
        std::vector<std::pair<std::string, std::string>>{{"+1 (555) 010-2233", "Maya Brooks"}});
    for (auto _ : state) {
        benchmark::DoNotOptimize(Transcript::build("Maya Brooks", {"Maya Brooks"}, messages,
                                                   std::nullopt, std::nullopt, "Me", names));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(transcriptBuilding)->Arg(300000)->Unit(benchmark::kMillisecond);

void csvCellEscaping(benchmark::State& state) {
    std::vector<std::string> cells;
    for (std::size_t index = 0; index < 64; ++index) {
        cells.push_back(messageText(index));
    }
    std::size_t index = 0;
    std::int64_t bytes = 0;
    for (auto _ : state) {
        const auto& cell = cells[index++ % cells.size()];
        benchmark::DoNotOptimize(CSVExport::escape(cell));
        bytes += static_cast<std::int64_t>(cell.size());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(csvCellEscaping);

void csvRendering(benchmark::State& state) {
    const auto messages = conversationMessages(static_cast<std::size_t>(state.range(0)));
    const auto transcript = Transcript::build("Maya Brooks", {"Maya Brooks"}, messages,
                                              std::nullopt, std::nullopt, "Me", NameBook());
    ExportOptions options;
    options.timeZone = "America/New_York";
    const ExportStrings strings;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CSVExport::render(transcript, options, strings));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(csvRendering)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace scrivly::bench

BENCHMARK_MAIN();
