#include "HoverLabel.h"

#include <QMouseEvent>
#include <QPainter>

HoverLabel::HoverLabel(const QString& text, QWidget* parent, int number)
    : QLabel(text, parent)
    , m_number(number)
    , m_highlightColor(palette().color(QPalette::HighlightedText))
{
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
}

void HoverLabel::enterEvent(QEnterEvent* event)
{
    setHovered(true);
    QLabel::enterEvent(event);
}

void HoverLabel::leaveEvent(QEvent* event)
{
    setHovered(false);
    QLabel::leaveEvent(event);
}

void HoverLabel::mousePressEvent(QMouseEvent* event)
{
    m_pressed = true;
    event->accept();
}

void HoverLabel::mouseReleaseEvent(QMouseEvent* event)
{
    const bool click = m_pressed;
    m_pressed = false;
    event->accept();
    if (click) {
        emit clicked();
        emit clicked(m_number);
    }
}

void HoverLabel::paintEvent(QPaintEvent* event)
{
    if (!m_hovered) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
    painter.setPen(m_highlightColor);
    const int flags = int(alignment()) | (wordWrap() ? int(Qt::TextWordWrap) : 0);
    painter.drawText(contentsRect().adjusted(margin(), margin(), -margin(), -margin()), flags, text());
}

void HoverLabel::setHovered(bool hovered)
{
    if (m_hovered == hovered)
        return;
    m_hovered = hovered;
    update();
}
