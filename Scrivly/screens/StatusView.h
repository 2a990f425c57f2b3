#pragma once

#include <QString>
#include <QWidget>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace scrivly {

// A centred message: a symbol (or a spinner), a title, a line of text and buttons under them.
// Used for the no-history, progress and failure screens and for empty lists.
class StatusView : public QWidget {
    Q_OBJECT

public:
    // symbol names an icon (Symbols::icon); an empty symbol shows a spinner instead.
    StatusView(const QString& symbol, QWidget* parent = nullptr);

    void setTitle(const QString& title);
    void setText(const QString& text);
    // Adds a button under the text, the first one the default.
    QPushButton* addButton(const QString& text);
    // A smaller variant for the columns of the main screen.
    void setCompact(bool compact);

private:
    QLabel* m_symbol;
    QLabel* m_title;
    QLabel* m_text;
    QBoxLayout* m_buttons;
    int m_iconSize = 64;
};

} // namespace scrivly
