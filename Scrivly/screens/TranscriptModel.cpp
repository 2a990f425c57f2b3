#include "Scrivly/screens/TranscriptModel.h"

#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/Symbols.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/export/Presentation.h"
#include "ScrivlyKit/export/SenderColors.h"

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QListView>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>

namespace scrivly {

namespace {

QDateTime localTime(Date date) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.unixSeconds() * 1000.0));
}

// The core decides what an attachment is; a picture that can't be read falls back to its name.
TranscriptModel::Shown shown(const Attachment& attachment) {
    TranscriptModel::Shown result;
    result.name = QString::fromStdString(attachment.name);
    if (attachment.path) {
        result.path = QFile::decodeName(QByteArray::fromStdString(*attachment.path));
    }
    switch (Presentation::attachment(attachment).kind) {
    case Presentation::AttachmentShown::Kind::picture:
        result.kind = TranscriptModel::Shown::Kind::photo;
        break;
    case Presentation::AttachmentShown::Kind::file:
        result.kind = TranscriptModel::Shown::Kind::file;
        break;
    case Presentation::AttachmentShown::Kind::missing:
        result.kind = TranscriptModel::Shown::Kind::missing;
        break;
    }
    return result;
}

constexpr int kSidePadding = 16;
constexpr int kRowPadding = 5;
constexpr int kGap = 3;
constexpr int kDayHeightExtra = 22;

} // namespace

TranscriptModel::TranscriptModel(
    std::function<QString(const std::vector<ShownReaction>&)> reactionText, QObject* parent)
    : QAbstractListModel(parent), m_reactionText(std::move(reactionText)) {
    m_pool.setMaxThreadCount(2);
}

TranscriptModel::~TranscriptModel() {
    m_pool.clear();
    m_pool.waitForDone();
}

void TranscriptModel::setTranscript(const std::optional<Transcript>& transcript) {
    if (transcript == m_transcript) {
        return;
    }
    beginResetModel();
    m_transcript = transcript;
    rebuild();
    endResetModel();
}

void TranscriptModel::refreshTexts() {
    beginResetModel();
    rebuild();
    endResetModel();
}

void TranscriptModel::rebuild() {
    m_rows.clear();
    m_entries.clear();
    if (!m_transcript) {
        return;
    }
    const QLocale locale;
    SenderColors colors; // the PDF's colours, so a sender looks the same in both
    QDate lastDay;
    m_entries.reserve(m_transcript->entries.size());
    for (std::size_t i = 0; i < m_transcript->entries.size(); ++i) {
        const TranscriptEntry& source = m_transcript->entries[i];
        const QDateTime time = localTime(source.date);
        if (time.date() != lastDay) {
            lastDay = time.date();
            m_rows.push_back({RowKind::day, locale.toString(lastDay, QLocale::LongFormat), 0});
        }
        const SenderColor color = colors.colorOf(source.sender, source.isFromMe);
        Entry entry;
        entry.sender = QString::fromStdString(source.sender);
        entry.senderColor =
            QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                             static_cast<float>(color.blue));
        entry.time = locale.toString(time.time(), QLocale::ShortFormat);
        entry.text = QString::fromStdString(source.text);
        if (!source.reactions.empty()) {
            entry.reactions = m_reactionText(source.reactions);
        }
        for (const Attachment& attachment : source.attachments) {
            entry.attachments.push_back(shown(attachment));
        }
        m_entries.push_back(std::move(entry));
        m_rows.push_back({RowKind::entry, {}, i});
    }
}

TranscriptModel::PhotoState TranscriptModel::photo(const QString& path, QImage* image) const {
    if (const auto found = m_photos.constFind(path); found != m_photos.constEnd()) {
        *image = *found;
        return PhotoState::loaded;
    }
    if (m_failed.contains(path)) {
        return PhotoState::failed;
    }
    if (!m_pending.contains(path)) {
        m_pending.insert(path);
        auto* self = const_cast<TranscriptModel*>(this);
        m_pool.start([self, path] {
            QImage result;
            if (auto jpeg = ImageConverter::jpegData(QFile::encodeName(path).toStdString(),
                                                     kPhotoPixels, 0.85)) {
                result.loadFromData(jpeg->data(), static_cast<int>(jpeg->size()), "JPEG");
            }
            // The pool is waited for before the model goes, so the model is still there.
            QMetaObject::invokeMethod(
                self, [self, path, result] { self->photoLoaded(path, result); },
                Qt::QueuedConnection);
        });
    }
    return PhotoState::loading;
}

void TranscriptModel::photoLoaded(const QString& path, const QImage& image) {
    m_pending.remove(path);
    if (image.isNull()) {
        m_failed.insert(path);
    } else {
        m_photos.insert(path, image);
    }
    // A failed photo becomes a line of text, so the rows showing it are measured again.
    for (int i = 0; i < static_cast<int>(m_rows.size()); ++i) {
        if (m_rows[i].kind != RowKind::entry) {
            continue;
        }
        for (const Shown& attachment : m_entries[m_rows[i].entry].attachments) {
            if (attachment.path == path) {
                const QModelIndex changed = index(i);
                emit dataChanged(changed, changed);
                if (image.isNull()) {
                    emit layoutChanged();
                }
                break;
            }
        }
    }
}

int TranscriptModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

Qt::ItemFlags TranscriptModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    // Day lines are headings: reachable with the keyboard, never selected or copied.
    return m_rows[index.row()].kind == RowKind::day ? Qt::ItemIsEnabled
                                                    : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

QVariant TranscriptModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Row& row = m_rows[index.row()];
    if (role == kindRole) {
        return static_cast<int>(row.kind);
    }
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) {
        return {};
    }
    if (row.kind == RowKind::day) {
        return row.day;
    }
    // The whole entry as plain text: what a screen reader says and what Copy takes.
    const Entry& entry = m_entries[row.entry];
    QStringList lines{tr("%1, %2").arg(entry.sender, entry.time)};
    if (!entry.text.isEmpty()) {
        lines.append(entry.text);
    }
    for (const Shown& attachment : entry.attachments) {
        switch (attachment.kind) {
        case Shown::Kind::photo:
            lines.append(tr("Photo: %1").arg(attachment.name));
            break;
        case Shown::Kind::missing:
            lines.append(PlatformTexts::attachmentMissingShort().arg(attachment.name));
            break;
        case Shown::Kind::file:
            lines.append(attachment.name);
            break;
        }
    }
    if (!entry.reactions.isEmpty()) {
        lines.append(entry.reactions);
    }
    return lines.join(QLatin1Char('\n'));
}

// MARK: delegate

struct TranscriptDelegate::Layout {
    int header = 0;
    int text = 0;
    std::vector<int> attachments;
    int reactions = 0;
    int height = 0;
};

TranscriptDelegate::TranscriptDelegate(TranscriptModel& model, QListView& view)
    : QStyledItemDelegate(&view), m_model(model), m_view(view) {}

int TranscriptDelegate::textWidth() const {
    return std::max(120, m_view.viewport()->width() - 2 * kSidePadding);
}

TranscriptDelegate::Layout TranscriptDelegate::layout(const TranscriptModel::Entry& entry,
                                                      const QFont& font, int width) const {
    QFont bold = font;
    bold.setBold(true);
    QFont small = font;
    small.setPointSizeF(font.pointSizeF() * 0.9);
    const QFontMetrics metrics(font);
    const QFontMetrics smallMetrics(small);
    const int wrap = Qt::TextWordWrap;

    Layout result;
    result.header = QFontMetrics(bold).height();
    if (!entry.text.isEmpty()) {
        result.text = metrics.boundingRect(QRect(0, 0, width, 1 << 20), wrap, entry.text).height();
    }
    for (const TranscriptModel::Shown& attachment : entry.attachments) {
        int height = metrics.height() + 2;
        if (attachment.kind == TranscriptModel::Shown::Kind::photo) {
            QImage image;
            if (m_model.photo(attachment.path, &image) != TranscriptModel::PhotoState::failed) {
                height = kPhotoHeight;
            }
        }
        result.attachments.push_back(height);
    }
    if (!entry.reactions.isEmpty()) {
        result.reactions =
            smallMetrics.boundingRect(QRect(0, 0, width, 1 << 20), wrap, entry.reactions).height();
    }
    int height = kRowPadding + result.header;
    if (result.text > 0) {
        height += kGap + result.text;
    }
    for (int part : result.attachments) {
        height += kGap + part;
    }
    if (result.reactions > 0) {
        height += kGap + result.reactions;
    }
    result.height = height + kRowPadding + 2;
    return result;
}

QSize TranscriptDelegate::sizeHint(const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    const auto& row = m_model.row(index.row());
    if (row.kind == TranscriptModel::RowKind::day) {
        return {textWidth(), QFontMetrics(option.font).height() + kDayHeightExtra};
    }
    return {textWidth(), layout(m_model.entry(row.entry), option.font, textWidth()).height};
}

void TranscriptDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const auto& row = m_model.row(index.row());
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    const QPalette::ColorGroup group =
        (option.state & QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    painter->save();

    if (row.kind == TranscriptModel::RowKind::day) {
        QFont font = option.font;
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 0.92);
        painter->setFont(font);
        QColor color = option.palette.color(group, QPalette::Text);
        color.setAlphaF(0.55);
        const QFontMetrics metrics(font);
        const int width = metrics.horizontalAdvance(row.day);
        const QRect rect = option.rect;
        const int y = rect.center().y();
        const int left = rect.center().x() - width / 2 - 10;
        const int right = rect.center().x() + width / 2 + 10;
        QColor line = color;
        line.setAlphaF(0.18);
        painter->setPen(line);
        painter->drawLine(rect.left() + kSidePadding, y, left, y);
        painter->drawLine(right, y, rect.right() - kSidePadding, y);
        painter->setPen(color);
        painter->drawText(rect, Qt::AlignCenter, row.day);
        if (option.state & QStyle::State_HasFocus) {
            QStyleOptionFocusRect focus;
            focus.QStyleOption::operator=(option);
            focus.rect = QRect(left, rect.top() + 3, right - left, rect.height() - 6);
            style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, widget);
        }
        painter->restore();
        return;
    }

    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, widget);
    if (option.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect = option.rect.adjusted(2, 1, -2, -1);
        style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, widget);
    }

    const TranscriptModel::Entry& entry = m_model.entry(row.entry);
    const int width = textWidth();
    const Layout sizes = layout(entry, option.font, width);
    const bool selected = option.state & QStyle::State_Selected;
    const QColor text =
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    QColor secondary = text;
    secondary.setAlphaF(selected ? 0.85 : 0.6);

    QFont bold = option.font;
    bold.setBold(true);
    QFont small = option.font;
    small.setPointSizeF(option.font.pointSizeF() * 0.9);
    const int left = option.rect.left() + kSidePadding;
    int y = option.rect.top() + kRowPadding;

    // Sender and time.
    painter->setFont(bold);
    painter->setPen(selected ? text : entry.senderColor);
    const QFontMetrics boldMetrics(bold);
    const int senderWidth = std::min(boldMetrics.horizontalAdvance(entry.sender) + 2, width - 80);
    painter->drawText(QRect(left, y, senderWidth, sizes.header), Qt::AlignLeft | Qt::AlignVCenter,
                      boldMetrics.elidedText(entry.sender, Qt::ElideRight, senderWidth));
    painter->setFont(small);
    painter->setPen(secondary);
    painter->drawText(QRect(left + senderWidth + 8, y, 100, sizes.header),
                      Qt::AlignLeft | Qt::AlignVCenter, entry.time);
    y += sizes.header;

    if (sizes.text > 0) {
        y += kGap;
        painter->setFont(option.font);
        painter->setPen(text);
        painter->drawText(QRect(left, y, width, sizes.text), Qt::TextWordWrap, entry.text);
        y += sizes.text;
    }

    const QFontMetrics metrics(option.font);
    for (std::size_t i = 0; i < entry.attachments.size(); ++i) {
        const TranscriptModel::Shown& attachment = entry.attachments[i];
        y += kGap;
        const int height = sizes.attachments[i];
        const QRect box(left, y, width, height);
        QString label;
        QString symbol;
        if (attachment.kind == TranscriptModel::Shown::Kind::photo) {
            QImage image;
            const auto state = m_model.photo(attachment.path, &image);
            if (state == TranscriptModel::PhotoState::loaded) {
                const QSize size = image.size().scaled(std::min(kPhotoMaxWidth, width), height,
                                                       Qt::KeepAspectRatio);
                const QRect target(left, y, size.width(), size.height());
                painter->setRenderHint(QPainter::SmoothPixmapTransform);
                painter->setRenderHint(QPainter::Antialiasing);
                QPainterPath clip;
                clip.addRoundedRect(target, 8, 8);
                painter->save();
                painter->setClipPath(clip);
                painter->drawImage(target, image);
                painter->restore();
            } else if (state == TranscriptModel::PhotoState::loading) {
                QColor placeholder = text;
                placeholder.setAlphaF(0.07);
                painter->setPen(Qt::NoPen);
                painter->setBrush(placeholder);
                painter->setRenderHint(QPainter::Antialiasing);
                painter->drawRoundedRect(QRect(left, y, kPhotoHeight * 4 / 3, height), 8, 8);
            } else {
                label = tr("Photo: %1").arg(attachment.name);
                symbol = QStringLiteral("photo");
            }
        } else if (attachment.kind == TranscriptModel::Shown::Kind::missing) {
            label = PlatformTexts::attachmentMissingShort().arg(attachment.name);
            symbol = QStringLiteral("icloud.and.arrow.down");
        } else {
            label = attachment.name;
            symbol = QStringLiteral("paperclip");
        }
        if (!label.isEmpty()) {
            const int iconSize = metrics.height() - 2;
            Symbols::icon(symbol).paint(
                painter, QRect(left, box.top() + (height - iconSize) / 2, iconSize, iconSize));
            painter->setFont(option.font);
            painter->setPen(attachment.kind == TranscriptModel::Shown::Kind::file ? text
                                                                                  : secondary);
            const QRect textBox = box.adjusted(iconSize + 6, 0, 0, 0);
            painter->drawText(textBox, Qt::AlignLeft | Qt::AlignVCenter,
                              metrics.elidedText(label, Qt::ElideMiddle, textBox.width()));
        }
        y += height;
    }

    if (sizes.reactions > 0) {
        y += kGap;
        painter->setFont(small);
        painter->setPen(secondary);
        painter->drawText(QRect(left, y, width, sizes.reactions), Qt::TextWordWrap,
                          entry.reactions);
    }
    painter->restore();
}

} // namespace scrivly
