#include "SelectionButton.h"

#include "SCColors.h"

#include <QEnterEvent>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int margin = 8;
constexpr int iconTextGap = 8;
constexpr int captionGap = 2;
constexpr qreal cornerRadius = 4.0;
constexpr int captionFlags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap;

QColor checkedTop()
{
    return SCColors::getColor(SCColors::keyToolbarGradientTop, QColor(68, 122, 210));
}

QColor checkedBottom()
{
    return SCColors::getColor(SCColors::keyToolbarGradientBottom, QColor(50, 77, 127));
}

} // namespace

SelectionButton::SelectionButton(QWidget* parent)
    : QPushButton(parent)
{
    setCheckable(true);
    setAutoExclusive(true);
    setFlat(false);
    setIconSize(QSize(IconSize, IconSize));
    setAttribute(Qt::WA_Hover);
}

void SelectionButton::setText(const QString& text)
{
    QPushButton::setText(text);
    m_textLaidOut = false;
}

void SelectionButton::setSubText(const QString& subText)
{
    m_subText = subText;
    m_textLaidOut = false;
    updateGeometry();
    update();
}

void SelectionButton::setFontSize(int pointSize)
{
    m_fontSize = pointSize;
    m_textLaidOut = false;
    updateGeometry();
    update();
}

QFont SelectionButton::captionFont() const
{
    QFont caption = font();
    if (m_fontSize > 0)
        caption.setPointSize(m_fontSize);
    caption.setBold(true);
    return caption;
}

QFont SelectionButton::subCaptionFont() const
{
    QFont subCaption = font();
    const int size = (m_fontSize > 0 ? m_fontSize : subCaption.pointSize()) - 2;
    if (size > 0)
        subCaption.setPointSize(size);
    subCaption.setBold(false);
    return subCaption;
}

QRect SelectionButton::iconRect() const
{
    return QRect(margin, (height() - IconSize) / 2, IconSize, IconSize);
}

QRect SelectionButton::textRect() const
{
    if (!m_textLaidOut)
        calculateTextRects();
    return m_textRect;
}

QRect SelectionButton::subTextRect() const
{
    if (!m_textLaidOut)
        calculateTextRects();
    return m_subTextRect;
}

// Caption and sub-caption form one block, centred vertically in the space
// right of the icon; each wraps at word boundaries when it is too wide.
void SelectionButton::calculateTextRects() const
{
    const int left = margin + IconSize + iconTextGap;
    const int width = qMax(0, this->width() - left - margin);
    const QRect available(left, 0, width, height());

    const QRect caption = QFontMetrics(captionFont()).boundingRect(available, captionFlags, text());
    QRect subCaption;
    if (!m_subText.isEmpty())
        subCaption = QFontMetrics(subCaptionFont()).boundingRect(available, captionFlags, m_subText);

    const int blockHeight = caption.height() + (subCaption.isNull() ? 0 : captionGap + subCaption.height());
    const int top = (height() - blockHeight) / 2;
    m_textRect = QRect(left, top, width, caption.height());
    m_subTextRect = subCaption.isNull()
        ? QRect()
        : QRect(left, m_textRect.bottom() + 1 + captionGap, width, subCaption.height());
    m_textLaidOut = true;
}

QSize SelectionButton::sizeHint() const
{
    const int textHeight = QFontMetrics(captionFont()).height()
        + (m_subText.isEmpty() ? 0 : captionGap + QFontMetrics(subCaptionFont()).height());
    return QSize(2 * margin + IconSize + iconTextGap + 120, qMax(IconSize, textHeight) + 2 * margin);
}

void SelectionButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF panel = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);

    QColor textColor = SCColors::getDesignDarkBlue();
    if (isChecked() || isDown()) {
        QLinearGradient gradient(panel.topLeft(), panel.bottomLeft());
        gradient.setColorAt(0.0, isDown() ? checkedBottom() : checkedTop());
        gradient.setColorAt(1.0, isDown() ? checkedTop() : checkedBottom());
        painter.setPen(checkedBottom().darker(120));
        painter.setBrush(gradient);
        painter.drawRoundedRect(panel, cornerRadius, cornerRadius);
        textColor = Qt::white;
    } else if (m_hovered && isEnabled()) {
        QColor fill = SCColors::getMenuHighlightColor();
        fill.setAlpha(70);
        painter.setPen(SCColors::getMenuHighlightColor());
        painter.setBrush(fill);
        painter.drawRoundedRect(panel, cornerRadius, cornerRadius);
    }
    if (!isEnabled())
        textColor = SCColors::getDisabledTextColor();

    const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    painter.drawPixmap(iconRect(), icon().pixmap(QSize(IconSize, IconSize), devicePixelRatio(), mode));

    painter.setPen(textColor);
    painter.setFont(captionFont());
    painter.drawText(textRect(), captionFlags, text());
    if (!m_subText.isEmpty()) {
        painter.setFont(subCaptionFont());
        painter.drawText(subTextRect(), captionFlags, m_subText);
    }

    if (hasFocus()) {
        QPen focusPen(isChecked() ? QColor(Qt::white) : SCColors::getMenuHighlightColor());
        focusPen.setStyle(Qt::DotLine);
        painter.setPen(focusPen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(panel.adjusted(2, 2, -2, -2), cornerRadius, cornerRadius);
    }
}

void SelectionButton::resizeEvent(QResizeEvent* event)
{
    QPushButton::resizeEvent(event);
    m_textLaidOut = false;
}

void SelectionButton::enterEvent(QEnterEvent* event)
{
    m_hovered = true;
    update();
    QPushButton::enterEvent(event);
}

void SelectionButton::leaveEvent(QEvent* event)
{
    m_hovered = false;
    update();
    QPushButton::leaveEvent(event);
}

void SelectionButton::mouseDoubleClickEvent(QMouseEvent* event)
{
    QPushButton::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton)
        emit doubleClicked();
}

void SelectionButton::changeEvent(QEvent* event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        m_textLaidOut = false;
}
