#include "Scrivly/screens/ConversationList.h"

#include "Scrivly/screens/Symbols.h"

#include <QApplication>
#include <QDateTime>
#include <QLocale>
#include <QPainter>

namespace scrivly {

namespace {
constexpr int kIconSize = 32;
constexpr int kPadding = 8;
} // namespace

QString listDate(Date date) {
    const QDateTime local =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.unixSeconds() * 1000.0));
    const QLocale locale;
    if (local.date() == QDate::currentDate()) {
        return locale.toString(local.time(), QLocale::ShortFormat);
    }
    return locale.toString(local.date(), QLocale::ShortFormat);
}

void ConversationListModel::setConversations(std::vector<Conversation> conversations) {
    if (conversations == m_conversations) {
        return;
    }
    beginResetModel();
    m_conversations = std::move(conversations);
    endResetModel();
}

int ConversationListModel::rowOf(const std::string& id) const {
    for (std::size_t row = 0; row < m_conversations.size(); ++row) {
        if (m_conversations[row].id == id) {
            return static_cast<int>(row);
        }
    }
    return -1;
}

int ConversationListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_conversations.size());
}

QVariant ConversationListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Conversation& conversation = m_conversations[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(conversation.title);
    case Qt::AccessibleTextRole: {
        // Read out as one line: who, which one, and when.
        QStringList parts{QString::fromStdString(conversation.title)};
        if (conversation.detail) {
            parts.append(QString::fromStdString(*conversation.detail));
        }
        if (conversation.lastDate) {
            parts.append(listDate(*conversation.lastDate));
        }
        return parts.join(QStringLiteral(", "));
    }
    case Qt::ToolTipRole:
        return QString::fromStdString(conversation.title);
    case idRole:
        return QString::fromStdString(conversation.id);
    case detailRole:
        return conversation.detail ? QString::fromStdString(*conversation.detail) : QString();
    case dateRole:
        return conversation.lastDate ? listDate(*conversation.lastDate) : QString();
    case groupRole:
        return conversation.isGroup;
    default:
        return {};
    }
}

void ConversationDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    background.icon = QIcon();
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, widget);

    const bool selected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        (option.state & QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const QColor primary =
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    QColor secondary = primary;
    secondary.setAlphaF(selected ? 0.85 : 0.6);

    const QRect rect = option.rect.adjusted(kPadding, kPadding / 2, -kPadding, -kPadding / 2);
    const QString symbol = index.data(ConversationListModel::groupRole).toBool()
                               ? QStringLiteral("person.3.fill")
                               : QStringLiteral("person.crop.circle.fill");
    const QRect iconRect(rect.left(), rect.center().y() - kIconSize / 2, kIconSize, kIconSize);
    Symbols::icon(symbol).paint(painter, iconRect);

    const QRect textRect = rect.adjusted(kIconSize + kPadding, 0, 0, 0);
    QFont titleFont = option.font;
    titleFont.setBold(true);
    const QFontMetrics titleMetrics(titleFont);
    const QFontMetrics metrics(option.font);

    const QString date = index.data(ConversationListModel::dateRole).toString();
    const int dateWidth = metrics.horizontalAdvance(date);
    const QString detail = index.data(ConversationListModel::detailRole).toString();
    const int lines = detail.isEmpty() ? 1 : 2;
    const int blockHeight = titleMetrics.height() + (lines - 1) * metrics.height();
    int y = textRect.top() + (textRect.height() - blockHeight) / 2;

    painter->save();
    painter->setFont(option.font);
    painter->setPen(secondary);
    painter->drawText(QRect(textRect.right() - dateWidth, y, dateWidth, titleMetrics.height()),
                      Qt::AlignRight | Qt::AlignVCenter, date);
    painter->setFont(titleFont);
    painter->setPen(primary);
    const int titleWidth = textRect.width() - dateWidth - kPadding;
    const QString title =
        titleMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight, titleWidth);
    painter->drawText(QRect(textRect.left(), y, titleWidth, titleMetrics.height()),
                      Qt::AlignLeft | Qt::AlignVCenter, title);
    if (!detail.isEmpty()) {
        y += titleMetrics.height();
        painter->setFont(option.font);
        painter->setPen(secondary);
        painter->drawText(QRect(textRect.left(), y, textRect.width(), metrics.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          metrics.elidedText(detail, Qt::ElideRight, textRect.width()));
    }
    painter->restore();
}

QSize ConversationDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    QFont titleFont = option.font;
    titleFont.setBold(true);
    // Every row has room for a detail line, so rows line up whether or not they have one.
    const int text = QFontMetrics(titleFont).height() + QFontMetrics(option.font).height();
    return {200, std::max(kIconSize, text) + 2 * kPadding};
}

} // namespace scrivly
