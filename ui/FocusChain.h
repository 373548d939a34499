#pragma once

#include <QList>

class QWidget;

// Puts the widgets into their window's tab order one after the other,
// starting where the first of them stands; null entries are skipped. Widgets
// that stood between them keep their place relative to the first, so a page
// that re-orders its own controls stays where the window put it.
void chainFocus(const QList<QWidget*>& widgets);
