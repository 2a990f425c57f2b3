#include "cli/Produce.h"

#include "cli/CommandLine.h"
#include "cli/Errors.h"
#include "cli/Interrupts.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"
#include "cli/TerminalText.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/production/Production.h"
#include "ScrivlyKit/production/ProductionRules.h"
#include "ScrivlyKit/text/Unicode.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <unistd.h>

namespace scrivly::cli {

namespace {

std::string counted(std::int64_t count, const std::string& one, const std::string& many,
                    const std::string& locale) {
    return Formatting::integer(count, locale) + " " + (count == 1 ? one : many);
}

Production production(const ProduceArguments& arguments) {
    Production result;
    result.conversations = arguments.conversations;
    result.all = arguments.all;
    result.days = dayRange(arguments.from, arguments.to);
    result.batesPrefix = Unicode::trimmed(arguments.batesPrefix);
    result.batesStart = arguments.batesStart;
    if (!arguments.maxSize.empty()) {
        result.maxBytes = ProductionRules::parseByteSize(arguments.maxSize);
    }
    result.perDay = arguments.perDay;
    result.csv = arguments.csv;
    result.natives = arguments.natives;
    result.loadFile = arguments.loadFile;
    if (!Unicode::trimmed(arguments.custodian).empty()) {
        result.custodian = Unicode::trimmed(arguments.custodian);
    }
    result.header = Unicode::trimmed(arguments.header);
    result.paper = Paper::fromRawValue(arguments.paper).value_or(PaperSize::letter);
    result.coverPage = !arguments.noCover;
    result.includeImages = !arguments.noImages;
    return result;
}

std::string listed(const Conversation& conversation) {
    return "\n  " + conversation.id + "  " + conversation.title +
           (conversation.detail ? " (" + *conversation.detail + ")" : "");
}

} // namespace

CLI::App* addProduceCommand(CLI::App& app, ProduceArguments& arguments) {
    auto* command = app.add_subcommand(
        "produce", "Produce conversations as numbered PDFs with hashes, a certificate and a "
                   "manifest, in a new folder");
    command->add_option("OUTDIR", arguments.folder, "A new or empty folder")->required();
    command->add_option("CONVERSATION", arguments.conversations,
                        "Conversations' ids or titles, in order");
    command->add_flag("--all", arguments.all, "Every conversation, in the list's order");
    command
        ->add_option("--bates-prefix", arguments.batesPrefix,
                     "Prefix of the Bates labels, which also name the files")
        ->type_name("TEXT")
        ->required();
    command
        ->add_option("--bates-start", arguments.batesStart,
                     "Number of the first page's label (default 1; below 0 counts as 0)")
        ->type_name("N");
    command->add_option("--from", arguments.from, "First day to include, YYYY-MM-DD (whole days)")
        ->type_name("DAY");
    command->add_option("--to", arguments.to, "Last day to include, YYYY-MM-DD (whole days)")
        ->type_name("DAY");
    command
        ->add_option("--max-size", arguments.maxSize,
                     "Split documents into parts of at most SIZE (35MB, 500KB)")
        ->type_name("SIZE");
    command->add_flag("--per-day", arguments.perDay,
                      "One document per conversation and calendar day");
    command->add_flag("--csv", arguments.csv, "A CSV with a Bates column beside each PDF");
    command->add_flag("--natives", arguments.natives, "Copy attachment files into natives/");
    command->add_flag("--load-file", arguments.loadFile, "Write loadfile.dat (Concordance)");
    command
        ->add_option("--custodian", arguments.custodian,
                     "The load file's custodian (default the name of your own messages)")
        ->type_name("NAME");
    command->add_option("--header", arguments.header, "Line at the top of every page")
        ->type_name("TEXT");
    command->add_option("--paper", arguments.paper, "Paper size: letter or a4")
        ->type_name("SIZE")
        ->transform(CLI::IsMember({"letter", "a4"}, CLI::ignore_case));
    command->add_flag("--no-cover", arguments.noCover, "Leave out the cover pages");
    command->add_flag("--no-images", arguments.noImages,
                      "List photos by name instead of drawing them");
    command->add_flag("--progress", arguments.progress,
                      "Show progress even when standard error isn't a terminal");
    return command;
}

void checkProduceArguments(const ProduceArguments& arguments) {
    if (arguments.folder.empty()) {
        throw UsageError("The output folder name is empty.");
    }
    if (arguments.all == !arguments.conversations.empty()) {
        throw UsageError(arguments.all
                             ? "Name conversations or give --all, not both."
                             : "Name the conversations to produce, or give --all for every one.");
    }
    if (auto problem = ProductionRules::prefixProblem(Unicode::trimmed(arguments.batesPrefix))) {
        throw UsageError(*problem);
    }
    if (!arguments.maxSize.empty() && !ProductionRules::parseByteSize(arguments.maxSize)) {
        throw UsageError("--max-size “" + arguments.maxSize +
                         "” isn’t a size; write it as 35MB or 500KB.");
    }
    dayRange(arguments.from, arguments.to);
}

void produce(const ProduceArguments& arguments, const Session& session, Interrupts& interrupts) {
    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    ProgressBar bar(std::cerr, terminal, "Producing");
    ProductionHooks hooks;
    if (arguments.progress || terminal) {
        hooks.progress = [&bar](double fraction) { bar.update(fraction); };
    }
    std::string hidden;
    hooks.started = [&](const std::string& folder) {
        hidden = folder;
        interrupts.removeOnInterrupt(folder);
    };
    ProductionReport report;
    {
        // Ctrl-C now stops the production through its stop token instead of ending the process.
        const Interrupts::Cancellable cancellable(interrupts);
        hooks.stop = cancellable.token();
        try {
            report =
                writeProduction(session.history(), production(arguments), arguments.folder, hooks);
            if (hooks.progress) {
                bar.finish();
            }
        } catch (const ProductionError& error) {
            bar.abandon();
            if (error.kind == ProductionError::Kind::badRequest) {
                throw UsageError(error.what());
            }
            throw;
        } catch (const ConversationNotFound& error) {
            bar.abandon();
            std::string reason = error.what();
            for (const auto& conversation : error.sameTitle) {
                reason += listed(conversation);
            }
            if (!error.suggestions.empty()) {
                reason += " Did you mean:";
                for (const auto& conversation : error.suggestions) {
                    reason += listed(conversation);
                }
            }
            throw UsageError(reason);
        } catch (...) {
            bar.abandon();
            throw;
        }
    }
    if (!hidden.empty()) {
        interrupts.forget(hidden);
    }

    // One line per document, the title last since it may hold anything: file, labels, pages,
    // messages, conversation.
    const std::string& locale = session.locale();
    std::size_t width = 0;
    for (const auto& document : report.documents) {
        width = std::max(width, TerminalText::displayWidth(document.pdf.path));
    }
    for (const auto& document : report.documents) {
        std::string conversation = TerminalText::cleaned(document.conversation, false);
        if (document.parts > 1) {
            conversation += " (part " + std::to_string(document.part) + " of " +
                            std::to_string(document.parts) + ")";
        }
        std::cout << TerminalText::padded(document.pdf.path, width) << "  "
                  << ProductionRules::batesRange(document.pdf.beginBates, document.pdf.endBates)
                  << "  " << counted(document.pdf.pages.value_or(0), "page", "pages", locale)
                  << "  "
                  << counted(document.pdf.messages.value_or(0), "message", "messages", locale)
                  << "  " << conversation << '\n';
    }
    std::string totals = "Produced " +
                         counted(static_cast<std::int64_t>(report.documents.size()), "document",
                                 "documents", locale) +
                         " (" + counted(report.pages(), "page", "pages", locale) + ", " +
                         counted(report.messages(), "message", "messages", locale);
    if (arguments.natives) {
        totals += ", " + counted(static_cast<std::int64_t>(report.nativeCount()), "native",
                                 "natives", locale);
    }
    if (!report.missing.empty()) {
        totals += ", " + counted(static_cast<std::int64_t>(report.missing.size()),
                                 "missing attachment", "missing attachments", locale);
    }
    if (!report.emptyConversations.empty()) {
        totals += ", " + counted(static_cast<std::int64_t>(report.emptyConversations.size()),
                                 "empty conversation", "empty conversations", locale);
    }
    std::cout << totals << ") in " << report.folder << '\n';
}

} // namespace scrivly::cli
