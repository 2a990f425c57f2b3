#pragma once

// moc reads none of the library headers: it needs nothing from them and trips over the
// standard library headers they pull in.
#ifndef Q_MOC_RUN
#include "ScrivlyKit/conversations/Transcript.h"
#endif

#include <QAbstractListModel>
#include <QColor>
#include <QHash>
#include <QImage>
#include <QSet>
#include <QStyledItemDelegate>
#include <QThreadPool>

#include <functional>
#include <vector>

class QListView;

namespace scrivly {

// The transcript as list rows: a day line before the first entry of each day, then the entries.
// Photos are read in the background, once each, when a row first needs them.
class TranscriptModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { kindRole = Qt::UserRole + 1 };
    enum class RowKind { day, entry };

    // How an attachment is shown.
    struct Shown {
        enum class Kind { photo, missing, file } kind = Kind::file;
        QString name;
        QString path;
    };
    enum class PhotoState { loading, loaded, failed };

    struct Row {
        RowKind kind = RowKind::entry;
        QString day;           // for day lines
        std::size_t entry = 0; // for entries: index into the transcript
    };
    // What a row shows, prepared once so that painting and measuring stay cheap.
    struct Entry {
        QString sender;
        QColor senderColor;
        QString time;
        QString text;
        QString reactions;
        std::vector<Shown> attachments;
    };

    // reactionText turns an entry's reactions into the line shown under it.
    explicit TranscriptModel(std::function<QString(const std::vector<ShownReaction>&)> reactionText,
                             QObject* parent = nullptr);
    ~TranscriptModel() override;

    // Replaces the rows; an equal transcript changes nothing.
    void setTranscript(const std::optional<Transcript>& transcript);
    // Re-reads the reactions' texts (after a change of language).
    void refreshTexts();

    const Row& row(int index) const { return m_rows[index]; }
    const Entry& entry(std::size_t index) const { return m_entries[index]; }

    // The photo at path: its state, and the image once loaded. Asks for it when not yet asked.
    PhotoState photo(const QString& path, QImage* image) const;
    // Waits until every photo asked for so far has been read (for tests and screenshots).
    bool photosPending() const { return !m_pending.isEmpty(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Longest side of a photo as read; the view scales it down further.
    static constexpr int kPhotoPixels = 480;

private:
    void photoLoaded(const QString& path, const QImage& image);
    void rebuild();

    std::function<QString(const std::vector<ShownReaction>&)> m_reactionText;
    std::optional<Transcript> m_transcript;
    std::vector<Row> m_rows;
    std::vector<Entry> m_entries;
    mutable QHash<QString, QImage> m_photos;
    mutable QSet<QString> m_pending;
    mutable QSet<QString> m_failed;
    // Last, so that it is destroyed first: its destructor waits for photos being read.
    mutable QThreadPool m_pool;
};

// Draws transcript rows: day lines, and entries with their sender, time, text, attachments and
// reactions, wrapped to the view's width.
class TranscriptDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    TranscriptDelegate(TranscriptModel& model, QListView& view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Height of the box a photo is shown in.
    static constexpr int kPhotoHeight = 180;
    static constexpr int kPhotoMaxWidth = 320;

private:
    struct Layout;
    Layout layout(const TranscriptModel::Entry& entry, const QFont& font, int width) const;
    int textWidth() const;

    TranscriptModel& m_model;
    QListView& m_view;
};

} // namespace scrivly
