#pragma once

// moc reads none of the library headers: it needs nothing from them and trips over the
// standard library headers they pull in.
#ifndef Q_MOC_RUN
#include "ScrivlyKit/conversations/Conversation.h"
#endif

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include <vector>

namespace scrivly {

// The rows of the conversation list: the model's filtered conversations, in their order.
class ConversationListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { idRole = Qt::UserRole + 1, detailRole, dateRole, groupRole };

    using QAbstractListModel::QAbstractListModel;

    // Replaces the rows; a list equal to the shown one changes nothing, so the view keeps its
    // current row and scroll position.
    void setConversations(std::vector<Conversation> conversations);
    // The row of the conversation, or -1.
    int rowOf(const std::string& id) const;
    const Conversation& at(int row) const { return m_conversations[row]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<Conversation> m_conversations;
};

// Draws a row: the person or group icon, the title in bold with the date at the right, and the
// detail under it.
class ConversationDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

// The short date shown in a row: the time for today, else the date.
QString listDate(Date date);

} // namespace scrivly
