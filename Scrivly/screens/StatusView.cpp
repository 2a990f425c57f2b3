#include "Scrivly/screens/StatusView.h"

#include "Scrivly/screens/Spinner.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace scrivly {

StatusView::StatusView(const QString& symbol, QWidget* parent)
    : QWidget(parent), m_symbol(new QLabel(this)), m_title(new QLabel(this)),
      m_text(new QLabel(this)), m_buttons(new QHBoxLayout) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->setSpacing(10);
    layout->addStretch(1);

    if (symbol.isEmpty()) {
        auto* spinner = new Spinner(this, 32);
        layout->addWidget(spinner, 0, Qt::AlignHCenter);
        m_symbol->hide();
    } else {
        m_symbol->setPixmap(Symbols::icon(symbol).pixmap(m_iconSize, m_iconSize));
        m_symbol->setProperty("symbol", symbol);
        m_symbol->setAlignment(Qt::AlignCenter);
        layout->addWidget(m_symbol, 0, Qt::AlignHCenter);
    }

    QFont titleFont = m_title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.45);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setWordWrap(true);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_title);

    m_text->setAlignment(Qt::AlignCenter);
    m_text->setWordWrap(true);
    m_text->setForegroundRole(QPalette::PlaceholderText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Aligned in the layout, a wrapping label is sized to its one-line hint and loses the rest;
    // filling the row between equal margins lets it take the height its wrapped text needs.
    auto* textRow = new QHBoxLayout;
    textRow->addStretch(1);
    textRow->addWidget(m_text, 6);
    textRow->addStretch(1);
    layout->addLayout(textRow);

    m_buttons->setSpacing(8);
    m_buttons->addStretch(1);
    m_buttons->addStretch(1);
    layout->addSpacing(6);
    layout->addLayout(m_buttons);
    layout->addStretch(1);

    m_title->hide();
    m_text->hide();
}

void StatusView::setTitle(const QString& title) {
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
}

void StatusView::setText(const QString& text) {
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
}

QPushButton* StatusView::addButton(const QString& text) {
    auto* button = new QPushButton(text, this);
    if (m_buttons->count() == 2) {
        button->setDefault(true);
    }
    m_buttons->insertWidget(m_buttons->count() - 1, button);
    return button;
}

void StatusView::setCompact(bool compact) {
    m_iconSize = compact ? 44 : 64;
    const QString symbol = m_symbol->property("symbol").toString();
    if (!symbol.isEmpty()) {
        m_symbol->setPixmap(Symbols::icon(symbol).pixmap(m_iconSize, m_iconSize));
    }
    QFont titleFont = font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * (compact ? 1.2 : 1.45));
    titleFont.setBold(true);
    m_title->setFont(titleFont);
}

} // namespace scrivly
