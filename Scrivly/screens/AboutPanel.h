#pragma once

#include <QDialog>

namespace scrivly {

// The About panel: name, version, what Scrivly does and where to ask questions.
class AboutPanel : public QDialog {
    Q_OBJECT

public:
    explicit AboutPanel(QWidget* parent);
};

} // namespace scrivly
