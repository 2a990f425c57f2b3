#pragma once

#include <QDialog>

#include <functional>

namespace scrivly {

class AppModel;

// The welcome sheet of the first launch: what Scrivly does, "Help" and "Get Started".
class WelcomeView : public QDialog {
    Q_OBJECT

public:
    // help opens the help window.
    WelcomeView(AppModel& model, std::function<void()> help, QWidget* parent);
};

} // namespace scrivly
