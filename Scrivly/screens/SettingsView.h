#pragma once

#include <QWidget>

#include <functional>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace scrivly {

class AppModel;

// The settings window: the welcome screen again, the defaults of exports, access, and the update
// check. Every change is saved at once.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    // checkForUpdates runs the update check; openDatabase asks for a Messages database file.
    SettingsView(AppModel& model, std::function<void()> checkForUpdates,
                 std::function<void()> openDatabase, QWidget* parent);

private:
    void updateSettings();
    void updateContacts();

    AppModel& m_model;
    QLineEdit* m_name;
    QComboBox* m_paper;
    QCheckBox* m_cover;
    QCheckBox* m_photos;
    QPushButton* m_contacts;
};

} // namespace scrivly
