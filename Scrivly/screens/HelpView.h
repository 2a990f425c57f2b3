#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QListWidget;
class QTextBrowser;

namespace scrivly {

// One help topic.
struct Topic {
    QString id;
    QString title;
    QString symbol;
    QStringList paragraphs;
};

// The help window: the topics on the left, the chosen one's paragraphs on the right, and a link to
// the website at the bottom.
class HelpView : public QWidget {
    Q_OBJECT

public:
    explicit HelpView(QWidget* parent);

    // The topics in their order, in the current language.
    static std::vector<Topic> topics();

    // The id of the topic shown.
    std::optional<QString> selectedTopic() const;
    void showTopic(const QString& id);

private:
    void showRow(int row);

    std::vector<Topic> m_topics;
    QListWidget* m_list;
    QTextBrowser* m_text;
};

} // namespace scrivly
