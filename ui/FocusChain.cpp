#include "FocusChain.h"

#include <QWidget>

void chainFocus(const QList<QWidget*>& widgets)
{
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if (!widget)
            continue;
        if (previous)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}
