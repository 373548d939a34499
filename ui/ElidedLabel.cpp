#include "ElidedLabel.h"

#include <QPainter>
#include <QStyle>

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QSize ElidedLabel::minimumSizeHint() const
{
    return QSize(fontMetrics().averageCharWidth() * 8, fontMetrics().height());
}

QSize ElidedLabel::sizeHint() const
{
    return QSize(fontMetrics().horizontalAdvance(text()), fontMetrics().height());
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width());
    style()->drawItemText(&painter, area, int(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}
