#include "Scrivly/screens/Spinner.h"

#include <QPainter>

namespace scrivly {

namespace {
constexpr int kSpokes = 12;
}

Spinner::Spinner(QWidget* parent, int diameter) : QWidget(parent), m_diameter(diameter) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(tr("Working"));
    m_timer.setInterval(80);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % kSpokes;
        update();
    });
}

QSize Spinner::sizeHint() const {
    return {m_diameter, m_diameter};
}

void Spinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = std::min(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    for (int i = 0; i < kSpokes; ++i) {
        // The newest spoke is darkest; the others fade behind it.
        const int age = (m_step - i + kSpokes) % kSpokes;
        color.setAlphaF(1.0 - 0.8 * age / double(kSpokes - 1));
        QPen pen(color, radius / 5.0, Qt::SolidLine, Qt::RoundCap);
        painter.setPen(pen);
        painter.save();
        painter.rotate(360.0 * i / kSpokes);
        painter.drawLine(QPointF(0, -radius * 0.45), QPointF(0, -radius * 0.85));
        painter.restore();
    }
}

void Spinner::showEvent(QShowEvent*) {
    m_timer.start();
}

void Spinner::hideEvent(QHideEvent*) {
    m_timer.stop();
}

} // namespace scrivly
