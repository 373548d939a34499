#pragma once

#include <QColor>
#include <QLabel>

// A caption that behaves like a link: pointing-hand cursor, underlined in the
// highlight colour while the mouse is over it, and a click signal. A click is
// a release that follows a press on the label; a press that started
// elsewhere never clicks.
class HoverLabel : public QLabel
{
    Q_OBJECT

public:
    explicit HoverLabel(const QString& text = QString(), QWidget* parent = nullptr, int number = 0);

    int number() const { return m_number; }

signals:
    void clicked();
    void clicked(int number);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setHovered(bool hovered);

    int m_number;
    QColor m_highlightColor;
    bool m_hovered = false;
    bool m_pressed = false;
};
