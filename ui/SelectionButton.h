#pragma once

#include <QPushButton>
#include <QRect>
#include <QString>

// A mode button of the main window's left column: a checkable, mutually
// exclusive push button showing a 32 x 32 icon with a caption and an optional
// smaller sub-caption beside it. Hovering highlights it; a double click
// emits doubleClicked() besides the clicks.
class SelectionButton : public QPushButton
{
    Q_OBJECT

public:
    static constexpr int IconSize = 32;

    explicit SelectionButton(QWidget* parent = nullptr);

    // The caption; hides QAbstractButton::setText so that the text layout
    // follows the new caption.
    void setText(const QString& text);
    QString subText() const { return m_subText; }
    void setSubText(const QString& subText);

    // Point size of the caption; the sub-caption is two points smaller.
    void setFontSize(int pointSize);

    // Lays out caption and sub-caption beside the icon for the current size.
    void calculateTextRects();
    QRect textRect() const { return m_textRect; }
    QRect subTextRect() const { return m_subTextRect; }

    bool isHovered() const { return m_hovered; }

    QSize sizeHint() const override;

signals:
    void doubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QFont captionFont() const;
    QFont subCaptionFont() const;
    QRect iconRect() const;

    QString m_subText;
    int m_fontSize = 0;   // 0: the widget font's own size
    QRect m_textRect;
    QRect m_subTextRect;
    bool m_hovered = false;
};
