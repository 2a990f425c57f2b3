#pragma once

#include <QWidget>

namespace scrivly {

class AppModel;

// The access screen: how to let Scrivly read the Messages history, in three steps. It has no
// check button: the model checks again whenever the application becomes active.
class AccessView : public QWidget {
    Q_OBJECT

public:
    AccessView(AppModel& model, QWidget* parent = nullptr);
};

} // namespace scrivly
