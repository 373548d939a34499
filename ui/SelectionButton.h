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

    // Where caption and sub-caption go beside the icon at the current size.
    // A new text, font or size only marks them as outdated: they are laid out
    // again when the button is painted or they are asked for, once however
    // many changes came before.
    QRect textRect() const;
    QRect subTextRect() const;

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
    void calculateTextRects() const;

    QString m_subText;
    int m_fontSize = 0;   // 0: the widget font's own size
    mutable QRect m_textRect;
    mutable QRect m_subTextRect;
    mutable bool m_textLaidOut = false;
    bool m_hovered = false;
};
