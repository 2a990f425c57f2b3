#pragma once

#ifndef Q_MOC_RUN
#include "Scrivly/model/BackupOpener.h"
#endif

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace scrivly {

class Spinner;

// Asks for an encrypted backup's password, then shows the key derivation's progress line with
// Cancel. Passive: it shows the opener's step and error and forwards what the user does. The
// field is emptied as soon as the password is handed over.
class PasswordSheet : public QDialog {
    Q_OBJECT

public:
    explicit PasswordSheet(BackupOpener& opener, QWidget* parent = nullptr);

    // For the tests.
    QLineEdit* passwordField() const { return m_password; }
    QPushButton* openButton() const { return m_open; }
    QPushButton* cancelButton() const { return m_cancel; }
    QLabel* errorLabel() const { return m_error; }
    QWidget* progressLine() const { return m_progressRow; }

private:
    void update();
    void submit();

    BackupOpener& m_opener;
    QLabel* m_title;
    QLineEdit* m_password;
    QLabel* m_error;
    QWidget* m_progressRow;
    QPushButton* m_cancel;
    QPushButton* m_open;
};

} // namespace scrivly
