#pragma once

#include <QTimer>
#include <QWidget>

namespace scrivly {

// An indeterminate activity indicator: spokes turning while the widget is visible.
class Spinner : public QWidget {
    Q_OBJECT

public:
    explicit Spinner(QWidget* parent = nullptr, int diameter = 28);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QTimer m_timer;
    int m_step = 0;
    int m_diameter;
};

} // namespace scrivly
