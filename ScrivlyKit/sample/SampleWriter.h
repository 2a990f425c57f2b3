#pragma once

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/records/Date.h"
#include "ScrivlyKit/text/Regional.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly::SampleDatabase {

// The kind of an attachment file: its uniform type identifier, as stored, and the encoding in
// which its picture is written.
struct FileType {
    std::string identifier; // such as "public.heic"
    std::string encoding;   // an ImageConverter::write type, such as "heic"; empty: not a picture

    static FileType heic() { return {"public.heic", "heic"}; }
    static FileType png() { return {"public.png", "png"}; }
    static FileType pdf() { return {"com.adobe.pdf", ""}; }
};

// Writes the rows of a made-up Messages history through an open read-write connection, with
// dates made relative to now. Every message, reaction and attachment takes the next GUID, so the
// same sequence of calls gives the same GUIDs every time. Each operation throws SQLiteError when
// a statement fails; attach also throws std::filesystem::filesystem_error.
class Writer {
public:
    // Seconds in a day.
    static constexpr std::int64_t kDay = 86400;
    // The size recorded for an attachment whose file was not written or cannot be read back.
    static constexpr std::int64_t kMissingFileBytes = 48213;

    // db must outlive the writer. attachments is the folder that a stored
    // "~/Library/Messages/Attachments" stands for; timeZone is an IANA name (the system's by
    // default) that decides where the days begin.
    Writer(SQLiteConnection& db, Date now, std::string attachments,
           std::string timeZone = Regional::systemTimeZone());

    // The row id of the new handle (0 when it cannot be learnt).
    std::int64_t handle(const std::string& address, const std::string& service);

    // The row id of the new chat; style 43 makes a group. handles are handle row ids.
    std::int64_t chat(std::int64_t style, const std::string& identifier, const std::string& service,
                      const std::optional<std::string>& displayName,
                      const std::vector<std::int64_t>& handles);

    // Writes a message into a chat and returns its GUID. handle is the sender's row id (ignored
    // for my own messages, which are stored with handle 0). The text is always archived into the
    // attributed body; with textOnlyInBody the plain text column stays NULL.
    std::string message(std::int64_t chat, std::int64_t handle, bool isFromMe,
                        const std::optional<std::string>& text, bool textOnlyInBody, Date date,
                        const std::string& service, std::int64_t itemType = 0,
                        const std::optional<std::string>& associatedGuid = std::nullopt,
                        std::int64_t associatedType = 0,
                        const std::optional<std::string>& associatedEmoji = std::nullopt);

    // Writes a tapback of the given type (2000 to 2006 add one) on the message with target GUID.
    void reaction(std::int64_t chat, std::int64_t handle, bool isFromMe, const std::string& target,
                  std::int64_t type, const std::optional<std::string>& emoji, Date date);

    // Attaches a file to the message with the GUID. With an image the file is written in the
    // type's encoding (as PNG under the same name when that fails); without one no file is
    // written and the attachment's file is missing.
    void attach(const std::string& messageGuid, const std::string& fileName, const FileType& type,
                const std::string& mimeType, const std::optional<ImageConverter::Image>& image);

    // The start of the day that lies daysAgo days before now, plus hour and minute.
    Date date(int daysAgo, int hour, int minute) const;

    // The number of GUIDs taken so far.
    std::int64_t guidCounter() const { return m_guidCounter; }

private:
    std::string nextGuid();
    std::int64_t lastInsertRowID();

    SQLiteConnection& m_db;
    Date m_now;
    std::string m_attachments;
    std::string m_timeZone;
    std::int64_t m_guidCounter = 0;
    std::int64_t m_day = kDay;
};

} // namespace scrivly::SampleDatabase
