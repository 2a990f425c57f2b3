#pragma once

#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/records/SourceDescription.h"

#include <optional>
#include <string>

namespace scrivly {

// Where a Messages database comes from: a Mac's chat.db with its home folder, or a phone
// backup's sms.db. The reader asks it for a private copy of the database and for the files that
// attachments stand for; everything else is the same for every source.
class MessagesSource {
public:
    virtual ~MessagesSource() = default;

    // The file that is read, as the access probe and error texts name it.
    virtual const std::string& location() const = 0;
    // What the documents say was read.
    virtual SourceDescription description() const = 0;
    virtual DatabaseAccess access() const = 0;
    // Writes a self-contained copy of the database (its log folded in) into the empty
    // owner-only folder into and answers the copy's path. Throws TornCopyError when the copy
    // must be taken again, SQLiteError or a file error otherwise.
    virtual std::string copyInto(const std::string& into) const = 0;
    // The file on this computer that an attachment's stored name stands for.
    virtual std::optional<std::string>
    attachmentPath(const std::optional<std::string>& stored) const = 0;
    // The file to read for an attachment's path when its bytes are needed: the path itself for
    // a file kept in the clear, else a readable copy made in folder (an owner-only folder that
    // the caller removes); nothing when the source doesn't hold the file.
    virtual std::optional<std::string> readableCopy(const std::string& path,
                                                    const std::string& folder) const {
        (void)folder;
        return path;
    }
};

// A Messages database file, as on a Mac: a stored "~/" stands for home, except that a stored
// "~/Library/Messages/Attachments/" stands for attachments when that is given (the Attachments
// folder of a copied database, wherever the copy put it).
class DatabaseFile final : public MessagesSource {
public:
    DatabaseFile(std::string path, std::string home,
                 SourceDescription::Kind kind = SourceDescription::Kind::databaseFile,
                 std::optional<std::string> attachments = std::nullopt);

    const std::string& location() const override { return m_path; }
    SourceDescription description() const override;
    const std::string& home() const { return m_home; }
    DatabaseAccess access() const override;
    std::string copyInto(const std::string& into) const override;
    std::optional<std::string>
    attachmentPath(const std::optional<std::string>& stored) const override;

private:
    std::string m_path;
    std::string m_home;
    SourceDescription::Kind m_kind;
    std::optional<std::string> m_attachments;
};

} // namespace scrivly
